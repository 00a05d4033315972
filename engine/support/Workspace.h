#pragma once

#include <QList>
#include <QUrl>

namespace pagestack {

/// The desktop around the program, as far as the engine and the file actions need it. The programs
/// implement it. Any thread may call it; an implementation that needs the main thread goes there
/// itself. Nothing is reported: a request that the desktop cannot fulfil is logged.
class Workspace
{
public:
    virtual ~Workspace() = default;

    /// Opens a file, a folder or a web page in its default application.
    virtual void openURL(const QUrl& url) = 0;

    /// Shows the files selected in the file manager, in as few windows as it can.
    virtual void activateFileViewerSelectingURLs(const QList<QUrl>& urls) = 0;

    /// Opens the file manager's information window for each of the files.
    virtual void showInformation(const QList<QUrl>& urls) = 0;

protected:
    Workspace() = default;
    Workspace(const Workspace&) = default;
    Workspace& operator=(const Workspace&) = default;
};

} // namespace pagestack
