#pragma once

#include <QThread>

#include <atomic>
#include <functional>
#include <utility>

namespace pagestack {

/// A thread that does `work`, from which nothing may be thrown. To be waited for before it goes.
///
/// It does what a thread of QThread::create does, in a way that the thread sanitizer can follow.
/// That runs `work` from within a call_once of Qt's library, where the sanitizer looks away when it
/// is told to ignore libraries; and what QThread::wait orders is not seen either, hence the flag.
class WorkerThread : public QThread
{
public:
    explicit WorkerThread(std::function<void()> work)
        : m_work(std::move(work))
    {
    }
    ~WorkerThread() override { m_isOver.load(); }
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    void wait()
    {
        QThread::wait();
        m_isOver.load();
    }

protected:
    void run() override
    {
        m_work();
        m_isOver = true;
    }

private:
    const std::function<void()> m_work;
    std::atomic<bool> m_isOver = false; ///< written by the thread, read when it has ended
};

} // namespace pagestack
