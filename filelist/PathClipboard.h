#pragma once

#include "filelist/FileList.h"

#include <QList>
#include <QUrl>

#include <memory>

class QMimeData;

namespace pagestack {

/// The files as other programs take them: as URLs and, where that is wanted, as text with a path on
/// each line. Both are made when they are asked for: of very many files it takes its time.
std::unique_ptr<QMimeData> offeredFiles(const FileList::Items& items, bool isTextToo);

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
