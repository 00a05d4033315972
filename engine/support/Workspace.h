#pragma once

#include <QList>
#include <QUrl>

namespace pagestack {

/// The desktop around the program, for the job and the file actions; the programs implement it.
/// Any thread. Reports nothing: a request that the desktop cannot fulfil is logged.
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
