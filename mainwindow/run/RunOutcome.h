#pragma once

#include "engine/job/Process.h"
#include "filelist/RowStatus.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QTimer>

namespace pagestack {

/// Gives back the memory of very many outputs, which takes its time, on a thread of its own.
void freeElsewhere(QList<OutputFile>&& outputs);

/// What becomes of the sources of a run. Main thread; it listens to a job that runs elsewhere.
class RunOutcome : public QObject
{
    Q_OBJECT

public:
    RunOutcome();

    /// Forgets the run before, and listens to `job`, which has not started.
    void follow(Process& job);
    /// Looks at the job no more, which has not begun after all.
    void stopFollowing();
    /// To be called when the job has ended: sees which sources are done. Where very many were not
    /// reached, their announcements go on for a moment.
    void finish();

    /// Paths of sources all of whose pages are written, or were skipped since they exist.
    const QSet<QString>& converted() const { return m_converted; }
    /// Paths of sources of which a page, or all, could not be written.
    const QSet<QString>& failed() const { return m_failed; }
    /// Neither, since the run was cancelled before. Sources of which the options leave no page are
    /// none of the three.
    int notReached() const
    {
        return m_sources - m_leftOut - static_cast<int>(m_converted.size() + m_failed.size());
    }
    bool isAllConverted() const { return m_converted.size() == m_sources; }
    /// "27 images written, 14 of 24 files failed".
    QString headline(int images) const;

signals:
    /// Of sources, by their paths: a few times a second, and all that is left at the end. `inHand`
    /// is the place of the one that is being converted among the outputs of the job.
    void changed(const QHash<QString, pagestack::RowStatus>& statuses, int inHand);

private:
    /// The source in hand.
    struct Source
    {
        int pagesDone = 0;
        bool hasFailed = false;
        QStringList reasons {}; ///< the first ones, and that there are more
    };

    void takeDiagnostic(const Diagnostic& diagnostic);
    void passSources(int processed);
    void pass(const OutputFile& output);
    void announce();
    void announceRest();

    QPointer<Process> m_job;
    QTimer m_announcement;
    QList<OutputFile>
        m_rest; ///< outputs of a job that has ended, from `m_inHand` on to be announced
    int m_inHand = 0;
    Source m_source;
    QHash<QString, RowStatus> m_changed; ///< since the last announcement
    QSet<QString> m_converted;
    QSet<QString> m_failed;
    int m_leftOut = 0;
    int m_sources = 0;
};

} // namespace pagestack
