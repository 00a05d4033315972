#pragma once

#include "engine/files/FileState.h"
#include "engine/fleet/FolderEvents.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <utility>

namespace pagestack {

/// A file that nobody writes to any more.
struct CompleteFile
{
    QString path; ///< absolute
    FileState state;
};

/// Sees when files of a folder are complete: their sizes and times are at rest, or they were
/// renamed into it. One thread, which calls look() whenever nextLookMs() is over or descriptor() is
/// readable.
class FolderWatcher
{
public:
    struct Rules
    {
        QString folder; ///< absolute
        bool isRecursive = false;
        QStringList leftOut {}; ///< folders, absolute, that are not entered
        qint64 settleMs = 2000; ///< of rest
        qint64 pollMs = 0; ///< between two looks; 0: events are waited for where there are any
    };

    explicit FolderWatcher(Rules rules);

    /// Looks at all files. What is complete is seen by two looks or, where events are told, by one.
    void look();

    /// Files that can be opened, by modification time, then by name with naturallyLess().
    QList<CompleteFile> complete();

    /// How many are there and not complete.
    int waiting() const { return m_waiting; }

    qint64 nextLookMs() const;
    int descriptor() const { return m_rules.pollMs > 0 ? -1 : m_events.descriptor(); }
    bool isPolling() const { return m_isPolling; }

    /// Lines on what is not taken, each once.
    QStringList takeTroubles() { return std::exchange(m_troubles, {}); }

private:
    struct Seen
    {
        FileState state;
        qint64 sinceMs = 0;
        bool isMovedIn = false;
        bool isThere = true; ///< at the last look
    };

    void walk(const QString& folder, const QSet<QString>& movedIn);
    void see(const QString& path, bool isMovedIn);
    bool isFree(const QString& path, const Seen& seen, QString& why) const;
    void tell(const QString& path, const QString& reason);

    const Rules m_rules;
    FolderEvents m_events;
    QElapsedTimer m_clock;
    QHash<QString, Seen> m_seen; ///< by path
    QSet<QString> m_known; ///< folders
    QSet<QString> m_told; ///< lines
    QStringList m_troubles;
    QSet<FileIdentity> m_left; ///< folders that are not entered
    bool m_isPolling = false; ///< a folder gives no events
    bool m_hasNewFolders = false; ///< at the last look
    int m_waiting = 0;
};

} // namespace pagestack
