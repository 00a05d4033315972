#pragma once

#include "engine/support/Workspace.h"

#include <QObject>

namespace pagestack {

/// The desktop that the window runs on. Files are shown and described by the file manager of the
/// session, asked over D-Bus (org.freedesktop.FileManager1) without waiting for it; where none
/// answers within some seconds, the folders of the files are opened instead, each once a request.
/// On macOS the system's own file manager is asked, and the window waits for the script of each
/// information window. Requests of other threads go to the main thread.
class DesktopWorkspace : public QObject, public Workspace
{
    Q_OBJECT

public:
    using QObject::QObject;

    void openURL(const QUrl& url) override;
    void activateFileViewerSelectingURLs(const QList<QUrl>& urls) override;
    void showInformation(const QList<QUrl>& urls) override;

private:
    // Main thread. Every platform has its own file with these two.
    void revealFiles(const QList<QUrl>& urls);
    void describeFiles(const QList<QUrl>& urls);
};

} // namespace pagestack
