#include "engine/support/SystemLog.h"
#include "engine/support/Workspace.h"
#include "filelist/CustomTableView.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "ui_MainWindow.h"

namespace pagestack {

using namespace Qt::StringLiterals;

QList<QUrl> PagestackAppDelegate::highlightedUrls() const
{
    QList<QUrl> urls;
    for (const int row : m_ui->mainTableView->highlightedRows())
        urls.append(m_files.at(row)->filePath());
    return urls;
}

void PagestackAppDelegate::openFileWithFinder() { openFiles(); }

void PagestackAppDelegate::openFileEnclosingFolder() { openEnclodingFolder(); }

void PagestackAppDelegate::getInfoFile() { getInfo(); }

void PagestackAppDelegate::openFiles()
{
    try {
        for (const QUrl& url : highlightedUrls())
            m_services.workspace.openURL(url);
    } catch (const std::exception& error) {
        systemLogError(u"openFiles"_s, error);
    }
}

void PagestackAppDelegate::openEnclodingFolder()
{
    try {
        m_services.workspace.activateFileViewerSelectingURLs(highlightedUrls());
    } catch (const std::exception& error) {
        systemLogError(u"openEnclodingFolder"_s, error);
    }
}

void PagestackAppDelegate::getInfo()
{
    try {
        m_services.workspace.showInformation(highlightedUrls());
    } catch (const std::exception& error) {
        systemLogError(u"getInfo"_s, error);
    }
}

} // namespace pagestack
