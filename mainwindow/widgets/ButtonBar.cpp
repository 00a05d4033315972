#include "mainwindow/widgets/ButtonBar.h"

#include <QEvent>
#include <QStyle>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QSize sizeOf(const QWidget& widget)
    {
        return widget.sizeHint()
            .expandedTo(widget.minimumSizeHint())
            .expandedTo(widget.minimumSize());
    }

} // namespace

int ButtonBar::spacing() const
{
    const int spacing = style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing, nullptr, this);
    return spacing >= 0 ? spacing : 6;
}

QList<ButtonBar::Place> ButtonBar::places(int width) const
{
    QList<Place> result;
    QPoint end(0, 0); // where the next child goes
    qsizetype rowStart = 0;
    int rowHeight = 0;
    const auto startRow = [&] {
        end = QPoint(0, end.y() + (result.isEmpty() ? 0 : rowHeight + spacing()));
        rowStart = result.size();
        rowHeight = 0;
    };
    // Small buttons stand in the middle of the row's height.
    const auto centreRow = [&] {
        for (qsizetype i = rowStart; i < result.size(); ++i)
            result[i].area.moveTop(end.y() + (rowHeight - result.at(i).area.height()) / 2);
    };
    const auto place = [&](const QList<QWidget*>& group) {
        for (QWidget* child : group) {
            const QSize size = sizeOf(*child).boundedTo(QSize(qMax(width, 1), QWIDGETSIZE_MAX));
            if (end.x() > 0 && end.x() + size.width() > width) {
                centreRow();
                startRow();
            }
            result.append({ child, QRect(end, size) });
            end.rx() += size.width() + spacing();
            rowHeight = qMax(rowHeight, size.height());
        }
    };

    QList<QWidget*> left;
    QList<QWidget*> right;
    int rightWidth = -spacing();
    const auto children = findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    for (QWidget* child : children) {
        if (child->isHidden() || child->isWindow())
            continue;
        const bool isRight = child->property("anchor").toString() == "right"_L1;
        (isRight ? right : left).append(child);
        if (isRight)
            rightWidth += sizeOf(*child).width() + spacing();
    }
    place(left);
    if (!right.isEmpty()) {
        if (end.x() > 0 && end.x() + rightWidth > width) {
            centreRow();
            startRow();
        }
        end.setX(qMax(end.x(), width - rightWidth));
        place(right);
    }
    centreRow();
    if (layoutDirection() == Qt::RightToLeft) {
        for (Place& each : result)
            each.area.moveLeft(width - each.area.left() - each.area.width());
    }
    return result;
}

QSize ButtonBar::sizeHint() const
{
    int width = 0;
    for (const Place& each : places(QWIDGETSIZE_MAX))
        width += each.area.width() + spacing();
    width = qMax(0, width - spacing());
    return { width, heightForWidth(width) };
}

QSize ButtonBar::minimumSizeHint() const
{
    QSize size;
    for (const Place& each : places(QWIDGETSIZE_MAX))
        size = size.expandedTo(each.area.size());
    return size;
}

bool ButtonBar::hasHeightForWidth() const { return true; }

int ButtonBar::heightForWidth(int width) const
{
    int height = 0;
    for (const Place& each : places(width))
        height = qMax(height, each.area.bottom() + 1);
    return height;
}

void ButtonBar::arrange()
{
    for (const Place& each : places(width()))
        each.widget->setGeometry(each.area);
}

bool ButtonBar::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::LayoutRequest: // a child has another size or was shown or hidden
    case QEvent::LayoutDirectionChange:
    case QEvent::StyleChange:
    case QEvent::FontChange:
        updateGeometry();
        arrange();
        break;
    case QEvent::Show:
        arrange();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void ButtonBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    arrange();
}

} // namespace pagestack
