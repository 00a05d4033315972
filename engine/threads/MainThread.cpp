#include "engine/threads/MainThread.h"

#include "engine/threads/WorkerThread.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QSemaphore>

#include <future>
#include <memory>
#include <mutex>
#include <utility>

namespace pagestack {

namespace {

    // Calls are events for an object of their own, so that a join can handle them and no others. An
    // event that is dropped breaks the promise of its call, which wakes the caller.
    std::mutex guard; // protects `receiver`
    QObject* receiver = nullptr; // of the main thread; null: calls are not taken
    QSemaphore wakeUps; // above 0 after a call was posted or a joined worker has ended

    void wakeUp()
    {
        if (wakeUps.available() == 0)
            wakeUps.release();
    }

    void beginMainThreadCalls()
    {
        const std::lock_guard lock(guard);
        receiver = new QObject;
        qAddPostRoutine(endMainThreadCalls);
    }

    /// False when calls are not taken.
    bool post(std::packaged_task<void()> call)
    {
        const auto shared = std::make_shared<std::packaged_task<void()>>(std::move(call));
        const auto run = [shared] {
            {
                // What the other thread wrote is seen here; Qt says so too, but to no sanitizer.
                const std::lock_guard lock(guard);
            }
            (*shared)();
        };
        const std::lock_guard lock(guard);
        return receiver != nullptr
            && QMetaObject::invokeMethod(receiver, run, Qt::QueuedConnection);
    }

    bool isOnMainThread()
    {
        const std::lock_guard lock(guard);
        return receiver != nullptr && receiver->thread() == QThread::currentThread();
    }

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginMainThreadCalls)

void callOnMainThread(const std::function<void()>& call)
{
    if (isOnMainThread())
        return call();
    std::packaged_task<void()> task(std::cref(call));
    std::future<void> outcome = task.get_future();
    if (!post(std::move(task)))
        return;
    wakeUp();
    try {
        outcome.get();
    } catch (const std::future_error& error) {
        if (error.code() != std::future_errc::broken_promise)
            throw;
        // The call was dropped.
    }
}

void joinWorker(WorkerThread& worker)
{
    Q_ASSERT(!qApp || QThread::currentThread() == qApp->thread());
    // Emitted by the worker itself, after isRunning() has turned false.
    const QMetaObject::Connection ended
        = QObject::connect(&worker, &QThread::finished, &worker, &wakeUp, Qt::DirectConnection);
    while (worker.isRunning()) {
        wakeUps.acquire();
        if (receiver != nullptr) // which only this thread changes
            QCoreApplication::sendPostedEvents(receiver, QEvent::MetaCall);
    }
    QObject::disconnect(ended);
    worker.wait();
}

void endMainThreadCalls()
{
    std::unique_ptr<QObject> old; // goes after the lock: waiting callers go on at once
    const std::lock_guard lock(guard);
    old.reset(std::exchange(receiver, nullptr));
}

} // namespace pagestack
