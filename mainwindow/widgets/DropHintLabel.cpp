#include "mainwindow/widgets/DropHintLabel.h"

#include <QPainter>
#include <QPen>

namespace pagestack {

namespace {

    /// Between the text and the frame, in pixels.
    int paddingOf(const QLabel& label) { return label.fontMetrics().height() * 3 / 2; }

} // namespace

DropHintLabel::DropHintLabel(QWidget* parent)
    : QLabel(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

QSize DropHintLabel::sizeHint() const
{
    const int padding = paddingOf(*this);
    return fontMetrics().size(0, text()) + QSize(2 * padding, 2 * padding);
}

QSize DropHintLabel::minimumSizeHint() const { return sizeHint(); }

void DropHintLabel::paintEvent(QPaintEvent* event)
{
    QLabel::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor color = palette().color(foregroundRole());
    color.setAlphaF(0.45F);
    painter.setPen(QPen(color, 1.5, Qt::DashLine));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 8, 8);
}

} // namespace pagestack
