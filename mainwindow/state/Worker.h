#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>

class QMainWindow;

namespace pagestack {

class ViewState;
class WorkerThread;

/// The one thread beside the window: it loads files, sorts by dates, exports or runs the job. Main
/// thread, unless said otherwise.
class Worker : public QObject
{
    Q_OBJECT

public:
    /// `window` and `view` outlive it.
    Worker(QMainWindow& window, ViewState& view);
    ~Worker() override;
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    bool isBusy() const { return m_thread != nullptr; }
    /// Does `work`, from which nothing may be thrown; not while it is busy.
    void start(std::function<void()> work);
    /// Does `work` with the window busy as during a load, and gives the focus back. Refused while
    /// it is busy.
    void startBusy(std::function<void()> work);
    /// Waits for the end of the work, which has been asked to end or has come to its end.
    void finish();

    /// Asks a load, a sort or an export to end.
    void cancel();
    /// The same, and `readyToTerminate` comes at the end of the work.
    void terminate();
    bool isTerminating() const { return m_isTerminating; } ///< any thread
    /// True until the next cancel() or the end of the program. May be called by any thread.
    std::function<bool()> untilCancelled() const;

signals:
    /// The work has ended, and nobody waits for that to end the program.
    void ended();
    void readyToTerminate();

private:
    void end();

    QMainWindow& m_window;
    ViewState& m_view;
    std::unique_ptr<WorkerThread> m_thread; ///< null when idle
    std::atomic<bool> m_isTerminating = false; ///< the program ends as soon as the work has
    std::atomic<int> m_cancelCount = 0;
};

} // namespace pagestack
