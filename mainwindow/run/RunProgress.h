#pragma once

#include "engine/plan/OutputFile.h"
#include "engine/threads/Capacity.h"
#include "mainwindow/run/RunPace.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

namespace pagestack {

class Process;
struct RunOptions;

/// What `outputs` are to do together. Any thread that may read their items.
RunWork workOf(const QList<OutputFile>& outputs, const RunOptions& options);

/// "0:42" or "1:02:07".
QString shortClockText(qint64 milliseconds);

/// The figures of a run under way: pages, time without pauses, speed. Main thread; it listens to a
/// job that runs elsewhere.
class RunProgress : public QObject
{
    Q_OBJECT

public:
    /// `cores` prepare pages side by side.
    explicit RunProgress(int cores = usableCores());

    /// Begins anew with `job`, which has not started.
    void follow(Process& job);
    /// Says what the job has to do, as soon as its outputs are there.
    void setPlanned(const RunWork& planned);
    void stopFollowing();
    /// The clock stands still meanwhile.
    void setPaused(bool isPaused);
    bool isPaused() const { return m_pausedAtMs.has_value(); }

    /// Takes the time; to be called a few times a second.
    void update();

    qint64 workedMs() const;
    /// Of the whole run, 0..1.
    double fraction() { return m_pace.fraction(); }
    /// "page 120 of 4,880"
    QString pageText() const;
    /// "85 pages/s, about 0:42 left", as far as it is known yet.
    QString paceText() const;

private:
    struct Done
    {
        RunWork passed; ///< of the sources that are done, be it with failures
        int sources = 0;
        double inHand = 0; ///< pages of the next one
        qint64 pages = 0;
    };

    void passSources(int processed);

    int m_cores;
    QPointer<Process> m_job; ///< null when it is gone, too
    RunPace m_pace;
    Done m_done;
    qint64 m_pagesPlanned = 0;
    std::optional<qint64> m_shownMs; ///< time left, which does not jump to and fro
    qint64 m_shownAtMs = 0;
    QElapsedTimer m_elapsed;
    std::optional<qint64> m_pausedAtMs; ///< of `m_elapsed`; none while the run is not paused
    qint64 m_pausedMs = 0; ///< by former pauses
};

} // namespace pagestack
