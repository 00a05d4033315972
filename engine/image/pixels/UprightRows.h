#pragma once

#include "engine/image/pixels/PageSource.h"

#include <memory>

namespace pagestack {

/// Turns and mirrors the rows of a page with `orientation` (tag Orientation, 1..8) so that the
/// first row is the top one and the first column the left one. A page that has to be turned is
/// kept, packed, in memory up to 16 MB, else in a temporary file. Throws std::runtime_error when
/// that file cannot be made, the rows cannot be read or would be longer than a stored row may be.
std::unique_ptr<RowSource> uprightRows(std::unique_ptr<RowSource> rows, int orientation);

/// The properties of the page once its rows are upright: width and height, and the horizontal and
/// vertical resolution, change places for orientations 5..8.
PageProperties uprightProperties(const PageProperties& stored);

} // namespace pagestack
