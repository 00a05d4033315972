#pragma once

#include "engine/image/pixels/RowByRow.h"

#include <QByteArray>
#include <QString>

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

/// What a profile makes of the colours of a page.
enum class ProfileKind {
    Unusable, ///< broken, or none of a device or colour space with such channels
    Srgb, ///< what they are without it, within a step of 8 bits
    Other,
};

/// Of `profile` for pixels of gray, else RGB.
ProfileKind profileKind(const QByteArray& profile, ColorModel model);

/// True when the profile of a CMYK page can be used.
bool isCmykProfile(const QByteArray& profile);

/// The description in the profile, on one line; empty when it has none.
QString profileName(const QByteArray& profile);

/// Brings gray, RGB or palette pixels that `profile` describes to sRGB, gray ones to its gray:
/// relative colorimetric, with black point compensation. Palettes keep their indexes; samples of 2
/// and 4 bits get 8. Alpha becomes straight and stays. Pixels of another colour space than that of
/// the profile, and black and white, stay as they are.
std::unique_ptr<RowSource> srgbRows(std::unique_ptr<RowSource> rows, const QByteArray& profile);

} // namespace pagestack
