#include "mainwindow/desktop/DesktopRun.h"

#include <QApplication>

namespace pagestack {

void DesktopRun::setProgress(double fraction)
{
    const int percent = qBound(0, static_cast<int>(100 * fraction), 100);
    if (percent == m_percent)
        return;
    m_percent = percent;
    showProgress(percent, true);
}

void DesktopRun::end(const QString& title, const QString& text, bool hasFolder)
{
    m_awake.reset();
    if (m_percent >= 0)
        showProgress(0, false);
    m_percent = -1;
    if (QApplication::activeWindow() == nullptr)
        notify(title, text, hasFolder);
}

} // namespace pagestack
