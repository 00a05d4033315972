#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace pagestack {

/// What is visible in a folder, in natural order. Names with a leading dot are left out. A name
/// that is no UTF-8 text holds the replacement character for each byte that cannot be told.
struct FolderContents
{
    struct Folder
    {
        QString name;
        bool isLink = false;
    };
    QStringList files; ///< everything that is no folder
    QList<Folder> folders;
    QString fault; ///< why it could not be read, or not to its end; empty: it was
};

FolderContents readFolderContents(const QString& path);

} // namespace pagestack
