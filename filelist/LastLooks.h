#pragma once

#include "filelist/FileItem.h"

#include <QCache>
#include <QElapsedTimer>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <utility>

namespace pagestack {

/// What the last look at a file has told, for cells of the table. Other threads look, since a file
/// on another computer may take long to answer. Main thread.
template <typename Value>
class LastLooks
{
public:
    /// Any thread, several at a time; throws nothing.
    using Look = std::function<Value(const FileItem& item)>;

    static constexpr int manyFiles = 10000; // more than a window has rows

    /// `changed` is called, on the main thread, when of() returns another value of some file. A
    /// file is not looked at again within `pauseMs`. The values of `mostFilesKept` files are kept,
    /// which are more than the rows in view.
    LastLooks(Look look, qint64 pauseMs, std::function<void()> changed,
              int mostFilesKept = manyFiles)
        : m_look(std::move(look))
        , m_pauseMs(pauseMs)
        , m_changed(std::move(changed))
        , m_known(mostFilesKept)
    {
        m_clock.start();
        m_threads.setMaxThreadCount(mostFilesAtATime);
    }
    ~LastLooks() ///< waits for the files that are being looked at
    {
        m_threads.clear();
        m_threads.waitForDone();
    }
    LastLooks(const LastLooks&) = delete;
    LastLooks& operator=(const LastLooks&) = delete;

    /// None before the first look. Looks anew when that was a while ago.
    Value of(const std::shared_ptr<FileItem>& item)
    {
        const QUrl url = item->filePath();
        if (!m_known.contains(url))
            m_known.insert(url, new Known);
        Known& last = *m_known.object(url);
        if (!last.isUnderWay && m_clock.elapsed() >= last.nextMs) {
            last.isUnderWay = true;
            begin(item);
        }
        return last.value;
    }

private:
    static constexpr int mostFilesAtATime = 4;

    struct Known
    {
        Value value {};
        qint64 nextMs = 0; ///< by m_clock: the next look is not before
        bool isUnderWay = false;
    };

    void begin(const std::shared_ptr<FileItem>& item)
    {
        const auto look = [this, item] {
            const Value value = m_look(*item);
            QMetaObject::invokeMethod(
                &m_context, [this, url = item->filePath(), value] { take(url, value); },
                Qt::QueuedConnection);
        };
        m_threads.start(look, ++m_count); // the rows in view were asked for last
    }

    void take(const QUrl& url, const Value& value)
    {
        Known* const last = m_known.object(url);
        if (last == nullptr)
            return;
        last->isUnderWay = false;
        last->nextMs = m_clock.elapsed() + m_pauseMs;
        if (std::exchange(last->value, value) != value)
            m_changed();
    }

    const Look m_look;
    const qint64 m_pauseMs;
    const std::function<void()> m_changed;
    QCache<QUrl, Known> m_known;
    QElapsedTimer m_clock;
    int m_count = 0;
    QObject m_context; ///< of the calls to the main thread
    QThreadPool m_threads; ///< last: its work uses the rest
};

} // namespace pagestack
