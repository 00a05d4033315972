#pragma once

#include <QString>

#include <cstdint>
#include <vector>

namespace pagestack {

/// The main chain of image file directories of a TIFF file, found by reading directory headers
/// only. Format: TIFF 6.0, section 2; BigTIFF (8-byte offsets, version 43).
struct TiffDirectoryChain
{
    bool isTiff = false; ///< the file begins as a TIFF or BigTIFF file does
    bool isBigEndian = false;
    bool isBigTiff = false;
    std::vector<std::uint64_t> offsets; ///< of each directory, in the order of the chain
    QString fault; ///< why the chain does not end properly; empty when it does
};

/// Walks the chain of the open file `fileDescriptor`, which must be seekable; its position is not
/// used. Every directory is visited once, so a chain that leads back into itself ends there. A
/// directory without entries ends the chain as a fault. Any thread.
TiffDirectoryChain walkDirectoryChain(int fileDescriptor);

} // namespace pagestack
