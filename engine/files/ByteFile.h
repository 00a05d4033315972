#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

/// Bytes in a file or in memory, written and read at any offset. One thread at a time.
class ByteFile
{
public:
    virtual ~ByteFile() = default;

    virtual std::uint64_t size() const = 0;

    /// Writes at `offset`, which may lie past the end; the bytes between are zero.
    /// Throws std::runtime_error with the reason.
    virtual void writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) = 0;

    /// Fills all of `bytes` from `offset` on. Throws std::runtime_error with the reason.
    virtual void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) = 0;

protected:
    ByteFile() = default;
    ByteFile(const ByteFile&) = delete;
    ByteFile& operator=(const ByteFile&) = delete;
};

} // namespace pagestack
