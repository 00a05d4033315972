#pragma once

#include <QStringList>

#include <set>

namespace pagestack {

class TiffPage;
struct PageMetadata;

/// The names of the tags of `page` that a page written with the tags `written` lacks. Tags that
/// only say how the pixels lie in the file, or that are made anew, do not count. `isShown`: the
/// pixels are written as they are shown, so that neither do those that said how to interpret them.
QStringList leftOutTags(const TiffPage& page, const std::set<unsigned>& written, bool isShown);

/// The same for a format other than TIFF, with what could not be read of the page's metadata;
/// `held`: what the format gets of it, null for nothing.
QStringList leftOutTags(const TiffPage& page, const PageMetadata* held);

/// "3 tags left out: ExifIFD, GPSIFD, tag 65000"; at most `mostNames` names, then "...". `fate`
/// takes the place of "left out".
QString leftOutText(const QStringList& names, qsizetype mostNames, QStringView fate = u"left out");

} // namespace pagestack
