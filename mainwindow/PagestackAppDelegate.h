#pragma once

#include "engine/settings/Settings.h"
#include "filelist/FileList.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/list/ListCommands.h"
#include "mainwindow/load/IncomingFiles.h"
#include "mainwindow/load/LoadControl.h"
#include "mainwindow/preview/PreviewControl.h"
#include "mainwindow/run/RunControl.h"
#include "mainwindow/settings/SettingsPane.h"
#include "mainwindow/state/ViewState.h"
#include "mainwindow/state/Worker.h"
#include "mainwindow/widgets/KeyLetter.h"

#include <QColor>
#include <QMainWindow>
#include <QObject>

#include <memory>

class QAbstractButton;
class QLineEdit;

namespace pagestack {

class ApplicationEvents;
class ListEditor;

/// The main controller: it owns the window, the file list and the live settings, connects every
/// control with its command, and hands each command to the one who carries it out: ListCommands,
/// LoadControl, RunControl, SettingsPane or ViewState. Main thread, but for loadURLs().
class PagestackAppDelegate : public QObject
{
    Q_OBJECT
    /// True while a load or a run is under way; the loader polls it between files.
    Q_PROPERTY(bool isProcessing READ isProcessing WRITE setIsProcessing NOTIFY isProcessingChanged)
    /// Text colour of the summary lines: greyed while busy.
    Q_PROPERTY(QColor processingLabelColor READ processingLabelColor WRITE setProcessingLabelColor
                   NOTIFY processingLabelColorChanged)

public:
    explicit PagestackAppDelegate(const Services& services, QObject* parent = nullptr);
    ~PagestackAppDelegate() override;
    PagestackAppDelegate(const PagestackAppDelegate&) = delete;
    PagestackAppDelegate& operator=(const PagestackAppDelegate&) = delete;

    // Start-up and the program's own commands.
    void awakeFromNib();
    void openAppAction();
    void websiteAction();
    void helpAction();
    void toggleSettings();
    void preferencesAction(); ///< shows the settings and gives them the keys
    void setupVersion();
    void setupToolbarAndMenuItems();
    void setButtonKeyCharacter(QAbstractButton* button, const QString& keyChar, const QColor& color)
    {
        setKeyLetter(button, keyChar, color);
    }

    // The end of the program.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    /// Commits the field being edited and saves the settings. True when the program may end now;
    /// false while a load or a run goes on: it is asked to stop, and `readyToTerminate` comes when
    /// it has.
    bool applicationShouldTerminate();
    /// Ends the program, at once or by `readyToTerminate`.
    void quitAction();
    void quitUnasked(); ///< also ends a run
    /// Whether closing the window ends the program, as it does everywhere but on macOS; else it
    /// hides the window, and applicationShouldHandleReopen() brings it back.
    /// Nothing that comes from now on would be opened.
    bool isEnding() const { return m_hasQuit || (m_worker && m_worker->isTerminating()); }
    void setEndsWithWindow(bool endsWithWindow) { m_endsWithWindow = endsWithWindow; }

    // The run: see RunControl and ViewState.
    void convertAction() { split(); }
    void split() { m_run->split(); }
    void cancelAction() { m_worker->cancel(); }
    void cancelProcessAction() { m_run->cancelProcess(); }
    void viewLogAction() { m_run->viewLog(); }
    void closeProcessAction() { m_run->closeProcess(); }
    void startProcess() { m_view->startProcess(); }
    void stopProcess() { m_view->stopProcess(); }
    void resetView(bool enable) { m_view->resetView(enable); }
    void resetViewForProcess(bool enable) { m_view->resetViewForProcess(enable); }

    // The settings pane: see SettingsPane.
    void showSettings(bool show);
    void setSplitOptions(int outputType);
    void chooseOutputFolder() { pane().chooseOutputFolder(); }
    void controlTextDidChange(QLineEdit* field) { SettingsPane::controlTextDidChange(field); }

    // Loading files: see LoadControl.
    void addFiles();
    void addFolder();
    void searchAction(); ///< shows the find bar and gives it the keys
    bool inculdeSubfolders() const { return m_load->inculdeSubfolders(); }
    void setInculdeSubfolders(bool include) { m_load->setInculdeSubfolders(include); }
    void loadURLs(const Arguments& arguments) { m_load->loadURLs(arguments); }
    /// Paths of files and folders given to the program, loaded as if they were dropped.
    void openPaths(const QStringList& paths);
    /// Another start of the program wants these opened here, and the window in front.
    void openFromOutside(const QList<QUrl>& urls);
    void importAction();
    void openImportFilesPanel() { m_load->openImportFilesPanel(); }

    // Commands on the list, see ListCommands; the actions read the property "tag" of their sender.
    void checkUncheckInvertSelectionAction(const QObject* sender)
    {
        checkUncheckInvertSelection(tagOf(sender));
    }
    void checkUncheckInvertSelection(int tag) { m_list->checkUncheckInvertSelection(tag); }
    void checkUncheckInvertAction(const QObject* sender) { checkUncheckInvertAll(tagOf(sender)); }
    void checkUncheckInvertAll(int tag) { m_list->checkUncheckInvertAll(tag); }
    void selectDeselectRemoveAction(const QObject* sender)
    {
        selectDeselectRemoveAll(tagOf(sender));
    }
    void selectDeselectRemoveAll(int tag) { m_list->selectDeselectRemoveAll(tag); }
    void removeAction();
    void removeFiles() { m_list->removeFiles(); }
    void moveUp() { m_list->moveUp(); }
    void moveDown() { m_list->moveDown(); }
    void sortDescriptorsDidChange(const SortOrders& oldOrders)
    {
        m_list->sortDescriptorsDidChange(oldOrders);
    }
    void exportAction();

    // Commands on the highlighted files.
    void openFileWithFinder() { openFiles(); }
    void openFiles() { m_list->openFiles(); }
    void openFileEnclosingFolder() { openEnclodingFolder(); }
    void openEnclodingFolder() { m_list->openEnclodingFolder(); }
    void getInfoFile() { getInfo(); }
    void getInfo() { m_list->getInfo(); }

    // Totals: see ViewState.
    void updateTotalLabel() { m_view->updateTotalLabel(); }
    void updateTotalPagesLabel() { m_view->updateTotalPagesLabel(); }
    void updateTimeTakenLabel(const QString& text) { m_view->updateTimeTakenLabel(text); }

    bool isProcessing() const { return m_view->isProcessing(); }
    void setIsProcessing(bool isProcessing) { m_view->setIsProcessing(isProcessing); }
    QColor processingLabelColor() const { return m_view->processingLabelColor(); }
    void setProcessingLabelColor(const QColor& color) { m_view->setProcessingLabelColor(color); }
    QMainWindow* window() const { return m_window.get(); }
    FileList& files() { return m_files; }
    FileTableModel& tableModel() { return *m_tableModel; }
    Settings& settings() { return *m_settings; }
    Process* process() const { return m_run->process(); }
    ProcessPanel* processViewPanel() const { return &m_run->panel(); }

signals:
    void isProcessingChanged(bool isProcessing);
    void processingLabelColorChanged(const QColor& color);
    /// The load or run that `applicationShouldTerminate` waited for has ended.
    void readyToTerminate();

private:
    static int tagOf(const QObject* sender) { return sender->property("tag").toInt(); }
    SettingsPane& pane() const;
    void connectButtons();
    void connectMenus();
    void markTheKeyLetters();
    void leaveRoom(const QWidget& other, QAction& action, QAction& newcomer);
    void aboutAction();
    void saveWindowState();
    void restoreWindowState();
    bool mayQuit();
    bool eventFilter(QObject* watched, QEvent* event) override;
    QWidget* sheetInFront() const;

    const Services m_services;
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<Ui::MainWindow> m_ui;
    FileList m_files;
    std::unique_ptr<FileTableModel> m_tableModel;
    std::unique_ptr<ListEditor> m_editor;
    std::unique_ptr<ViewState> m_view;
    std::unique_ptr<Worker> m_worker;
    std::unique_ptr<ListCommands> m_list;
    std::unique_ptr<LoadControl> m_load;
    std::unique_ptr<RunControl> m_run;
    std::unique_ptr<PreviewControl> m_preview;
    std::unique_ptr<IncomingFiles> m_incoming;
    std::unique_ptr<ApplicationEvents> m_applicationEvents;
    bool m_hasQuit = false; ///< the window may close now
#ifdef Q_OS_MACOS
    bool m_endsWithWindow = false;
#else
    bool m_endsWithWindow = true;
#endif
};

} // namespace pagestack
