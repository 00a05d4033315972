#include "mainwindow/desktop/ApplicationEvents.h"

#include <QFileOpenEvent>
#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace pagestack {

namespace {

    bool hasVisibleWindows()
    {
        const QWindowList windows = QGuiApplication::topLevelWindows();
        return std::any_of(windows.cbegin(), windows.cend(),
                           [](const QWindow* window) { return window->isVisible(); });
    }

} // namespace

// A click in the Dock arrives as this signal, also when the program is active already.
ApplicationEvents::ApplicationEvents(std::function<bool()> mayQuit,
                                     std::function<void(bool)> reopen,
                                     std::function<void(const QUrl&)> open)
    : m_mayQuit(std::move(mayQuit))
    , m_open(std::move(open))
{
    qApp->installEventFilter(this);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
            [reopen = std::move(reopen)](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive)
                    reopen(hasVisibleWindows());
            });
}

// Before Qt closes the windows, which one that only hides would refuse.
bool ApplicationEvents::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != qApp)
        return false;
    if (event->type() == QEvent::FileOpen) {
        m_open(static_cast<const QFileOpenEvent*>(event)->url());
        return true;
    }
    if (event->type() != QEvent::Quit || m_mayQuit())
        return false;
    event->ignore();
    return true;
}

} // namespace pagestack
