#pragma once

#include "filelist/FileItem.h"

#include <QCache>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace pagestack {

/// What the last look at a file has told, for cells of the table. Other threads look, since a file
/// on another computer may take long to answer. Main thread.
template <typename Value>
class LastLooks
{
public:
    /// Any thread, several at a time; throws nothing. It may end long after this object, which does
    /// not wait for a computer that does not answer: it owns what it uses.
    using Look = std::function<Value(const FileItem& item)>;

    static constexpr int manyFiles = 10000; // more than a window has rows

    /// `changed` is called, on the main thread, when of() returns another value of some file. A
    /// file is not looked at again within `pauseMs`. The values of `mostFilesKept` files are kept,
    /// which are more than the rows in view.
    LastLooks(Look look, qint64 pauseMs, std::function<void()> changed,
              int mostFilesKept = manyFiles)
        : m_shared(std::make_shared<Shared>(std::move(look), &m_context))
        , m_pauseMs(pauseMs)
        , m_changed(std::move(changed))
        , m_known(mostFilesKept)
    {
        m_clock.start();
        m_threads->setMaxThreadCount(mostFilesAtATime);
    }
    ~LastLooks()
    {
        m_threads->clear();
        {
            const std::lock_guard lock(m_shared->guard);
            m_shared->context = nullptr;
        }
        // What is not done by then ends with the program.
        if (!m_threads->waitForDone(mostWaitMs))
            static_cast<void>(m_threads.release());
    }
    LastLooks(const LastLooks&) = delete;
    LastLooks& operator=(const LastLooks&) = delete;

    /// None before the first look. Looks anew when that was a while ago.
    Value of(const std::shared_ptr<FileItem>& item)
    {
        const QString file = item->identity();
        if (!m_known.contains(file))
            m_known.insert(file, new Known);
        Known& last = *m_known.object(file);
        if (!last.isUnderWay && m_clock.elapsed() >= last.nextMs) {
            last.isUnderWay = true;
            begin(item);
        }
        return last.value;
    }

private:
    static constexpr int mostFilesAtATime = 4;
    static constexpr int mostWaitMs = 300; ///< at the end

    /// What the threads use.
    struct Shared
    {
        Shared(Look theLook, QObject* theContext)
            : look(std::move(theLook))
            , context(theContext)
        {
        }
        const Look look;
        std::mutex guard;
        QObject* context; ///< of the calls to the main thread; under `guard`, null at the end
    };

    struct Known
    {
        Value value {};
        qint64 nextMs = 0; ///< by m_clock: the next look is not before
        bool isUnderWay = false;
    };

    void begin(const std::shared_ptr<FileItem>& item)
    {
        const auto look = [this, shared = m_shared, item] {
            const Value value = shared->look(*item);
            const std::lock_guard lock(shared->guard);
            if (shared->context != nullptr)
                QMetaObject::invokeMethod(
                    shared->context, [this, file = item->identity(), value] { take(file, value); },
                    Qt::QueuedConnection);
        };
        m_threads->start(look, ++m_count); // the rows in view were asked for last
    }

    void take(const QString& file, const Value& value)
    {
        Known* const last = m_known.object(file);
        if (last == nullptr)
            return;
        last->isUnderWay = false;
        last->nextMs = m_clock.elapsed() + m_pauseMs;
        if (std::exchange(last->value, value) != value)
            m_changed();
    }

    QObject m_context;
    const std::shared_ptr<Shared> m_shared;
    const qint64 m_pauseMs;
    const std::function<void()> m_changed;
    QCache<QString, Known> m_known;
    QElapsedTimer m_clock;
    int m_count = 0;
    std::unique_ptr<QThreadPool> m_threads = std::make_unique<QThreadPool>();
};

} // namespace pagestack
