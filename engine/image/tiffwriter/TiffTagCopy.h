#pragma once

#include <QByteArray>

#include <vector>

struct tiff;

namespace pagestack {

class TiffPage;

/// Copies the texts, dates, position, resolution, ICC profile, XMP, IPTC and Photoshop data of the
/// current page of `from` to the page that `to` writes; of these, if `isStripped`, only position,
/// resolution and profile.
void copyDescriptiveTags(tiff* from, tiff* to, bool isStripped);

/// Copies the meaning of the samples: colour map, extra samples, sample format, ink set, range of
/// values, colorimetry; and of YCbCr pages coefficients, positioning and sub-sampling.
void copyInterpretationTags(tiff* from, tiff* to);

/// A tag that holds several texts, each with its end mark. libtiff knows but the first.
struct TextList
{
    unsigned tag = 0;
    QByteArray bytes; ///< ends with an end mark
};

/// Such tags of `page`, of those that are copied. Throws std::runtime_error.
std::vector<TextList> textLists(const TiffPage& page);

} // namespace pagestack
