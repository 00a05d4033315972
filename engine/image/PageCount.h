#pragma once

#include <QString>
#include <QUrl>

#include <cstdint>

namespace pagestack {

/// Number of images in the file at `url`, 0 when nothing could be counted. A file that is no TIFF
/// file but has the extension PDF, in any case, is counted as a PDF document; `password` opens an
/// encrypted one. Reads directories only, no pixels. Any thread.
std::uint32_t getTiffPageCount(const QUrl& url, const QString& password);

/// True when `url` is a PDF document that is not encrypted or that `password` opens. A null
/// password or an empty URL gives false.
bool verifyPDF(const QUrl& url, const QString& password);

} // namespace pagestack
