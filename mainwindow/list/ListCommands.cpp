#include "mainwindow/list/ListCommands.h"

#include "engine/settings/UserDefaults.h"
#include "engine/support/Dates.h"
#include "engine/support/SystemLog.h"
#include "engine/support/Workspace.h"
#include "engine/threads/MainThread.h"
#include "filelist/ListEditor.h"
#include "filelist/ListExport.h"
#include "filelist/PathClipboard.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/state/ViewState.h"
#include "mainwindow/state/Worker.h"
#include "mainwindow/widgets/FileChooser.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "ui_MainWindow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>

#include <numeric>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString thumbnailsKey = u"LISTTHUMBNAILS"_s;

    constexpr qsizetype mostSortedAtOnce = 10000; // a longer list would hold up the window

    QList<int> allRows(const FileList& files)
    {
        QList<int> rows(files.count());
        std::iota(rows.begin(), rows.end(), 0);
        return rows;
    }

    QIcon statusIcon(RowStatus::State state)
    {
        switch (state) {
        case RowStatus::State::None:
            break;
        case RowStatus::State::Missing:
            return symbolicIcon(u"status-missing"_s);
        case RowStatus::State::Unreadable:
            return symbolicIcon(u"status-unreadable"_s);
        case RowStatus::State::Waiting:
            return symbolicIcon(u"status-waiting"_s);
        case RowStatus::State::Converting:
            return symbolicIcon(u"status-converting"_s);
        case RowStatus::State::Done:
            return symbolicIcon(u"status-done"_s);
        case RowStatus::State::Warning:
            return symbolicIcon(u"status-warning"_s);
        case RowStatus::State::Failed:
            return symbolicIcon(u"status-failed"_s);
        case RowStatus::State::NotReached:
            return symbolicIcon(u"status-not-reached"_s);
        }
        return {};
    }

} // namespace

ListCommands::ListCommands(const WindowParts& parts, ListEditor& editor)
    : m_parts(parts)
    , m_editor(editor)
    , m_find(parts.ui, parts.files)
    , m_filter(parts)
{
    CustomTableView* table = parts.ui.mainTableView;
    parts.model.setStatusIcons([icons = QHash<RowStatus::State, QIcon>()](auto state) mutable {
        if (!icons.contains(state)) // each is read once
            icons.insert(state, statusIcon(state));
        return icons.value(state);
    });
    connect(table, &CustomTableView::sortRequested, this, &ListCommands::sortDescriptorsDidChange);
    connect(table, &CustomTableView::invertRequested, this, [this](const QList<int>& rows) {
        m_editor.mark(rows, FileTableModel::Mark::Invert);
        m_parts.view.updateTotalLabel(); // also when no row is highlighted
    });
    connect(&parts.model, &FileTableModel::checkMarksChanged, &parts.view,
            &ViewState::updateTotalLabel);
    connect(&parts.model, &FileTableModel::pageChoiceRefused, this,
            [this](const QString& reason) { m_parts.services.tell(&m_parts.window, reason); });
    connect(&editor, &ListEditor::stepped, this, &ListCommands::showStep);
    connect(&editor, &ListEditor::sorted, table, &CustomTableView::setSortOrders);
    connect(table, &CustomTableView::dragRequested, this, [this, table](int row) {
        if (!m_parts.worker.isBusy())
            m_editor.moveTo(table->highlightedRows(), row, table->currentSortOrders());
    });
    connectActions();
}

void ListCommands::connectActions()
{
    const Ui::MainWindow& ui = m_parts.ui;
    connect(ui.filterAction, &QAction::triggered, &m_filter, &FilterControl::begin);
    connect(ui.copyAction, &QAction::triggered, this, &ListCommands::copyPaths);
    connect(ui.cutAction, &QAction::triggered, this, [this] {
        copyPaths();
        removeFiles();
    });
    connect(ui.removeConvertedAction, &QAction::triggered, this, &ListCommands::removeFinished);
    connect(ui.tickFailedAction, &QAction::triggered, this, &ListCommands::tickFailedOnly);
    connect(ui.thumbnailsAction, &QAction::toggled, this, [this](bool isShown) {
        m_parts.services.defaults.setBool(thumbnailsKey, isShown);
        m_parts.services.synchronize(&m_parts.window);
        m_parts.ui.mainTableView->showThumbnails(isShown);
    });
    ui.thumbnailsAction->setChecked(m_parts.services.defaults.boolForKey(thumbnailsKey));
    const auto fillColumns = [&ui] { ui.mainTableView->fillColumnMenu(*ui.menuColumns); };
    connect(ui.menuColumns, &QMenu::aboutToShow, this, fillColumns);
    fillColumns(); // a menu without entries is not opened everywhere
}

void ListCommands::checkUncheckInvertSelection(int tag)
{
    mark(m_parts.ui.mainTableView->highlightedRows(), tag);
}

void ListCommands::checkUncheckInvertAll(int tag) { mark(allRows(m_parts.files), tag); }

void ListCommands::mark(const QList<int>& rows, int tag)
{
    if (!m_parts.worker.isBusy()) {
        if (tag == 1)
            m_editor.mark(rows, FileTableModel::Mark::Check);
        else if (tag == 2)
            m_editor.mark(rows, FileTableModel::Mark::Uncheck);
        else if (tag == 3)
            m_editor.mark(rows, FileTableModel::Mark::Invert);
    }
    followList();
}

void ListCommands::selectDeselectRemoveAll(int tag)
{
    CustomTableView* table = m_parts.ui.mainTableView;
    const auto removeFiles = [this](const QList<int>& rows) {
        remove(rows, tr("Remove %n File(s)", nullptr, static_cast<int>(rows.size())));
    };
    if (tag == 1) {
        table->selectAll();
    } else if (tag == 2) {
        if (const int first = table->shownRows().rowAt(0); first >= 0)
            table->highlightRows({ first });
    } else if (tag == 3) {
        m_parts.services.ask(&m_parts.window, AlertPanel::Style::Informational,
                             tr("Are you sure to remove all file(s)?"), { tr("Yes"), tr("No") },
                             [this, removeFiles](int button) {
                                 if (button == 0)
                                     removeFiles(allRows(m_parts.files));
                             });
    } else if (tag == 4) {
        removeFiles(table->highlightedRows());
    }
}

void ListCommands::removeFiles()
{
    if (m_parts.ui.mainTableView->highlightedSpan().first >= 0)
        selectDeselectRemoveAll(4);
}

template <typename Condition>
QList<int> ListCommands::rowsWhere(Condition condition) const
{
    QList<int> rows;
    for (int row = 0; row < m_parts.files.count(); ++row)
        if (condition(*m_parts.files.at(row)))
            rows.append(row);
    return rows;
}

QList<int> ListCommands::rowsOf(const QSet<QString>& paths) const
{
    return rowsWhere([&](const FileItem& item) { return paths.contains(item.path()); });
}

void ListCommands::untick(const QSet<QString>& paths) { mark(rowsOf(paths), 2); }

void ListCommands::removeConverted(const QSet<QString>& paths) { removeConverted(rowsOf(paths)); }

void ListCommands::removeFinished()
{
    const RowStatuses& statuses = m_parts.model.statuses();
    removeConverted(rowsWhere([&](const FileItem& item) { return statuses.isConverted(item); }));
}

void ListCommands::removeConverted(const QList<int>& rows)
{
    remove(rows, tr("Remove %n Converted File(s)", nullptr, static_cast<int>(rows.size())));
}

void ListCommands::tickFailedOnly()
{
    if (m_parts.worker.isBusy())
        return;
    m_editor.tickOnly(rowsWhere([stateOf = m_parts.model.statuses().states()](const auto& item) {
        const RowStatus::State state = stateOf(item);
        return isInGroup(state, RowGroup::Failed) || isInGroup(state, RowGroup::NotReached);
    }));
    followList();
}

void ListCommands::copyPaths()
{
    FileList::Items items;
    for (const int row : m_parts.ui.mainTableView->highlightedRows())
        items.append(m_parts.files.at(row));
    if (!items.isEmpty())
        QGuiApplication::clipboard()->setMimeData(offeredFiles(items, true).release());
}

/// Takes rows off the list; the files stay where they are.
void ListCommands::remove(const QList<int>& rows, const QString& text)
{
    if (m_parts.worker.isBusy())
        return;
    m_parts.ui.mainTableView->clearSelection();
    m_editor.remove(rows, text);
    followList();
}

void ListCommands::moveUp() { move(true); }

void ListCommands::moveDown() { move(false); }

void ListCommands::move(bool isUp)
{
    CustomTableView* table = m_parts.ui.mainTableView;
    if (m_parts.worker.isBusy() || table->shownRows().isFiltered()
        || !m_editor.move(table->highlightedRows(), isUp, table->currentSortOrders()))
        return;
    table->setFocus();
    const auto [first, last] = table->highlightedSpan();
    scrollToRow(isUp ? first : last);
}

/// After a step back or forth: what it concerned is highlighted and in view.
void ListCommands::showStep(const QList<int>& rows)
{
    if (!rows.isEmpty()) {
        m_parts.ui.mainTableView->highlightRows(rows);
        scrollToRow(rows.first());
    }
    followList();
}

void ListCommands::followList() { m_parts.view.updateTotalLabel(); }

void ListCommands::scrollToRow(int row) { m_parts.ui.mainTableView->scrollToRow(row); }

SortReading ListCommands::sortReading() const
{
    return { m_parts.services.readDates, m_parts.worker.untilCancelled(),
             m_parts.model.statuses().states() };
}

void ListCommands::sortDescriptorsDidChange(const SortOrders& oldOrders)
{
    CustomTableView* table = m_parts.ui.mainTableView;
    const SortOrders orders = table->currentSortOrders();
    const FileList::Items items = m_parts.files.items();
    if (m_parts.worker.isBusy()) {
        table->setSortOrders(oldOrders);
        return;
    }
    if (items.size() < 2 || (items.size() <= mostSortedAtOnce && !needsDates(orders))) {
        m_editor.sort(sortedRows(items, orders, sortReading()), oldOrders, orders);
        return;
    }
    // Dates may come from another computer. The window is busy until the rows are sorted.
    m_parts.worker.startBusy([this, table, items, oldOrders, orders, reading = sortReading()] {
        bool isDone = false;
        guarded(u"tableView:sortDescriptorsDidChange:"_s, [&] {
            const QList<int> rows = sortedRows(items, orders, reading);
            callOnMainThread([&] {
                isDone = reading.isWanted();
                if (isDone)
                    m_editor.sort(rows, oldOrders, orders);
            });
        });
        if (!isDone)
            callOnMainThread([&] { table->setSortOrders(oldOrders); });
    });
}

void ListCommands::sortAsTable()
{
    CustomTableView* table = m_parts.ui.mainTableView;
    SortOrders orders;
    FileList::Items items;
    SortReading reading;
    callOnMainThread([&] {
        orders = table->currentSortOrders();
        items = m_parts.files.items();
        reading = sortReading();
    });
    const QList<int> rows = sortedRows(items, orders, reading);
    callOnMainThread([&] {
        if (reading.isWanted())
            m_parts.model.reorder(rows);
        else if (!m_parts.worker.isTerminating()) // the next start has the same columns
            table->setSortOrders({});
    });
}

void ListCommands::search() { m_find.begin(); }

void ListCommands::exportAction()
{
    const QString name
        = u"Export %1.txt"_s.arg(getStringFromDateFormat(u"dd-MMM-yyyy hh-mm-ss AP"_s));
    m_parts.services.chooser.chooseSaveFile(&m_parts.window,
                                            tr("Export List To Tab Delimited Text File :"),
                                            u"txt"_s, name, [this](const QList<QUrl>& urls) {
                                                if (!urls.isEmpty())
                                                    exportTo(urls.first().toLocalFile());
                                            });
}

void ListCommands::exportTo(const QString& path)
{
    m_parts.worker.startBusy([this, path, items = m_parts.files.items()] {
        guarded(u"export"_s, [&] {
            const QByteArray text
                = exportText(items, [this] { return m_parts.view.isProcessing(); });
            if (!text.isEmpty())
                writeExport(path, text);
        });
    });
}

QList<QUrl> ListCommands::highlightedUrls() const
{
    QList<QUrl> urls;
    for (const int row : m_parts.ui.mainTableView->highlightedRows())
        urls.append(m_parts.files.at(row)->filePath());
    return urls;
}

void ListCommands::openFiles()
{
    guarded(u"openFiles"_s, [this] {
        for (const QUrl& url : highlightedUrls())
            m_parts.services.workspace.openURL(url);
    });
}

void ListCommands::openEnclodingFolder()
{
    guarded(u"openEnclodingFolder"_s, [this] {
        m_parts.services.workspace.activateFileViewerSelectingURLs(highlightedUrls());
    });
}

void ListCommands::getInfo()
{
    guarded(u"getInfo"_s,
            [this] { m_parts.services.workspace.showInformation(highlightedUrls()); });
}

void ListCommands::highlightFile(const QString& path)
{
    const FileList::Items& items = m_parts.files.items();
    for (int row = 0; row < items.size(); ++row) {
        if (items.at(row)->localFile() != path)
            continue;
        if (m_parts.ui.mainTableView->shownRows().placeOf(row) < 0)
            m_filter.clear();
        m_parts.ui.mainTableView->highlightRows({ row });
        scrollToRow(row);
        return;
    }
}

} // namespace pagestack
