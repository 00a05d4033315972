#include "filelist/SortHeader.h"

#include "filelist/FileTableModel.h"
#include "filelist/RowStatus.h"

#include <QContextMenuEvent>
#include <QDataStream>
#include <QIODevice>
#include <QMouseEvent>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

#ifdef Q_OS_MACOS
    constexpr bool pointsDown = false;
#else
    constexpr bool pointsDown = true; // the arrow that styles draw for an ascending order
#endif
    constexpr qint32 columnsFormat = 2; // 1 had the sort order of the header alone

    /// In the language of the window.
    int widestStatus(const QFontMetrics& font)
    {
        using enum RowStatus::State;
        int width = font.horizontalAdvance(RowStatus { Converting, 10, 10 }.text());
        for (const RowStatus::State state :
             { Missing, Unreadable, Waiting, Done, Warning, Failed, NotReached })
            width = std::max(width, font.horizontalAdvance(RowStatus { state }.text()));
        return width;
    }

} // namespace

SortHeader::SortHeader(QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    setHighlightSections(false);
    setStretchLastSection(true);
    setSectionsMovable(true);
    // It tells what was clicked; the table's own sorting would be no step of the history.
    setSectionsClickable(true);
    setSortIndicator(-1, Qt::AscendingOrder);
    connect(this, &QHeaderView::sortIndicatorChanged, this, &SortHeader::followIndicator);
}

void SortHeader::setSelectionModel(QItemSelectionModel* selection)
{
    if (selection->QObject::parent() == this)
        QHeaderView::setSelectionModel(selection);
}

void SortHeader::resetColumns()
{
    if (count() != FileTableModel::ColumnCount)
        return;
    const int checkBox = style()->pixelMetric(QStyle::PM_IndicatorWidth)
        + 4 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1);
    setMinimumSectionSize(checkBox);
    for (int hidden = 0; hidden < count(); ++hidden)
        setSectionHidden(hidden, false); // the sizes of those that are hidden are told as 0
    resizeSection(FileTableModel::IsSelected, checkBox);
    const int digit = fontMetrics().horizontalAdvance(u'0');
    int column = FileTableModel::Name;
    for (const int digits : { 20, 13, 7, 15, 9, 5, 30, 20, 20, 20, 22 })
        resizeSection(column++, digits * digit);
    // Where the texts of the language ask for more.
    const int status
        = style()->pixelMetric(QStyle::PM_SmallIconSize) + widestStatus(fontMetrics()) + 2 * digit;
    for (column = FileTableModel::Name; column < count(); ++column)
        resizeSection(column,
                      std::max({ sectionSize(column), sectionSizeHint(column),
                                 column == FileTableModel::Status ? status : 0 }));
    for (column = 0; column < count(); ++column)
        moveSection(visualIndex(column), column);
    hideSection(FileTableModel::Pixels);
}

void SortHeader::fillMenu(QMenu& menu)
{
    menu.clear();
    for (int column = FileTableModel::Name + 1; column < count(); ++column) {
        QAction* action = menu.addAction(model()->headerData(column, Qt::Horizontal).toString());
        action->setCheckable(true);
        action->setChecked(!isSectionHidden(column));
        connect(action, &QAction::toggled, this, [this, column](bool isShown) {
            setSectionHidden(column, !isShown);
            if (isShown && sectionSize(column) == 0) // as earlier versions may have left it
                resizeSection(column, sectionSizeHint(column));
        });
    }
    menu.addSeparator();
    connect(menu.addAction(tr("Reset Columns")), &QAction::triggered, this,
            &SortHeader::resetColumns);
}

void SortHeader::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    fillMenu(*menu);
    menu->popup(event->globalPos());
}

void SortHeader::mouseReleaseEvent(QMouseEvent* event)
{
    m_isAdding = (event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier)) != 0;
    QHeaderView::mouseReleaseEvent(event);
    m_isAdding = false;
}

void SortHeader::followIndicator()
{
    if (sortIndicatorSection() == FileTableModel::Pixels)
        return setOrders(SortOrders(m_orders)); // the arrow stays where it was
    const SortOrders before = m_orders;
    const SortOrder newest
        = FileTableModel::sortOrder(sortIndicatorSection(), sortIndicatorOrder());
    const auto known = std::ranges::find(m_orders, newest.key, &SortOrder::key);
    if (newest.key.isEmpty()) {
        m_orders.clear();
    } else if (!m_isAdding) {
        if (known != m_orders.end())
            m_orders.erase(known);
        m_orders.prepend(newest);
    } else if (known == m_orders.end()) {
        m_orders.append({ newest.key, true });
    } else {
        known->isAscending = !known->isAscending;
    }
    setOrders(SortOrders(m_orders));
    emit ordersChanged(before);
}

void SortHeader::setOrders(const SortOrders& orders)
{
    m_orders = orders;
    const SortOrder shown = orders.value(0);
    const QSignalBlocker silence(this);
    setSortIndicator(FileTableModel::columnSortedBy(shown.key),
                     shown.isAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
    viewport()->update();
}

/// The columns that the list is sorted by after the first one have their number.
void SortHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int logicalIndex) const
{
    QHeaderView::initStyleOptionForIndex(option, logicalIndex);
    for (qsizetype i = 1; i < m_orders.size(); ++i)
        if (FileTableModel::columnSortedBy(m_orders.at(i).key) == logicalIndex)
            option->text
                += (m_orders.at(i).isAscending == pointsDown ? u" \u2193%1"_s : u" \u2191%1"_s)
                       .arg(i + 1);
}

QByteArray SortHeader::save() const
{
    QByteArray state;
    QDataStream stream(&state, QIODevice::WriteOnly);
    stream << columnsFormat << qint32 { count() } << saveState();
    stream << static_cast<qint32>(m_orders.size());
    for (const SortOrder& order : m_orders)
        stream << order.key << order.isAscending;
    return state;
}

bool SortHeader::restore(const QByteArray& state)
{
    QDataStream stream(state);
    qint32 format = 0;
    qint32 columns = 0;
    QByteArray header;
    stream >> format >> columns >> header;
    if (stream.status() != QDataStream::Ok || format < 1 || format > columnsFormat
        || columns != count() || !restoreState(header))
        return false;
    setSortIndicatorShown(true); // states of earlier versions say that it is not
    qint32 orderCount = 0;
    SortOrders orders;
    for (stream >> orderCount; orders.size() < std::min(orderCount, columns);) {
        SortOrder order;
        stream >> order.key >> order.isAscending;
        orders.append(order);
    }
    if (stream.status() == QDataStream::Ok)
        setOrders(orders);
    return true;
}

} // namespace pagestack
