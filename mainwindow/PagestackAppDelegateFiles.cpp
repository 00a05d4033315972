#include "engine/settings/UserDefaults.h"
#include "engine/support/Dates.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "engine/sources/AllowedFileTypes.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/FileChooser.h"
#include "ui_MainWindow.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString includeSubfoldersKey = u"INCLUDESUBFOLDERS"_s;
    constexpr qsizetype mostRangesKept = 64; // of the highlight, during a load

} // namespace

void PagestackAppDelegate::connectTable()
{
    CustomTableView* table = m_ui->mainTableView;
    connect(table, &CustomTableView::filesDropped, this, [this](const QList<QUrl>& urls) {
        m_ui->lableDragAndDrop->hide();
        endEditing();
        startLoading({ urls, true, m_ui->inculdeSubfoldersBtn->isChecked() });
    });
    connect(m_tableModel.get(), &FileTableModel::checkMarksChanged, this,
            &PagestackAppDelegate::updateTotalLabel);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PagestackAppDelegate::updateMoveButtons);
    for (const auto signal :
         { &QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved })
        connect(m_tableModel.get(), signal, this, &PagestackAppDelegate::updateMoveButtons);
    connect(m_tableModel.get(), &QAbstractItemModel::layoutChanged, this,
            &PagestackAppDelegate::updateMoveButtons);
    updateMoveButtons();
}

void PagestackAppDelegate::updateMoveButtons()
{
    // The span takes the time of the highlight, and a load comes here with each file.
    const auto [first, last]
        = m_isViewEnabled ? m_ui->mainTableView->highlightedSpan() : std::pair(-1, -1);
    m_ui->moveUpButton->setEnabled(first > 0);
    m_ui->moveDownButton->setEnabled(first >= 0 && last != m_files.count() - 1);
    followMenus();
}

void PagestackAppDelegate::addFiles()
{
    endEditing();
    m_services.chooser.chooseFiles(
        m_window.get(), tr("Select TIFF File(s):"), allowedFileTypes(),
        [this](const QList<QUrl>& urls) {
            if (!urls.isEmpty())
                startLoading({ urls, false, m_ui->inculdeSubfoldersBtn->isChecked() });
        });
}

void PagestackAppDelegate::addFolder()
{
    endEditing();
    m_services.chooser.chooseFolders(
        m_window.get(), tr("Select folder(s) contains TIFF File(s):"),
        [this](const QList<QUrl>& urls) {
            if (!urls.isEmpty())
                startLoading({ urls, true, m_ui->inculdeSubfoldersBtn->isChecked() });
        });
}

bool PagestackAppDelegate::inculdeSubfolders() const
{
    return m_services.defaults.boolForKey(includeSubfoldersKey);
}

void PagestackAppDelegate::setInculdeSubfolders(bool include)
{
    m_services.defaults.setBool(includeSubfoldersKey, include);
    m_services.defaults.synchronize();
    tellSettingsTroubles();
}

void PagestackAppDelegate::openPaths(const QStringList& paths)
{
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(QDir::current().absoluteFilePath(path)));
    if (!urls.isEmpty())
        startLoading({ urls, true, m_ui->inculdeSubfoldersBtn->isChecked() });
}

void PagestackAppDelegate::startLoading(const Arguments& arguments)
{
    if (m_worker)
        return;
    startWorker([this, arguments] { loadURLs(arguments); });
}

void PagestackAppDelegate::loadURLs(const Arguments& arguments)
{
    const QDateTime start = QDateTime::currentDateTime();
    FileList::Items highlight;
    try {
        callOnMainThread([&] {
            highlight = takeScatteredHighlight();
            resetView(false);
        });
        callOnMainThread([this] {
            startProcess();
            if (m_isTerminating) // asked for before the thread came here
                cancelAction();
        });
        callOnMainThread(
            [this] { updateTimeTakenLabel(totalTimeTakenText(u"In Process..."_s, 0, 0)); });
        FileLoader loader(*this);
        const bool isChanged = arguments.isFolders
            ? loader.addFolderToList(arguments.urls, arguments.isIncludeSubdirectories)
            : loader.addFilesToList(arguments.urls);
        if (isChanged)
            sortAsTable();
    } catch (const std::exception& error) {
        systemLogError(u"loadURLs:"_s, error);
    }
    const QString taken = timeTakenString(start, QDateTime::currentDateTime());
    callOnMainThread([this] { stopProcess(); });
    callOnMainThread([&] {
        putHighlightBack(highlight);
        resetView(true);
        m_ui->mainTableView->setFocus();
    });
    callOnMainThread([&] { updateTimeTakenLabel(totalTimeTakenText(taken, 0, 0)); });
}

/// Each file that is added is compared with every range of the highlight; so one of many ranges is
/// put aside during a load.
FileList::Items PagestackAppDelegate::takeScatteredHighlight()
{
    CustomTableView* table = m_ui->mainTableView;
    if (table->selectionModel()->selection().size() <= mostRangesKept)
        return {};
    FileList::Items items;
    for (const int row : table->highlightedRows())
        items.append(m_files.at(row));
    table->clearSelection();
    return items;
}

void PagestackAppDelegate::putHighlightBack(const FileList::Items& items)
{
    if (items.isEmpty())
        return;
    CustomTableView* table = m_ui->mainTableView;
    const QPersistentModelIndex current = table->currentIndex();
    table->highlightRows(m_files.rowsOf(items));
    table->selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
}

bool PagestackAppDelegate::append(const std::shared_ptr<FileItem>& item)
{
    const bool isNew = m_tableModel->append(item);
    if (isNew)
        m_ui->lableDragAndDrop->hide();
    return isNew;
}

} // namespace pagestack
