#include "mainwindow/widgets/DropHint.h"

#include <QPainter>

namespace pagestack {

namespace {

    constexpr int hintMargin = 20;
    constexpr qreal corner = 8;

} // namespace

DropHint::DropHint(QWidget* parent)
    : QLabel(parent)
{
    setMargin(hintMargin);
}

void DropHint::paintEvent(QPaintEvent* event)
{
    QLabel::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(
        QPen(palette().color(QPalette::Disabled, QPalette::WindowText), 2, Qt::DashLine));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), corner, corner);
}

} // namespace pagestack
