#pragma once

#include <QObject>

#include <functional>

namespace pagestack {

/// What the system asks of the program as a whole, passed on while this object is there: to end,
/// by the Dock, a log-out or the end of the session, and to come back, by a click on its icon in
/// the Dock. Main thread.
class ApplicationEvents : public QObject
{
    Q_OBJECT

public:
    /// `mayQuit` is asked before the program ends, which it does not for false. `reopen` takes
    /// whether a window of the program is visible.
    ApplicationEvents(std::function<bool()> mayQuit, std::function<void(bool)> reopen);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<bool()> m_mayQuit;
};

} // namespace pagestack
