#pragma once

#include <QObject>

#include <functional>

namespace pagestack {

/// What the system asks of the program as a whole, passed on while this object is there: to end,
/// by the Dock, a log-out or the end of the session, to come back, by a click on its icon in the
/// Dock, and to open files, by a drop on that icon or by "Open with". Main thread.
class ApplicationEvents : public QObject
{
    Q_OBJECT

public:
    /// `mayQuit` is asked before the program ends, which it does not for false. `reopen` takes
    /// whether a window of the program is visible, `open` a file or folder.
    ApplicationEvents(std::function<bool()> mayQuit, std::function<void(bool)> reopen,
                      std::function<void(const QUrl&)> open);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<bool()> m_mayQuit;
    std::function<void(const QUrl&)> m_open;
};

} // namespace pagestack
