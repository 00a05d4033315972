#pragma once

#include "engine/support/Workspace.h"

#include <QObject>

namespace pagestack {

/// The desktop that the window runs on. Files are shown and described by the file manager of the
/// session, asked over D-Bus (org.freedesktop.FileManager1); where none answers, folders are opened
/// instead. Requests of other threads go to the main thread.
class DesktopWorkspace : public QObject, public Workspace
{
    Q_OBJECT

public:
    using QObject::QObject;

    void openURL(const QUrl& url) override;
    void activateFileViewerSelectingURLs(const QList<QUrl>& urls) override;
    void showInformation(const QList<QUrl>& urls) override;

private:
    void callFileManager(const QString& method, const QList<QUrl>& urls);
    void openFolders(const QList<QUrl>& urls);
};

} // namespace pagestack
