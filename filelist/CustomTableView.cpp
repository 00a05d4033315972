#include "filelist/CustomTableView.h"

#include "filelist/FileTableModel.h"

#include <QDataStream>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QIODevice>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
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
        }
    };

    constexpr int leastRowHeight = 24;
    constexpr int rowMargins = 8;
    constexpr qint32 columnsFormat = 2; // 1 had the sort order of the header alone

} // namespace

CustomTableView::CustomTableView(QWidget* parent)
    : QTableView(parent)
{
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
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setSectionsMovable(true);
    // The table tells what was clicked; its own sorting would be no step of the history.
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setSortIndicatorShown(true);
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    connect(horizontalHeader(), &QHeaderView::sortIndicatorChanged, this,
            &CustomTableView::followSortIndicator);

    auto* path = new PathDelegate(this);
    setItemDelegateForColumn(FileTableModel::Name, path);
    setItemDelegateForColumn(FileTableModel::Location, path);
}

void CustomTableView::setModel(QAbstractItemModel* model)
{
    QTableView::setModel(model);
    setDefaultWidths();
}

void CustomTableView::setDefaultWidths()
{
    if (!model() || model()->columnCount() != FileTableModel::ColumnCount)
        return;
    const int checkBox = style()->pixelMetric(QStyle::PM_IndicatorWidth)
        + 4 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1);
    horizontalHeader()->setMinimumSectionSize(checkBox);
    setColumnWidth(FileTableModel::IsSelected, checkBox);
    const int digit = fontMetrics().horizontalAdvance(u'0');
    int column = FileTableModel::Name;
    for (const int digits : { 24, 14, 8, 17, 10, 7, 34, 22, 22, 22 })
        setColumnWidth(column++, digits * digit);
}

void CustomTableView::setRowHeight()
{
    const int height = std::max(leastRowHeight, fontMetrics().height() + rowMargins);
    verticalHeader()->setMinimumSectionSize(height);
    verticalHeader()->setDefaultSectionSize(height);
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
    if (!selectionModel())
        return rows;
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.append(row);
    }
    return ascending(rows);
}

std::pair<int, int> CustomTableView::highlightedSpan() const
{
    int first = -1;
    int last = -1;
    if (!selectionModel())
        return { first, last };
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        first = first < 0 ? range.top() : std::min(first, range.top());
        last = std::max(last, range.bottom());
    }
    return { first, last };
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
    QItemSelection selection;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const int first = rows.at(i);
        while (i + 1 < rows.size() && rows.at(i + 1) == rows.at(i) + 1)
            ++i;
        // As wide as the table: ranges that had to be widened would be compared with each other.
        selection.append(QItemSelectionRange(
            model()->index(first, 0), model()->index(rows.at(i), model()->columnCount() - 1)));
    }
    if (!rows.isEmpty())
        selectionModel()->setCurrentIndex(model()->index(rows.first(), FileTableModel::Name),
                                          QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::Select);
}

void CustomTableView::followSortIndicator()
{
    const SortOrders before = m_sortOrders;
    const SortOrder newest = FileTableModel::sortOrder(horizontalHeader()->sortIndicatorSection(),
                                                       horizontalHeader()->sortIndicatorOrder());
    m_sortOrders.removeIf([&](const SortOrder& order) { return order.key == newest.key; });
    m_sortOrders.prepend(newest);
    if (newest.key.isEmpty())
        m_sortOrders.clear();
    emit sortRequested(before);
}

void CustomTableView::setSortOrders(const SortOrders& orders)
{
    m_sortOrders = orders;
    const SortOrder shown = orders.value(0);
    const QSignalBlocker silence(horizontalHeader());
    horizontalHeader()->setSortIndicator(FileTableModel::columnSortedBy(shown.key),
                                         shown.isAscending ? Qt::AscendingOrder
                                                           : Qt::DescendingOrder);
}

QByteArray CustomTableView::saveColumns() const
{
    QByteArray state;
    QDataStream stream(&state, QIODevice::WriteOnly);
    stream << columnsFormat << qint32 { horizontalHeader()->count() }
           << horizontalHeader()->saveState();
    stream << static_cast<qint32>(m_sortOrders.size());
    for (const SortOrder& order : m_sortOrders)
        stream << order.key << order.isAscending;
    return state;
}

bool CustomTableView::restoreColumns(const QByteArray& state)
{
    QDataStream stream(state);
    qint32 format = 0;
    qint32 count = 0;
    QByteArray header;
    stream >> format >> count >> header;
    if (stream.status() != QDataStream::Ok || format < 1 || format > columnsFormat
        || count != horizontalHeader()->count() || !horizontalHeader()->restoreState(header))
        return false;
    qint32 orderCount = 0;
    SortOrders orders;
    for (stream >> orderCount; orders.size() < std::min(orderCount, count);) {
        SortOrder order;
        stream >> order.key >> order.isAscending;
        orders.append(order);
    }
    if (stream.status() == QDataStream::Ok)
        setSortOrders(orders);
    return true;
}

bool CustomTableView::validateDrop(const QObject* source, const QMimeData* offer) const
{
    const bool isOwnDrag = source && (source == this || source == viewport());
    return !m_isReadOnly && !isOwnDrag && offer && offer->hasUrls();
}

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
    auto* files = qobject_cast<FileTableModel*>(model());
    if (state() != EditingState || files == nullptr)
        return true;
    bool isRefused = false;
    const auto connection = connect(files, &FileTableModel::pageChoiceRefused, this,
                                    [&isRefused] { isRefused = true; });
    setFocus(); // the field gives its text and goes
    disconnect(connection);
    return !isRefused;
}

void CustomTableView::keyPressEvent(QKeyEvent* event)
{
    const bool isCommand = event->modifiers().testFlag(Qt::ControlModifier);
    const int key = event->key();
    const bool isChange = key == Qt::Key_Space || key == Qt::Key_Delete || key == Qt::Key_Backspace
        || key == Qt::Key_F2 || (isCommand && (key == Qt::Key_Up || key == Qt::Key_Down));
    if (m_isReadOnly && isChange)
        event->ignore();
    else if (key == Qt::Key_Space)
        emit invertRequested(highlightedRows());
    else if (key == Qt::Key_Delete || key == Qt::Key_Backspace)
        emit removeRequested();
    else if (key == Qt::Key_F2 && currentIndex().isValid())
        edit(currentIndex().siblingAtColumn(FileTableModel::PagesToConvert));
    else if (isCommand && key == Qt::Key_Up)
        emit moveUpRequested();
    else if (isCommand && key == Qt::Key_Down)
        emit moveDownRequested();
    else
        QTableView::keyPressEvent(event);
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

// The press has been answered already; no other way leads to the menu.
void CustomTableView::contextMenuEvent(QContextMenuEvent* event) { event->accept(); }

void CustomTableView::dragEnterEvent(QDragEnterEvent* event) { answerDrag(*event); }

void CustomTableView::dragMoveEvent(QDragMoveEvent* event) { answerDrag(*event); }

void CustomTableView::answerDrag(QDragMoveEvent& event)
{
    const bool isWelcome = validateDrop(event.source(), event.mimeData());
    setIsDropTarget(isWelcome);
    if (!isWelcome)
        return event.ignore();
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

void CustomTableView::dragLeaveEvent(QDragLeaveEvent* event)
{
    setIsDropTarget(false);
    QTableView::dragLeaveEvent(event);
}

void CustomTableView::dropEvent(QDropEvent* event)
{
    setIsDropTarget(false);
    if (!validateDrop(event->source(), event->mimeData()))
        return event->ignore();
    QList<QUrl> files = event->mimeData()->urls();
    files.removeIf([](const QUrl& url) { return !url.isLocalFile(); });
    if (files.isEmpty())
        return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit filesDropped(files);
}

void CustomTableView::setIsDropTarget(bool isDropTarget)
{
    if (isDropTarget == m_isDropTarget)
        return;
    m_isDropTarget = isDropTarget;
    viewport()->update();
}

void CustomTableView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (!m_isDropTarget)
        return;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().highlight(), 2));
    painter.drawRect(viewport()->rect().adjusted(1, 1, -1, -1));
}

} // namespace pagestack
