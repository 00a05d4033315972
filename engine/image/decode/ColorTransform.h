#pragma once

#include "engine/image/pixels/RowByRow.h"

#include <QByteArray>

namespace pagestack {

/// Colour models that have to become RGB where a format cannot hold them.
enum class SourceColor {
    Cmyk, ///< four channels, 0 is no ink
    CieLab, ///< TIFF 6.0, section 23: L* from 0, a* and b* as signed numbers
    IccLab, ///< the same with a* and b* shifted to unsigned numbers, as ICC profiles encode them
};

/// Returns a function that turns rows of packed CMYK (four channels) or L*a*b* pixels into packed
/// sRGB, which must not overlap, both of `bits` (8 or 16) a sample. CMYK goes through `profile`,
/// that of the page, if it is usable, else by the plain formula; L*a*b* (white D50) by its
/// definition. One thread at a time. Throws std::runtime_error.
RowFunction colorTransform(SourceColor from, int bits, const QByteArray& profile);

} // namespace pagestack
