#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace pagestack {

/// A stretch of a file.
struct FileRange
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// How numbers and directories of a file are laid out: TIFF 6.0, section 2, and BigTIFF (8-byte
/// offsets, version 43).
struct TiffFormat
{
    bool isBigEndian = false;
    bool isBigTiff = false;

    std::size_t headerBytes() const { return isBigTiff ? 16 : 8; }
    std::size_t offsetBytes() const { return isBigTiff ? 8 : 4; } ///< also of the count of a value
    std::size_t countBytes() const { return isBigTiff ? 8 : 2; } ///< of the number of entries
    std::size_t entryBytes() const { return isBigTiff ? 20 : 12; }

    /// Where the header names the first directory.
    std::uint64_t firstLinkAt() const { return offsetBytes(); }
    /// Where the directory at `offset` names the next one.
    std::uint64_t linkAt(std::uint64_t offset, std::uint64_t entries) const
    {
        return offset + countBytes() + entries * entryBytes();
    }
};

/// The value of a tag as announced, inside its entry or elsewhere in the file, or beyond its end.
struct TiffTagValue
{
    unsigned tag = 0;
    unsigned type = 0; ///< TIFF 6.0, section 2; of BigTIFF 16 to 18
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0; ///< 0 where the type is unknown
    std::uint64_t count = 0; ///< of values of the type
};

/// An image file directory as it lies in the file.
struct TiffDirectory
{
    FileRange range; ///< from the number of entries to the offset of the next directory
    std::vector<TiffTagValue> values;

    /// The first value of the tag; null where there is none.
    const TiffTagValue* find(unsigned tag) const;
};

/// Fills all of `bytes` with what a file has from `offset` on. Throws std::runtime_error.
using ReadBytes = std::function<void(std::uint64_t offset, std::span<std::uint8_t> bytes)>;

/// Reads the directory at `offset` of the file that `read` gives. Throws std::runtime_error when it
/// cannot be read or has more entries than a directory can. Any thread.
TiffDirectory readDirectory(const ReadBytes& read, const TiffFormat& format, std::uint64_t offset);

} // namespace pagestack
