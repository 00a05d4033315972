#pragma once

#include "engine/image/metadata/PageMetadata.h"
#include "engine/image/tiff/TiffDirectory.h"

namespace pagestack {

class TiffPage;
class TiffStream;

/// What a TIFF file gets of `page` besides what libtiff copies; `isShown`: without what belongs to
/// samples that were kept as they are.
PageMetadata tiffMetadata(const TiffPage& page, bool isShown);

/// Appends a directory to `file`, little-endian, that has all entries of the one at `offset`, which
/// is forgotten, and those of `more` that it lacks; returns its offset. Throws std::runtime_error.
std::uint64_t extendDirectory(TiffStream& file, const TiffFormat& format, std::uint64_t offset,
                              const PageMetadata& more);

} // namespace pagestack
