#pragma once

#include "engine/image/pixels/RowByRow.h"

namespace pagestack {

/// What an image format can hold; `adaptRows` brings a page to it.
struct TargetPixels
{
    bool takesPalette = false;
    bool takesAlpha = false; ///< straight alpha
    bool takes16Bits = false;
    bool takes1Bit = false; ///< gray or palette, as far as taken at all
    bool takes2And4Bits = false; ///< the same
};

/// Unpacks samples of 1, 2 or 4 bits, gray ones to levels of 0 to 255.
RowFunction packedToBytes(int bits, bool isGray);

/// Puts the conversions that `target` needs, and no others, behind `rows`: packed samples to bytes,
/// palettes to colours (to gray where the palette is gray), alpha to straight alpha or laid over
/// white, 16 bits to 8 with rounding.
std::unique_ptr<RowSource> adaptRows(std::unique_ptr<RowSource> rows, const TargetPixels& target);

} // namespace pagestack
