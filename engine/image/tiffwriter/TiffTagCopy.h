#pragma once

#include <QByteArray>
#include <QStringList>

#include <set>
#include <vector>

struct tiff;

namespace pagestack {

class TiffPage;

/// Copies the texts, dates, position, resolution, ICC profile, XMP, IPTC and Photoshop data of the
/// current page of `from` to the page that `to` writes.
void copyDescriptiveTags(tiff* from, tiff* to);

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

/// The names of the tags of `page` that a page written with the tags `written` lacks. Tags that
/// only say how the pixels lie in the file, or that are made anew, do not count. `isShown`: the
/// pixels are written as they are shown, so that neither do those that said how to interpret them.
QStringList leftOutTags(const TiffPage& page, const std::set<unsigned>& written, bool isShown);

/// "3 tags left out: ExifIFD, GPSIFD, tag 65000"; at most `mostNames` names, then "...". `fate`
/// takes the place of "left out".
QString leftOutText(const QStringList& names, qsizetype mostNames, QStringView fate = u"left out");

} // namespace pagestack
