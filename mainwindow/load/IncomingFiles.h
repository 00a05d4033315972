#pragma once

#include "engine/support/Pause.h"

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>

namespace pagestack {

/// Files and folders that come from outside, as by "Open with", the Dock or another start of the
/// program. They are opened together, and kept while the window is busy. Main thread.
class IncomingFiles : public QObject
{
    Q_OBJECT

public:
    /// `isIdle` says whether a load can begin; `open` begins it.
    IncomingFiles(std::function<bool()> isIdle, std::function<void(const QList<QUrl>&)> open);

    /// What still waits is named in the system log.
    ~IncomingFiles() override;
    IncomingFiles(const IncomingFiles&) = delete;
    IncomingFiles& operator=(const IncomingFiles&) = delete;

    void add(const QList<QUrl>& urls);

signals:
    /// `count` files cannot be opened yet.
    void kept(int count);

private:
    void openWhenIdle();

    std::function<bool()> m_isIdle;
    std::function<void(const QList<QUrl>&)> m_open;
    QList<QUrl> m_waiting;
    Pause m_timer;
};

} // namespace pagestack
