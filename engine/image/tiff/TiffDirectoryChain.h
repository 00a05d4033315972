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
    QString fault; ///< why the chain does not end properly; empty when it does
    FileRange cutLink; ///< of the last directory to one that the `fault` leaves out; or empty
};

/// Walks the chain of an open file by its directory headers. A chain that leads back into itself or
/// into another directory's bytes ends there with a fault, as it does at a directory without
/// entries, after 1,048,576 pages and when a StopScope says so. Any thread.
TiffDirectoryChain walkDirectoryChain(int fileDescriptor);

} // namespace pagestack
