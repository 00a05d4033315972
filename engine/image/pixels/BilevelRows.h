#pragma once

#include "engine/image/pixels/RowSource.h"

#include <memory>

namespace pagestack {

/// The rows in gray of 8 bits, as ITU-R BT.601 weighs colours, laid over white.
std::unique_ptr<RowSource> luminanceRows(std::unique_ptr<RowSource> rows);

/// The threshold, 1..255, that parts the levels of `luminance`, a whole pass, into the two classes
/// that differ most (N. Otsu, 1979); 128 for a page of a single level. Throws as the rows do.
int otsuThreshold(RowSource& luminance);

/// The rows, of luminanceRows, in one bit a pixel: white from `threshold` on.
std::unique_ptr<RowSource> thresholdRows(std::unique_ptr<RowSource> luminance, int threshold);

/// The same by error diffusion, which keeps the mean of an area.
std::unique_ptr<RowSource> ditheredRows(std::unique_ptr<RowSource> luminance);

} // namespace pagestack
