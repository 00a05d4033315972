#pragma once

#include <QString>

#include <cstdint>
#include <vector>

namespace pagestack {

/// A stretch of a file.
struct FileRange
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// The main chain of image file directories of a TIFF file, found by reading directory headers
/// only. Format: TIFF 6.0, section 2; BigTIFF (8-byte offsets, version 43).
struct TiffDirectoryChain
{
    bool isTiff = false; ///< the file begins as a TIFF or BigTIFF file does
    bool isBigEndian = false;
    bool isBigTiff = false;
    std::vector<std::uint64_t> offsets; ///< of each directory, in the order of the chain
    QString fault; ///< why the chain does not end properly; empty when it does
    /// Where the last directory names one that is left out, as the fault tells; empty: nowhere.
    FileRange cutLink;
};

/// Walks the chain of the open file `fileDescriptor`, which must be seekable; its position is not
/// used. As a fault the chain ends where it leads back into itself or into another directory's
/// bytes, at a directory without entries, after 1,048,576 pages and when a StopScope says so. Any
/// thread.
TiffDirectoryChain walkDirectoryChain(int fileDescriptor);

/// The value of a tag as its directory announces it, inside the entry or elsewhere in the file, or
/// beyond its end.
struct TiffTagValue
{
    unsigned tag = 0;
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0; ///< 0 where the type is unknown
    std::uint64_t count = 0; ///< of values of the type
};

struct TiffDirectory
{
    FileRange range; ///< from the number of entries to the offset of the next directory
    std::vector<TiffTagValue> values;
};

/// Reads the directory at `offset`, one of `chain`, in the open file. Throws std::runtime_error
/// when it cannot be read or has more entries than a directory can. Any thread.
TiffDirectory readDirectoryEntries(int fileDescriptor, const TiffDirectoryChain& chain,
                                   std::uint64_t offset);

} // namespace pagestack
