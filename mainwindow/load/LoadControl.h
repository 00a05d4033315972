#pragma once

#include "filelist/Arguments.h"
#include "filelist/FileList.h"
#include "filelist/FileLoader.h"
#include "mainwindow/import/ImportFilesWindowController.h"
#include "mainwindow/settings/RecentFolders.h"
#include "mainwindow/state/WindowParts.h"

#include <QHash>
#include <QObject>

namespace pagestack {

class ListCommands;

/// Every way into the list: choosers, drops, path lists and the arguments of the program. Main
/// thread, but for loadURLs() and what LoaderTarget names, which the loader's thread calls.
class LoadControl : public QObject,
                    private LoaderTarget,
                    private ImportFilesWindowControllerDelegate
{
    Q_OBJECT

public:
    /// `list` outlives it.
    LoadControl(const WindowParts& parts, ListCommands& list);

    void addFiles();
    void addFolder();
    void paste();
    void openImportFilesPanel();
    /// Files, and folders with what the user wants of them, as if they were dropped. Refused while
    /// a load or a run is under way.
    void openURLs(const QList<QUrl>& urls) { load(urls, true); }
    /// Says that `count` files from outside will be loaded after the run.
    void tellWaiting(int count);
    bool inculdeSubfolders() const;
    void setInculdeSubfolders(bool include);
    /// Starts a load on a thread of its own; refused until the last load or run is over and
    /// closed.
    void startLoading(const Arguments& arguments);
    void loadURLs(const Arguments& arguments);

private:
    bool isProcessing() const override;
    bool contains(const QUrl& url) const override { return m_parts.files.contains(url); }
    bool append(const std::shared_ptr<FileItem>& item) override;
    void choosePages(const QHash<QUrl, QString>& choices) override;
    void updateTotalPagesLabel() override;
    void ImportFilesWindowControllerDidFinish(ImportFilesWindowController& dialog) override;

    void load(const QList<QUrl>& urls, bool areFolders, int unreadLines = 0);
    void noteFolders(const QList<QUrl>& urls);
    void tellAddition(const QString& text, const QString& reasons);
    void forgetAddition();
    FileList::Items takeScatteredHighlight();
    void putHighlightBack(const FileList::Items& items);

    const WindowParts m_parts;
    ListCommands& m_list;
    RecentFolders m_recentFolders;
    QHash<QUrl, QString> m_choices; ///< of pages, for files that the list had before the load
    ImportFilesWindowController* m_importPanel = nullptr; ///< the window's; made when first used
};

} // namespace pagestack
