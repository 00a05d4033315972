#pragma once

#include <QThread>

#include <atomic>
#include <functional>
#include <utility>

namespace pagestack {

/// A thread that does `work`, which may not throw. Must be waited for before it is destroyed.
///
/// Used in place of QThread::create, which the thread sanitizer cannot follow: that runs `work`
/// inside a call_once of Qt's library, which the sanitizer ignores, and the order that
/// QThread::wait makes is not seen either, hence the flag.
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
