#pragma once

#include "engine/image/tiff/TiffDirectory.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace pagestack {

/// The main chain of image file directories of a TIFF file, found by reading directory headers
/// only.
struct TiffDirectoryChain
{
    bool isTiff = false; ///< the file begins as a TIFF or BigTIFF file does
    TiffFormat format;
    std::vector<std::uint64_t> offsets; ///< of each directory, in the order of the chain
    QString fault; ///< why the chain does not end properly; empty when it does
    /// The link of the last directory to one that is left out for the `fault`; empty: there is
    /// none.
    FileRange cutLink;
};

/// Walks the chain of the open file `fileDescriptor`, which must be seekable; its position is not
/// used. As a fault the chain ends where it leads back into itself or into another directory's
/// bytes, at a directory without entries, after 1,048,576 pages and when a StopScope says so. Any
/// thread.
TiffDirectoryChain walkDirectoryChain(int fileDescriptor);

} // namespace pagestack
