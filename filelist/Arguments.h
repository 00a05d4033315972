#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QUrl>

namespace pagestack {

/// The request for a load of the file list.
struct Arguments
{
    QList<QUrl> urls; ///< the chosen files or folders
    bool isFolders = false; ///< search the URLs as folders; false: add them as they are
    bool isIncludeSubdirectories = false; ///< of folders: all folders below them too
    QHash<QUrl, QString> pageChoices {}; ///< of some files that are added as they are
    int unreadLines = 0; ///< of the text that names the files: those that name none
};

} // namespace pagestack
