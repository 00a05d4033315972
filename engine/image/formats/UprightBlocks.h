#pragma once

#include "engine/image/formats/JpegBlocks.h"

#include <memory>

namespace pagestack {

/// Whether an image with `orientation` (tag Orientation, 1..8) can be turned upright by its
/// coefficients: a side that comes to the top or to the left has to end with whole MCUs.
bool canTurnBlocks(const JpegFrame& frame, int orientation);

/// Turns and mirrors the blocks so that the first row is the top one and the first column the left
/// one. Those of a page that has to be turned are kept in memory up to 16 MB, else in a temporary
/// file.
std::shared_ptr<JpegBlocks> uprightBlocks(std::shared_ptr<JpegBlocks> blocks, int orientation);

} // namespace pagestack
