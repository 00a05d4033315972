#pragma once

#include "engine/image/tiff/TiffDirectory.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace pagestack {

/// The main chain of image file directories of a TIFF file.
struct TiffDirectoryChain
{
    bool isTiff = false; ///< the file begins as a TIFF or BigTIFF file does
    TiffFormat format;
    std::vector<std::uint64_t> offsets; ///< of each directory, in the order of the chain
    std::vector<int> reduced; ///< pages that are thumbnails or masks, counted from 1
    QString fault; ///< why the chain does not end properly; empty when it does
    /// Where libtiff is to find the end of the chain, by an offset of 0: the link to a directory
    /// that the `fault` leaves out; without a fault that of the first directory. Or empty.
    FileRange cutLink;
};

/// Walks the chain of an open file by its directory headers. A chain that leads back into itself or
/// into another directory's bytes ends there with a fault, as it does at a directory without
/// entries, after 1,048,576 pages and when a StopScope says so. Any thread.
///
/// Thumbnails and masks are told by NewSubfileType and SubfileType (TIFF 6.0, section 8), looked
/// for among the first entries only: entries are in the order of their tags, and few have a lower
/// one.
TiffDirectoryChain walkDirectoryChain(int fileDescriptor);

} // namespace pagestack
