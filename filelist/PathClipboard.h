#pragma once

#include <QList>
#include <QUrl>

#include <memory>

class QMimeData;

namespace pagestack {

/// The files as other programs take them: as URLs, and as text with a path on each line.
std::unique_ptr<QMimeData> clipboardData(const QList<QUrl>& urls);

/// The files and folders that `data` names by URLs or, line by line, by absolute paths or URLs of
/// files, maybe in quotation marks. Other lines are skipped. `data` may be null.
QList<QUrl> filesIn(const QMimeData* data);

} // namespace pagestack
