#pragma once

#include "engine/job/Process.h"
#include "engine/settings/Settings.h"
#include "filelist/Arguments.h"
#include "filelist/FileList.h"
#include "filelist/FileLoader.h"
#include "filelist/SortOrder.h"
#include "mainwindow/import/ImportFilesWindowController.h"

#include <QColor>
#include <QMainWindow>
#include <QObject>
#include <QPalette>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class QAbstractButton;
class QLineEdit;
class QMenu;

namespace Ui {
class MainWindow;
}

namespace pagestack {

class AlertPanel;
class ApplicationEvents;
class FileChooser;
class FileTableModel;
class FindControl;
class ListEditor;
class ProcessPanel;
class UserDefaults;
class Workspace;

/// The main controller: owns the main window's controls, the file list, the live settings and the
/// current conversion job, and carries out what the user asks for. One class over several files,
/// one a concern: start-up (PagestackAppDelegate.cpp), menus (...Menus.cpp), the run (...Run.cpp,
/// ...Plan.cpp), the settings pane (...Settings.cpp), loading (...Files.cpp), path lists
/// (...Import.cpp), the commands on the list (...List.cpp, ...Sort.cpp, ...Export.cpp), on files
/// (...FileActions.cpp), totals (...Totals.cpp), the end of the program (...Lifecycle.cpp).
///
/// Main thread only, but for `loadURLs` and what `LoaderTarget` names, which the loader's thread
/// calls, and `isPlanClear`, which that of the run calls.
class PagestackAppDelegate : public QObject,
                             private LoaderTarget,
                             private ImportFilesWindowControllerDelegate
{
    Q_OBJECT
    /// True while a load or a run is under way; the loader polls it between files.
    Q_PROPERTY(bool isProcessing READ isProcessing WRITE setIsProcessing NOTIFY isProcessingChanged)
    /// Text colour of the summary lines: greyed while busy.
    Q_PROPERTY(QColor processingLabelColor READ processingLabelColor WRITE setProcessingLabelColor
                   NOTIFY processingLabelColorChanged)

public:
    /// None of them is owned; all outlive the controller.
    struct Services
    {
        UserDefaults& defaults;
        Workspace& workspace;
        AlertPanel& alerts;
        FileChooser& chooser;
        ReadDates readDates = &FileItem::dates; ///< for sorts and for the table
    };

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
    void setupVersion();
    void setupToolbarAndMenuItems();
    void setButtonKeyCharacter(QAbstractButton* button, const QString& keyChar,
                               const QColor& color);

    // The end of the program.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    /// Commits the field being edited and saves the settings. True when the program may end now;
    /// false while a load or a run goes on: it is asked to stop, and `readyToTerminate` comes when
    /// it has.
    bool applicationShouldTerminate();
    /// Ends the program, at once or by `readyToTerminate`.
    void quitAction();
    /// Whether closing the window ends the program, as it does everywhere but on macOS; else it
    /// hides the window, and applicationShouldHandleReopen() brings it back.
    void setEndsWithWindow(bool endsWithWindow) { m_endsWithWindow = endsWithWindow; }

    // The run.
    void convertAction();
    void split();
    void cancelAction();
    void cancelProcessAction();
    void viewLogAction();
    void closeProcessAction();
    void startProcess();
    void stopProcess();
    void resetView(bool enable);
    void resetViewForProcess(bool enable);

    // The settings pane.
    void showSettings(bool show);
    void setSplitOptions(int outputType);
    void chooseOutputFolder();
    /// What a field that takes a number holds after an edit: `fallback` for a text that is empty or
    /// zero, else the text without what is no digit at its ends.
    static QString filteredNumber(const QString& text, const QString& fallback);
    void controlTextDidChange(QLineEdit* field);

    // Loading files.
    void addFiles();
    void addFolder();
    void searchAction(); ///< shows the find bar and gives it the keys
    bool inculdeSubfolders() const;
    void setInculdeSubfolders(bool include);
    /// Starts a load on a thread of its own; refused while a load or a run is under way.
    void startLoading(const Arguments& arguments);
    void loadURLs(const Arguments& arguments);
    /// Paths of files and folders given to the program, loaded as if they were dropped.
    void openPaths(const QStringList& paths);

    // Commands on the list; the actions read the property "tag" of their sender.
    void checkUncheckInvertSelectionAction(const QObject* sender);
    void checkUncheckInvertSelection(int tag);
    void checkUncheckInvertAction(const QObject* sender);
    void checkUncheckInvertAll(int tag);
    void selectDeselectRemoveAction(const QObject* sender);
    void selectDeselectRemoveAll(int tag);
    void removeAction();
    void removeFiles();
    void moveUp();
    void moveDown();
    void sortDescriptorsDidChange(const SortOrders& oldOrders);
    void importAction();
    void openImportFilesPanel();
    void exportAction();
    void exportTo(const QString& path);

    // Commands on the highlighted files.
    void openFileWithFinder();
    void openFiles();
    void openFileEnclosingFolder();
    void openEnclodingFolder();
    void getInfoFile();
    void getInfo();

    // Totals.
    void updateTotalLabel();
    void updateTotalPagesLabel() override;
    void updateTimeTakenLabel(const QString& text);

    bool isProcessing() const override { return m_isProcessing; }
    void setIsProcessing(bool isProcessing);
    QColor processingLabelColor() const { return m_processingLabelColor; }
    void setProcessingLabelColor(const QColor& color);
    QMainWindow* window() const { return m_window.get(); }
    FileList& files() { return m_files; }
    FileTableModel& tableModel() { return *m_tableModel; }
    Settings& settings() { return *m_settings; }
    Process* process() const { return m_process.get(); }
    ProcessPanel* processViewPanel() const { return m_processViewPanel.get(); }

signals:
    void isProcessingChanged(bool isProcessing);
    void processingLabelColorChanged(const QColor& color);
    /// The load or run that `applicationShouldTerminate` waited for has ended.
    void readyToTerminate();

private:
    bool contains(const QUrl& url) const override { return m_files.contains(url); }
    bool append(const std::shared_ptr<FileItem>& item) override;
    void ImportFilesWindowControllerDidFinish(ImportFilesWindowController& dialog) override;

    void connectControls();
    void connectMenus();
    void bindSettings();
    void observeSettings();
    void restoreWindowState();
    void saveWindowState();
    bool eventFilter(QObject* watched, QEvent* event) override;
    void endEditing();
    void connectSettingsPane();
    void connectTable();
    void connectListCommands();
    void connectProgramMenus();
    void connectListMenus();
    void makeContextMenu();
    void followMenus();
    void markByTag(const QList<int>& rows, int tag);
    void removeRows(const QList<int>& rows);
    void removeConverted();
    void showStep(const QList<int>& rows);
    void followList();
    void scrollToRow(int row);
    QList<QUrl> highlightedUrls() const;
    void commitSettingsFields();
    void markTheKeyLetters();
    /// Shows what went wrong with the file of the settings since the last call, if anything.
    void tellSettingsTroubles();
    void aboutAction();
    void refuse(const QString& text);
    void refuseOutputFolder();
    void beginRun();
    void startRun(const QList<OutputFile>& outputs, bool isPlanned);
    bool isPlanClear(Process& job);
    void askForNumbers();
    void leaveRun();
    void startWorker(std::function<void()> work);
    void startBusy(std::function<void()> work);
    void workerEnded();
    void finishWorker();
    void showQuality();
    void followOutputFolder();
    void sortAsTable();
    void sortBesideTheWindow(const SortOrders& oldOrders, const SortOrders& orders);
    DateReading dateReading() const;
    FileList::Items takeScatteredHighlight();
    void putHighlightBack(const FileList::Items& items);
    void updateMoveButtons();
    void updateConvertControls();
    void followPalette();
    bool mayQuit();

    Services m_services;
    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<Ui::MainWindow> m_ui;
    FileList m_files;
    std::unique_ptr<FileTableModel> m_tableModel;
    std::unique_ptr<ListEditor> m_editor;
    std::unique_ptr<FindControl> m_find;
    QMenu* m_filesContextMenu = nullptr; ///< the window's
    ImportFilesWindowController* m_importPanel = nullptr; ///< the window's; made when first used
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<Process> m_process;
    std::unique_ptr<ProcessPanel> m_processViewPanel;
    std::unique_ptr<QThread> m_worker; ///< the load or the run under way; null when idle
    /// Of the run that was not begun, since some of its outputs would end in one file: what to ask.
    struct Clash
    {
        QString question;
        QList<OutputFile> numbered; ///< the outputs that would not
    };
    std::optional<Clash> m_clash; ///< to be asked when the worker has ended
    std::atomic<bool> m_isProcessing = false; ///< written by the main thread, polled by the loader
    bool m_showSettings = true;
    bool m_isViewEnabled = true; ///< what resetView was last called with
    bool m_hasQuit = false; ///< the window may close now
#ifdef Q_OS_MACOS
    bool m_endsWithWindow = false;
#else
    bool m_endsWithWindow = true;
#endif
    /// The program ends as soon as the worker has. Written by the main thread, polled by a sort.
    std::atomic<bool> m_isTerminating = false;
    std::atomic<int> m_cancelCount = 0; ///< of Cancel; as m_isTerminating
    QPalette::ColorGroup m_labelGroup = QPalette::Active; ///< that the totals are shown in
    QColor m_processingLabelColor;
    std::unique_ptr<ApplicationEvents> m_applicationEvents;
};

} // namespace pagestack
