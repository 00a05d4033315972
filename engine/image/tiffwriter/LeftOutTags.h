#pragma once

#include <QStringList>

#include <set>

namespace pagestack {

class TiffPage;

/// The names of the tags of `page` that a page written with the tags `written` lacks. Tags that
/// only say how the pixels lie in the file, or that are made anew, do not count. `isShown`: the
/// pixels are written as they are shown, so that neither do those that said how to interpret them.
QStringList leftOutTags(const TiffPage& page, const std::set<unsigned>& written, bool isShown);

/// "3 tags left out: ExifIFD, GPSIFD, tag 65000"; at most `mostNames` names, then "...". `fate`
/// takes the place of "left out".
QString leftOutText(const QStringList& names, qsizetype mostNames, QStringView fate = u"left out");

} // namespace pagestack
