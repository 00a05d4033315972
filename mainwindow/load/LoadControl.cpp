#include "mainwindow/load/LoadControl.h"

#include "engine/settings/UserDefaults.h"
#include "engine/sources/AllowedFileTypes.h"
#include "engine/support/Dates.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "filelist/FileTableModel.h"
#include "filelist/ListChanges.h"
#include "filelist/PathClipboard.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/list/ListCommands.h"
#include "mainwindow/state/ViewState.h"
#include "mainwindow/state/Worker.h"
#include "mainwindow/widgets/FileChooser.h"
#include "ui_MainWindow.h"

#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTextDocument>

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString includeSubfoldersKey = u"INCLUDESUBFOLDERS"_s;
    constexpr qsizetype mostRangesKept = 64; // of the highlight, during a load

} // namespace

LoadControl::LoadControl(const WindowParts& parts, ListCommands& list)
    : m_parts(parts)
    , m_list(list)
    , m_recentFolders(parts.services.defaults, u"RECENTFOLDERS"_s, *parts.ui.menuRecentFolders,
                      [adding = parts.ui.addFolderAction](QAction& item, const QString&) {
                          item.setEnabled(adding->isEnabled());
                      })
{
    connect(&m_recentFolders, &RecentFolders::chosen, this,
            [this](const QString& folder) { load({ QUrl::fromLocalFile(folder) }, true); });
    parts.ui.inculdeSubfoldersBtn->setChecked(inculdeSubfolders());
    connect(parts.ui.inculdeSubfoldersBtn, &QCheckBox::toggled, this,
            &LoadControl::setInculdeSubfolders);
    connect(parts.ui.mainTableView, &CustomTableView::filesDropped, this,
            [this](const QList<QUrl>& urls) { load(urls, true); });
    parts.ui.mainTableView->setDropArea(parts.window);
    connect(parts.ui.pasteAction, &QAction::triggered, this, &LoadControl::paste);
    connect(&parts.view, &ViewState::isProcessingChanged, this, [this](bool isProcessing) {
        if (isProcessing)
            tellAddition({}, {});
    });
    const FileTableModel& model = parts.model;
    connect(&model, &FileTableModel::checkMarksChanged, this, &LoadControl::forgetAddition);
    onListChange(model, this, &LoadControl::forgetAddition);
}

/// Adds what the clipboard has: files, or their paths as text.
void LoadControl::paste()
{
    const ClipboardFiles files = filesIn(QGuiApplication::clipboard()->mimeData());
    if (files.isTooLong)
        tellAddition(tr("The text on the clipboard is too long; save it as a file to import it"),
                     {});
    else if (files.urls.isEmpty())
        tellAddition(tr("The clipboard has no files and no paths of files"), {});
    else
        load(files.urls, true, files.unreadLines);
}

void LoadControl::addFiles()
{
    m_parts.services.chooser.chooseFiles(&m_parts.window, tr("Select TIFF File(s):"),
                                         allowedFileTypes(),
                                         [this](const QList<QUrl>& urls) { load(urls, false); });
}

void LoadControl::addFolder()
{
    m_parts.services.chooser.chooseFolders(&m_parts.window,
                                           tr("Select folder(s) contains TIFF File(s):"),
                                           [this](const QList<QUrl>& urls) { load(urls, true); });
}

void LoadControl::openImportFilesPanel()
{
    if (m_importPanel == nullptr) {
        m_importPanel = new ImportFilesWindowController(&m_parts.window, m_parts.services.alerts,
                                                        m_parts.services.chooser);
        m_importPanel->setDelegate(this);
        m_importPanel->setAllowedTypes(allowedFileTypes().join(u','));
    }
    m_importPanel->resetView();
    m_importPanel->open();
}

void LoadControl::ImportFilesWindowControllerDidFinish(ImportFilesWindowController& dialog)
{
    startLoading({ dialog.files(), false, false, dialog.pageChoices() });
}

bool LoadControl::inculdeSubfolders() const
{
    return m_parts.services.defaults.boolForKey(includeSubfoldersKey);
}

void LoadControl::setInculdeSubfolders(bool include)
{
    m_parts.services.defaults.setBool(includeSubfoldersKey, include);
    m_parts.services.synchronize(&m_parts.window);
}

/// For the menu of recent ones; a drop of many is one of files.
void LoadControl::noteFolders(const QList<QUrl>& urls)
{
    if (urls.size() > RecentFolders::most)
        return;
    QStringList folders;
    for (const QUrl& url : urls)
        if (QFileInfo(url.toLocalFile()).isDir())
            folders.append(QDir::cleanPath(url.toLocalFile()));
    if (!folders.isEmpty())
        m_recentFolders.note(folders);
}

/// With what is below the folders, if the user wants that.
void LoadControl::load(const QList<QUrl>& urls, bool areFolders, int unreadLines)
{
    if (urls.isEmpty())
        return;
    if (areFolders)
        noteFolders(urls);
    startLoading({ .urls = urls,
                   .isFolders = areFolders,
                   .isIncludeSubdirectories = m_parts.ui.inculdeSubfoldersBtn->isChecked(),
                   .unreadLines = unreadLines });
}

void LoadControl::startLoading(const Arguments& arguments)
{
    if (m_parts.view.isViewEnabled() && !m_parts.worker.isBusy())
        m_parts.worker.start([this, arguments] { loadURLs(arguments); });
}

void LoadControl::loadURLs(const Arguments& arguments)
{
    const QDateTime start = QDateTime::currentDateTime();
    ViewState& view = m_parts.view;
    FileList::Items highlight;
    Addition addition;
    guarded(u"loadURLs:"_s, [&] {
        callOnMainThread([&] {
            highlight = takeScatteredHighlight();
            view.resetView(false);
            view.startProcess();
            if (m_parts.worker.isTerminating()) // asked for before the thread came here
                m_parts.worker.cancel();
            view.updateTimeTakenLabel(totalTimeTakenText(tr("In Process..."), 0, 0));
        });
        FileLoader loader(*this);
        const bool isChanged = arguments.isFolders
            ? loader.addFolderToList(arguments.urls, arguments.isIncludeSubdirectories)
            : loader.addFilesToList(arguments.urls, arguments.pageChoices);
        addition = loader.addition();
        addition.unreadLines = arguments.unreadLines;
        callOnMainThread([&] { m_parts.model.choosePages(std::exchange(m_choices, {})); });
        if (isChanged)
            m_list.sortAsTable();
    });
    const QString taken = timeTakenString(start, QDateTime::currentDateTime());
    callOnMainThread([&] { view.stopProcess(); });
    callOnMainThread([&] {
        putHighlightBack(highlight);
        view.resetView(true);
        if (!m_parts.ui.filterField->hasFocus()) // which can be used meanwhile
            m_parts.ui.mainTableView->setFocus();
        view.updateTimeTakenLabel(totalTimeTakenText(taken, 0, 0));
        tellAddition(addition.text(), addition.reasons());
    });
}

void LoadControl::tellWaiting(int count)
{
    tellAddition(tr("%n file(s) wait until the conversion is closed", nullptr, count), {});
}

/// Until the next change of the list.
void LoadControl::tellAddition(const QString& text, const QString& reasons)
{
    m_parts.ui.additionLabel->setText(text);
    m_parts.ui.additionLabel->setToolTip(
        Qt::mightBeRichText(reasons) ? Qt::convertFromPlainText(reasons) : reasons);
    m_parts.ui.additionLabel->setVisible(!text.isEmpty());
}

void LoadControl::forgetAddition()
{
    if (!m_parts.worker.isBusy())
        tellAddition({}, {});
}

/// Each file that is added is compared with every range of the highlight; so one of many ranges is
/// put aside during a load.
FileList::Items LoadControl::takeScatteredHighlight()
{
    CustomTableView* table = m_parts.ui.mainTableView;
    if (table->selectionModel()->selection().size() <= mostRangesKept)
        return {};
    FileList::Items items;
    for (const int row : table->highlightedRows())
        items.append(m_parts.files.at(row));
    table->clearSelection();
    return items;
}

void LoadControl::putHighlightBack(const FileList::Items& items)
{
    if (items.isEmpty())
        return;
    CustomTableView* table = m_parts.ui.mainTableView;
    const int current = table->currentRow();
    table->highlightRows(m_parts.files.rowsOf(items));
    table->setCurrentRow(current);
}

bool LoadControl::isProcessing() const { return m_parts.view.isProcessing(); }

bool LoadControl::append(const std::shared_ptr<FileItem>& item)
{
    if (!m_parts.model.append(item))
        return false;
    m_parts.model.setStatus(item->path(), {}); // the last run had another file there, maybe
    return true;
}

void LoadControl::choosePages(const QHash<QUrl, QString>& choices)
{
    m_choices.insert(choices); // at the end at once: a long list would be looked through each time
}

void LoadControl::updateTotalPagesLabel() { m_parts.view.updateTotalPagesLabel(); }

} // namespace pagestack
