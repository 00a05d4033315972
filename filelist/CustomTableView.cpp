#include "filelist/CustomTableView.h"

#include "filelist/ListChanges.h"
#include "filelist/SortHeader.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>

namespace pagestack {

namespace {

    /// Elides in the middle: the end of a path tells as much as its beginning.
    class PathDelegate : public QStyledItemDelegate
    {
    public:
        using QStyledItemDelegate::QStyledItemDelegate;

    protected:
        void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
        {
            QStyledItemDelegate::initStyleOption(option, index);
            option->textElideMode = Qt::ElideMiddle;
            // Names stand below each other, whatever the shape of the pages.
            if (option->features.testFlag(QStyleOptionViewItem::HasDecoration))
                option->decorationSize = { ShownThumbnails::side, ShownThumbnails::side };
            // A path runs from left to right in every language.
            constexpr QChar leftToRight(0x200E);
            if (option->direction == Qt::RightToLeft)
                option->text = leftToRight + option->text + leftToRight;
        }
    };

    constexpr int leastRowHeight = 24;
    constexpr int rowMargins = 8;

} // namespace

CustomTableView::CustomTableView(QWidget* parent)
    : QTableView(parent)
    , m_shown(new ShownRows(this))
    , m_header(new SortHeader(this))
{
    setHorizontalHeader(m_header); // which hides the arrow
    m_header->setSortIndicatorShown(true);
    connect(m_header, &SortHeader::ordersChanged, this, &CustomTableView::sortRequested);
    onListChange(*m_shown, this, [this] { m_highlight.reset(); });
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked); // and F2, in any column
    setTabKeyNavigation(false);
    setWordWrap(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);

    setDragDropMode(DragDrop);
    setDefaultDropAction(Qt::LinkAction);
    setDropIndicatorShown(false);

    // Rows of one height: a long list is never measured row by row.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->hide();
    setRowHeight();

    auto* path = new PathDelegate(this);
    setItemDelegateForColumn(FileTableModel::Name, path);
    setItemDelegateForColumn(FileTableModel::Location, path);
}

void CustomTableView::setModel(QAbstractItemModel* model)
{
    m_shown->setFiles(qobject_cast<FileTableModel*>(model));
    QTableView::setModel(model != nullptr ? m_shown : nullptr);
    m_header->resetColumns();
}

void CustomTableView::showRows(const std::vector<int>& rows, const ShownRows::Accepts& accepts,
                               InView inView)
{
    if (m_shown->isFiltered() && m_shown->shown() == rows)
        return m_shown->accept(accepts);
    const int top = m_shown->rowAt(std::max(0, QTableView::rowAt(0)));
    const int left = horizontalScrollBar()->value();
    changeShownRows([&] { m_shown->show(rows, accepts); });
    if (inView == InView::CurrentRow)
        return;
    const auto place = static_cast<int>(std::ranges::lower_bound(rows, top) - rows.begin());
    scrollTo(m_shown->index(std::min(place, m_shown->rowCount() - 1), FileTableModel::Name),
             PositionAtTop);
    horizontalScrollBar()->setValue(left);
}

void CustomTableView::showAllRows()
{
    if (m_shown->isFiltered())
        changeShownRows([&] { m_shown->showAll(); });
}

void CustomTableView::changeShownRows(const std::function<void()>& change)
{
    const QList<int> highlighted = highlightedRows();
    const int current = currentRow();
    change();
    highlightRows(highlighted);
    setCurrentRow(current);
    scrollToRow(current);
}

void CustomTableView::setRowHeight()
{
    const int contents
        = std::max(fontMetrics().height(), m_showsThumbnails ? ShownThumbnails::side : 0);
    verticalHeader()->setDefaultSectionSize(std::max(leastRowHeight, contents + rowMargins));
}

void CustomTableView::showThumbnails(bool isShown)
{
    m_showsThumbnails = isShown;
    setRowHeight();
    m_shown->files()->showThumbnails(isShown, devicePixelRatioF());
}

void CustomTableView::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        setRowHeight();
}

QList<int> CustomTableView::highlightedRows() const
{
    QList<int> rows;
    for (const PlaceRanges::Range& range : highlight().ranges())
        for (int place = range.first; place <= range.last; ++place)
            rows.append(m_shown->rowAt(place));
    return rows;
}

std::pair<int, int> CustomTableView::highlightedSpan() const
{
    return { m_shown->rowAt(highlight().first()), m_shown->rowAt(highlight().last()) };
}

// A selection of very many ranges that another one replaces is compared with it range by range;
// clearing it first saves that.
void CustomTableView::selectAll()
{
    clearSelection();
    QTableView::selectAll();
}

void CustomTableView::highlightRows(const QList<int>& rows)
{
    clearSelection();
    QList<int> places;
    places.reserve(rows.size());
    for (const int row : rows)
        if (const int place = m_shown->placeOf(row); place >= 0)
            places.append(place);
    QItemSelection selection;
    for (qsizetype i = 0; i < places.size(); ++i) {
        const int first = places.at(i);
        while (i + 1 < places.size() && places.at(i + 1) == places.at(i) + 1)
            ++i;
        // As wide as the table: ranges that had to be widened would be compared with each other.
        selection.append(QItemSelectionRange(
            model()->index(first, 0), model()->index(places.at(i), model()->columnCount() - 1)));
    }
    if (places.isEmpty())
        return;
    selectionModel()->setCurrentIndex(model()->index(places.first(), FileTableModel::Name),
                                      QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::Select);
}

int CustomTableView::currentRow() const { return m_shown->rowAt(currentIndex().row()); }

void CustomTableView::setCurrentRow(int row)
{
    const QModelIndex current = m_shown->index(m_shown->placeOf(row), FileTableModel::Name);
    if (current.isValid())
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
}

void CustomTableView::scrollToRow(int row)
{
    scrollTo(m_shown->index(m_shown->placeOf(row), FileTableModel::Name));
}

const SortOrders& CustomTableView::currentSortOrders() const { return m_header->orders(); }

void CustomTableView::setSortOrders(const SortOrders& orders) { m_header->setOrders(orders); }

QByteArray CustomTableView::saveColumns() const { return m_header->save(); }

bool CustomTableView::restoreColumns(const QByteArray& state) { return m_header->restore(state); }

void CustomTableView::fillColumnMenu(QMenu& menu) { m_header->fillMenu(menu); }

void CustomTableView::keyboardSearch(const QString& search)
{
    if (!model() || model()->rowCount() == 0)
        return;
    // The search goes through the column of the current cell and begins below it.
    const QModelIndex current = currentIndex();
    const int row = current.isValid() ? current.row() : model()->rowCount() - 1;
    selectionModel()->setCurrentIndex(model()->index(row, FileTableModel::Name),
                                      QItemSelectionModel::NoUpdate);
    QTableView::keyboardSearch(search);
}

void CustomTableView::setReadOnly(bool isReadOnly)
{
    m_isReadOnly = isReadOnly;
    horizontalHeader()->setSectionsClickable(!isReadOnly);
}

/// Clicks on check boxes come here as well.
bool CustomTableView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    return !m_isReadOnly && QTableView::edit(index, trigger, event);
}

bool CustomTableView::endEditing()
{
    FileTableModel* files = m_shown->files();
    if (state() != EditingState || files == nullptr)
        return true;
    bool isRefused = false;
    const QObject meanwhile;
    connect(files, &FileTableModel::pageChoiceRefused, &meanwhile,
            [&isRefused] { isRefused = true; });
    setFocus(); // the field gives its text and goes
    return !isRefused;
}

void CustomTableView::keyPressEvent(QKeyEvent* event)
{
    const bool isCommand = event->modifiers().testFlag(Qt::ControlModifier);
    const int key = event->key();
    const bool isChange = key == Qt::Key_Space || key == Qt::Key_Delete || key == Qt::Key_Backspace
        || key == Qt::Key_F2 || (isCommand && (key == Qt::Key_Up || key == Qt::Key_Down));
    if (m_isReadOnly && isChange)
        return;
    if (key == Qt::Key_Space)
        emit invertRequested(highlightedRows());
    else if (key == Qt::Key_Delete || key == Qt::Key_Backspace)
        emit removeRequested();
    else if (key == Qt::Key_F2 && currentIndex().isValid()
             && !isColumnHidden(FileTableModel::PagesToConvert))
        edit(currentIndex().siblingAtColumn(FileTableModel::PagesToConvert));
    else if (isCommand && (key == Qt::Key_Home || key == Qt::Key_End))
        pressWithoutControl(*event);
    else if (isCommand && key == Qt::Key_Up)
        emit moveUpRequested();
    else if (isCommand && key == Qt::Key_Down)
        emit moveDownRequested();
    else
        QTableView::keyPressEvent(event);
}

/// With Control it would move the frame of the current row alone.
void CustomTableView::pressWithoutControl(const QKeyEvent& event)
{
    QKeyEvent plain(event.type(), event.key(), event.modifiers() & ~Qt::ControlModifier);
    QTableView::keyPressEvent(&plain);
}

// The base class lists all cells of the highlight in order to tell screen readers of the first one.
void CustomTableView::selectionChanged(const QItemSelection& selected,
                                       const QItemSelection& deselected)
{
    m_highlight.reset();
    const auto firstCell = [](const QItemSelection& selection) {
        const QModelIndex first
            = selection.isEmpty() ? QModelIndex() : QModelIndex(selection.first().topLeft());
        return QItemSelection(first, first);
    };
    QTableView::selectionChanged(firstCell(selected), firstCell(deselected));
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): what the class between does was done above.
    QAbstractItemView::selectionChanged(selected, deselected);
}

// The base class would go to the first and the last column.
QModelIndex CustomTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if ((action != MoveHome && action != MoveEnd) || m_shown->rowCount() == 0)
        return QTableView::moveCursor(action, modifiers);
    const int column = currentIndex().isValid() ? currentIndex().column() : FileTableModel::Name;
    return m_shown->index(action == MoveHome ? 0 : m_shown->rowCount() - 1, column);
}

void CustomTableView::mousePressEvent(QMouseEvent* event)
{
    const bool hadHighlightedRows = selectionModel() && selectionModel()->hasSelection();
    QTableView::mousePressEvent(event); // highlights the row under the pointer unless it is already
    // A Control-click of macOS arrives as the right button with Meta.
    if (hadHighlightedRows && m_contextMenu && event->button() == Qt::RightButton
        && !event->modifiers().testFlag(Qt::MetaModifier) && selectionModel()->hasSelection())
        m_contextMenu->popup(event->globalPosition().toPoint());
}

// The press has been answered already; no other way leads to the menu. The event stays accepted.
void CustomTableView::contextMenuEvent(QContextMenuEvent* /*event*/) { }

} // namespace pagestack
