#include "mainwindow/desktop/DesktopRun.h"

#include <QApplication>
#include <QSystemTrayIcon>

namespace pagestack {

/// The icon that a message comes from.
struct DesktopRun::System
{
    QSystemTrayIcon icon;
};

DesktopRun::DesktopRun()
    : m_awake(std::make_unique<SleepInhibitor>())
    , m_system(std::make_unique<System>())
{
}

DesktopRun::~DesktopRun() = default;

// Qt 6.4 has no way to the icon in the Dock.
void DesktopRun::showProgress(int /*percent*/, bool /*isVisible*/) { }

void DesktopRun::notify(const QString& title, const QString& text, bool hasFolder)
{
    if (!QSystemTrayIcon::supportsMessages())
        return;
    m_system->icon.setIcon(QApplication::windowIcon());
    m_system->icon.show();
    if (hasFolder)
        connect(&m_system->icon, &QSystemTrayIcon::messageClicked, this,
                &DesktopRun::folderRequested);
    m_system->icon.showMessage(title, text);
}

} // namespace pagestack
