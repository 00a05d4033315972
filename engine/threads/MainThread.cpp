#include "engine/threads/MainThread.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

#include <condition_variable>
#include <deque>
#include <exception>
#include <future>
#include <mutex>
#include <utility>

namespace pagestack {

namespace {

    // A call that waits for the main thread. Dropping it unrun breaks its promise, which wakes the
    // caller.
    struct PendingCall
    {
        const std::function<void()>* call;
        std::promise<std::exception_ptr> outcome;
    };

    // A blocking queued call of Qt's own would do, but for one case: a worker is waiting in it when
    // the main thread has left its event loop and wants to join the worker. Hence a queue that the
    // main thread can serve without a loop, and empty. `guard` protects every member.
    struct CallQueue
    {
        std::mutex guard;
        std::condition_variable changed; ///< a call was added, or a joined worker has ended
        std::deque<PendingCall> calls;
        QThread* mainThread = nullptr; ///< null: calls are not taken
    };

    CallQueue& callQueue()
    {
        static CallQueue queue;
        return queue;
    }

    void run(PendingCall& pending)
    {
        std::exception_ptr thrown;
        try {
            (*pending.call)();
        } catch (...) { // Not swallowed: the caller gets it, whatever it is.
            thrown = std::current_exception();
        }
        pending.outcome.set_value(std::move(thrown));
    }

    void servePendingCalls()
    {
        CallQueue& queue = callQueue();
        std::unique_lock lock(queue.guard);
        while (!queue.calls.empty()) {
            PendingCall pending = std::move(queue.calls.front());
            queue.calls.pop_front();
            lock.unlock();
            run(pending);
            lock.lock();
        }
    }

    void beginMainThreadCalls()
    {
        {
            const std::lock_guard lock(callQueue().guard);
            callQueue().mainThread = QThread::currentThread();
        }
        qAddPostRoutine(endMainThreadCalls);
    }

    enum class Entry {
        Refused,
        OnMainThread,
        Queued,
    };

    Entry enter(const std::function<void()>& call, std::future<std::exception_ptr>& outcome)
    {
        CallQueue& queue = callQueue();
        const std::lock_guard lock(queue.guard);
        if (!queue.mainThread)
            return Entry::Refused;
        if (QThread::currentThread() == queue.mainThread)
            return Entry::OnMainThread;
        // The application object is still there: it takes the lock before it goes. And first:
        // should it throw, no call may be left in the queue that nobody waits for.
        QMetaObject::invokeMethod(qApp, &servePendingCalls, Qt::QueuedConnection);
        queue.calls.push_back({ &call, {} });
        outcome = queue.calls.back().outcome.get_future();
        queue.changed.notify_all();
        return Entry::Queued;
    }

    // Null also when the call was dropped.
    std::exception_ptr waitFor(std::future<std::exception_ptr>& outcome)
    {
        try {
            return outcome.get();
        } catch (const std::future_error&) {
            return nullptr;
        }
    }

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginMainThreadCalls)

void callOnMainThread(const std::function<void()>& call)
{
    std::future<std::exception_ptr> outcome;
    switch (enter(call, outcome)) {
    case Entry::Refused:
        return;
    case Entry::OnMainThread:
        call();
        return;
    case Entry::Queued:
        if (const std::exception_ptr thrown = waitFor(outcome))
            std::rethrow_exception(thrown);
        return;
    }
}

void joinWorker(QThread& worker)
{
    CallQueue& queue = callQueue();
    Q_ASSERT(!qApp || QThread::currentThread() == qApp->thread());
    const auto wakeUp = [] {
        const std::lock_guard lock(callQueue().guard);
        callQueue().changed.notify_all();
    };
    // Emitted by the worker itself, after isRunning() has turned false.
    const QMetaObject::Connection ended
        = QObject::connect(&worker, &QThread::finished, &worker, wakeUp, Qt::DirectConnection);
    while (worker.isRunning()) {
        {
            std::unique_lock lock(queue.guard);
            queue.changed.wait(lock, [&] { return !queue.calls.empty() || !worker.isRunning(); });
        }
        servePendingCalls();
    }
    QObject::disconnect(ended);
    worker.wait();
}

void endMainThreadCalls()
{
    std::deque<PendingCall> dropped;
    const std::lock_guard lock(callQueue().guard);
    callQueue().mainThread = nullptr;
    dropped.swap(callQueue().calls);
}

} // namespace pagestack
