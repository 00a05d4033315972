#pragma once

#include <QHash>
#include <QSet>
#include <QString>

namespace pagestack {

/// What the system says at once of changes in folders, where it does. One thread.
class FolderEvents
{
public:
    FolderEvents();
    ~FolderEvents();
    FolderEvents(const FolderEvents&) = delete;
    FolderEvents& operator=(const FolderEvents&) = delete;

    /// From now on also of `folder`, which may have been added before. False where not every change
    /// is told, as on a network file system: such a folder is to be looked at now and then.
    bool add(const QString& folder);

    /// Becomes readable when something has changed; -1: nothing is ever told.
    int descriptor() const { return m_file; }

    /// Takes all that was told, and gives the paths of files that were renamed into the folders.
    QSet<QString> takeMovedIn();

private:
    int m_file = -1;
    QHash<int, QString> m_folders; ///< by the system's number
};

/// Whether another program has the open file `file` open for writing, as far as the system knows.
bool isBeingWritten(int file);

} // namespace pagestack
