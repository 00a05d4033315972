#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <cstdint>

namespace pagestack {

/// Number of images in the file at `url`, 0 if there are none to count. A file that is not TIFF and
/// has the extension PDF, in any case, counts as a PDF document where the program has a library for
/// them; `password` opens an encrypted one. Any thread.
std::uint32_t getTiffPageCount(const QUrl& url, const QString& password);

/// The same with the pages, from 1 on, that are thumbnails or masks of others.
struct CountedPages
{
    std::uint32_t count = 0;
    QList<int> reduced {}; ///< ascending
    /// Why there are none, or why some may be missing. Empty when all is well.
    QString fault {};
};
CountedPages countPages(const QUrl& url, const QString& password);

/// True if `url` is a PDF document that opens without a password or with `password`, which is not
/// null.
bool verifyPDF(const QUrl& url, const QString& password);

} // namespace pagestack
