#include "filelist/CustomTableView.h"
#include "filelist/SortHeader.h"

#include <QAbstractItemDelegate>
#include <QCursor>
#include <QHeaderView>
#include <QPaintEvent>
#include <QPainter>
#include <QStyleOptionViewItem>

#include <algorithm>

namespace pagestack {

namespace {

    constexpr std::size_t mostRangesPaintedApart = 64;

} // namespace

QRegion CustomTableView::visualRegionForSelection(const QItemSelection& selection) const
{
    return static_cast<std::size_t>(selection.size()) > mostRangesPaintedApart
        ? viewport()->rect()
        : QTableView::visualRegionForSelection(selection);
}

const PlaceRanges& CustomTableView::highlight() const
{
    if (!m_highlight)
        m_highlight.emplace(selectionModel() ? selectionModel()->selection() : QItemSelection());
    return *m_highlight;
}

/// As the base class does it, which compares each cell with each range of the highlight.
void CustomTableView::paintCells(const QRect& area)
{
    executeDelayedItemsLayout();
    if (rowAt(area.top()) < 0)
        return; // below the last row
    QPainter painter(viewport());
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const QModelIndex hovered = viewport()->testAttribute(Qt::WA_Hover) && viewport()->underMouse()
        ? indexAt(viewport()->mapFromGlobal(QCursor::pos()))
        : QModelIndex();
    const int lastPlace = rowAt(area.bottom()) < 0 ? m_shown->rowCount() - 1 : rowAt(area.bottom());
    for (int place = rowAt(area.top()); place <= lastPlace; ++place) {
        const bool isHighlighted = highlight().contains(place);
        for (int visual = 0; visual < m_header->count(); ++visual) {
            const QModelIndex index = m_shown->index(place, m_header->logicalIndex(visual));
            QStyleOptionViewItem cell = option;
            cell.rect = { columnViewportPosition(index.column()), rowViewportPosition(place),
                          columnWidth(index.column()), rowHeight(place) };
            if (isColumnHidden(index.column()) || !cell.rect.intersects(area))
                continue;
            cell.features.setFlag(QStyleOptionViewItem::Alternate, place % 2 != 0);
            cell.state.setFlag(QStyle::State_Selected, isHighlighted);
            cell.state.setFlag(QStyle::State_MouseOver, index == hovered);
            cell.state.setFlag(QStyle::State_HasFocus,
                               index == currentIndex() && (hasFocus() || viewport()->hasFocus()));
            style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &cell, &painter, this);
            itemDelegateForIndex(index)->paint(&painter, cell, index);
        }
    }
}

void CustomTableView::paintEvent(QPaintEvent* event)
{
    if (highlight().ranges().size() > mostRangesPaintedApart)
        paintCells(event->rect());
    else
        QTableView::paintEvent(event);
    if (!m_isDropTarget && m_dropPlace < 0)
        return;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().highlight(), 2));
    if (m_isDropTarget)
        painter.drawRect(viewport()->rect().adjusted(1, 1, -1, -1));
    if (m_dropPlace < 0)
        return;
    const int above = m_dropPlace - 1; // its lower edge is there even behind the last row
    const int y = above < 0 ? 1 : rowViewportPosition(above) + rowHeight(above);
    painter.drawLine(0, y, viewport()->width(), y);
}

} // namespace pagestack
