#pragma once

#include "engine/job/Process.h"
#include "filelist/RowStatus.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

namespace pagestack {

/// What becomes of the sources of a run. Main thread; it listens to a job that runs elsewhere.
class RunOutcome : public QObject
{
    Q_OBJECT

public:
    /// Forgets the run before, and listens to `job`, which has its outputs and has not started.
    void follow(Process& job);
    /// To be called when the job has ended: sees which sources are done.
    void finish();

    /// Paths of sources all of whose pages are written, or were skipped since they exist.
    const QSet<QString>& converted() const { return m_converted; }
    /// Paths of sources of which a page, or all, could not be written.
    const QSet<QString>& failed() const { return m_failed; }
    /// Neither, since the run was cancelled before.
    int notReached() const
    {
        return m_sources - static_cast<int>(m_converted.size() + m_failed.size());
    }
    /// What became of each source, by path, with its `problems`.
    QHash<QString, RowStatus> statuses(const QHash<QString, QString>& problems) const;
    /// "27 images written, 14 of 24 files failed".
    QString headline(int images) const;

private:
    QPointer<Process> m_job;
    QHash<QString, int> m_donePages; ///< by source
    QSet<QString> m_converted;
    QSet<QString> m_failed;
    QSet<QString> m_sourcePaths;
    int m_sources = 0;
};

} // namespace pagestack
