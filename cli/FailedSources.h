#pragma once

#include "engine/plan/OutputFile.h"

#include <QHash>
#include <QList>
#include <QString>

#include <utility>
#include <vector>

namespace pagestack {

class Process;

/// The sources of which something failed, for another try. On the job's thread while that runs.
class FailedSources
{
public:
    /// Of `sources`, with the choice of their pages. With `isTogether`, each is one output, which
    /// another try has to make as a whole.
    FailedSources(bool isTogether, QHash<QString, QString> sources)
        : m_isTogether(isTogether)
        , m_sources(std::move(sources))
    {
    }

    void listenTo(const Process& job);

    /// All of it, for 0. Pages of a source come one after the other.
    void add(const QString& path, int page = 0);

    /// Of these, how many there are.
    int count() const { return static_cast<int>(m_entries.size()); }

    /// Writes the list as --files-from reads it. Null, or why not.
    QString save(const QString& path) const;

private:
    struct Entry
    {
        QString path;
        QList<int> pages; ///< empty: all
    };

    const bool m_isTogether;
    const QHash<QString, QString> m_sources; ///< paths, with the choice of their pages; other
                                             ///< troubles are of folders or of the run
    std::vector<Entry> m_entries;
};

} // namespace pagestack
