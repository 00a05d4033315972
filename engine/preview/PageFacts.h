#pragma once

#include "engine/image/pixels/PageSource.h"
#include "engine/preview/PreviewFile.h"

#include <QList>
#include <QSize>
#include <QStringList>

#include <utility>

namespace pagestack {

/// How large a page is, upright.
struct PageExtent
{
    QSize sizePx {};
    Resolution resolution {};
};

/// Of the first page of the file at `path`. Throws std::runtime_error with the reason.
PageExtent extentOf(const QString& path);

/// What a page is and says of itself, for people to read. Names of compressions, colour models and
/// tags are those of their standards.
struct PageFacts
{
    int pages = 0; ///< of the file
    QString chainFault {}; ///< see OpenTiffFile::chainFault
    QSize sizePx {}; ///< upright
    Resolution resolution {}; ///< upright
    int bitsPerSample = 0;
    int samplesPerPixel = 0;
    QString compression {}; ///< empty: none
    QString color {};
    QString profile {}; ///< the description of its colour profile; empty: it has none
    QList<std::pair<QString, QString>> texts {}; ///< tags of text, in the order of their numbers
    QStringList others {}; ///< names of what it says besides: "Exif", "XMP", "XPosition"
};

/// Reads the tags of page `index`, from 0. Throws std::runtime_error with the reason,
/// std::out_of_range for a page that is not there.
PageFacts factsOf(const std::shared_ptr<const OpenTiffFile>& file, int index);

} // namespace pagestack
