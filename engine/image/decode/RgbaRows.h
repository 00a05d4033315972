#pragma once

#include "engine/image/pixels/RowSource.h"

#include <memory>

namespace pagestack {

class TiffPage;

/// A pass over a page through libtiff's conversion to 8-bit RGBA, a strip or a row of tiles at a
/// time; opaque, gray where the page is gray. Throws std::runtime_error.
std::unique_ptr<RowSource> rgbaRows(const TiffPage& page);

} // namespace pagestack
