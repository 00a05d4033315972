#pragma once

#include "engine/files/ByteFile.h"

#include <vector>

namespace pagestack {

/// Keeps bytes in memory up to a limit, beyond that in a temporary file without a name. May be
/// handed from one thread to another.
class ByteSpool : public ByteFile
{
public:
    explicit ByteSpool(std::uint64_t mostBytesInMemory = std::uint64_t { 1024 } * 1024)
        : m_mostInMemory(mostBytesInMemory)
    {
    }
    ~ByteSpool() override;
    ByteSpool(const ByteSpool&) = delete;
    ByteSpool& operator=(const ByteSpool&) = delete;

    std::uint64_t size() const override { return m_size; }
    void writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override;
    void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) override;

private:
    void moveToFile();

    std::uint64_t m_mostInMemory;
    std::vector<std::uint8_t> m_memory; ///< all bytes while there is no file
    std::uint64_t m_size = 0;
    int m_file = -1;
};

} // namespace pagestack
