#pragma once

#include <QList>
#include <QUrl>

#include <memory>

class QMimeData;

namespace pagestack {

/// The files as other programs take them: as URLs, and as text with a path on each line.
std::unique_ptr<QMimeData> clipboardData(const QList<QUrl>& urls);

struct ClipboardFiles
{
    QList<QUrl> urls {};
    int unreadLines = 0; ///< that name no file and are not empty
    bool isTooLong = false; ///< a text that nobody has read: no list of files that people copy
};

/// The files and folders that `data` names by URLs or, line by line, by absolute paths or URLs of
/// files, maybe in quotation marks. `data` may be null.
ClipboardFiles filesIn(const QMimeData* data);

} // namespace pagestack
