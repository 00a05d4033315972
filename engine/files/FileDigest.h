#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace pagestack {

class ByteFile;

/// Size and SHA-256 (FIPS 180-4) of a file's bytes.
struct FileDigest
{
    std::uint64_t sizeBytes = 0;
    std::array<std::uint8_t, 32> sha256 {};

    QString hex() const;

    friend bool operator==(const FileDigest&, const FileDigest&) = default;
};

/// Of the `size` bytes that `readAt` gives: fills all of `bytes` from `offset` on. Throws what that
/// throws. Any thread.
FileDigest
digestOf(std::uint64_t size,
         const std::function<void(std::uint64_t offset, std::span<std::uint8_t> bytes)>& readAt);

/// Of a complete file, as it is read back.
FileDigest digestOf(ByteFile& file);

/// Size and SHA-256 of the regular file at `path`; none when it cannot be read, or when a StopScope
/// of the thread ends that.
std::optional<FileDigest> digestOfFile(const QString& path);

} // namespace pagestack
