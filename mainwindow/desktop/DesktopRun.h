#pragma once

#include "mainwindow/desktop/SleepInhibitor.h"

#include <QObject>
#include <QString>

#include <memory>

namespace pagestack {

/// A run as the desktop sees it: the computer stays awake, the icon of the program shows how far it
/// is, and a notification tells its end when no window of the program is in front. Nothing happens
/// where the system offers no way. Main thread.
class DesktopRun : public QObject
{
    Q_OBJECT

public:
    /// A run begins.
    DesktopRun();
    ~DesktopRun() override;
    DesktopRun(const DesktopRun&) = delete;
    DesktopRun& operator=(const DesktopRun&) = delete;

    /// The part that is done, 0..1. Steps below one percent are left out.
    void setProgress(double fraction);
    /// The run has ended. The notification, if there is one, can be answered as long as this
    /// object is there; with `hasFolder` it offers to open the folder of the outputs.
    void end(const QString& title, const QString& text, bool hasFolder);

signals:
    /// The answer to the notification.
    void folderRequested();

private:
    struct System;

    void showProgress(int percent, bool isVisible);
    void notify(const QString& title, const QString& text, bool hasFolder);

    std::unique_ptr<SleepInhibitor> m_awake;
    std::unique_ptr<System> m_system;
    int m_percent = -1; ///< that is shown; -1: none
};

} // namespace pagestack
