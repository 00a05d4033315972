#pragma once

#include "engine/preview/PreviewFile.h"

#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace pagestack {

/// Work for the preview on another thread, of which only the newest counts: what was begun before
/// is told to stop, and its result is dropped. Main thread.
class LatestWork : public QObject
{
    Q_OBJECT

public:
    /// `threads` has ended before this object does.
    explicit LatestWork(QThreadPool& threads, QObject* parent)
        : QObject(parent)
        , m_threads(threads)
    {
    }
    ~LatestWork() override { cancel(); }
    LatestWork(const LatestWork&) = delete;
    LatestWork& operator=(const LatestWork&) = delete;

    /// Does `work(isStopped)`, then `done(result, reason)` on the main thread; `result` is none
    /// where the work has thrown, for the reason.
    template <typename Work, typename Done>
    void start(Work work, Done done)
    {
        cancel();
        m_stop = std::make_shared<std::atomic<bool>>(false);
        m_threads.start([this, stop = m_stop, work = std::move(work), done = std::move(done)] {
            const IsStopped isStopped = [stop] { return stop->load(); };
            using Result = decltype(work(isStopped));
            auto result = std::make_shared<std::optional<Result>>();
            QString reason;
            try {
                if (!isStopped())
                    *result = work(isStopped);
            } catch (const std::exception& error) {
                reason = QString::fromUtf8(error.what());
            }
            QMetaObject::invokeMethod(
                this,
                [this, stop, result, reason, done] {
                    if (*stop)
                        return;
                    m_stop.reset();
                    done(*result, reason);
                },
                Qt::QueuedConnection);
        });
    }

    bool isUnderWay() const { return m_stop != nullptr; }

    void cancel()
    {
        if (m_stop)
            *m_stop = true;
        m_stop.reset();
    }

private:
    QThreadPool& m_threads;
    std::shared_ptr<std::atomic<bool>> m_stop; ///< null: nothing is under way
};

} // namespace pagestack
