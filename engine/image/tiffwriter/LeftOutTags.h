#pragma once

#include <QByteArray>
#include <QStringList>

#include <set>
#include <vector>

namespace pagestack {

class TiffPage;

/// The names of the tags of `page` that a page written with the tags `written` lacks. Tags that
/// only say how the pixels lie in the file, or that are made anew, do not count. `isShown`: the
/// pixels are written as they are shown, so that neither do those that said how to interpret them.
QStringList leftOutTags(const TiffPage& page, const std::set<unsigned>& written, bool isShown);

/// "3 tags left out: ExifIFD, GPSIFD, tag 65000"; at most `mostNames` names, then "...". `fate`
/// takes the place of "left out".
QString leftOutText(const QStringList& names, qsizetype mostNames, QStringView fate = u"left out");

/// A tag that holds several texts, each with its end mark. libtiff knows but the first.
struct TextList
{
    unsigned tag = 0;
    QByteArray bytes; ///< ends with an end mark
};

/// Such tags of `page`, of those that are copied to TIFF output. Throws
/// std::runtime_error.
std::vector<TextList> textLists(const TiffPage& page);

} // namespace pagestack
