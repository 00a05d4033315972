#include "mainwindow/widgets/HyperlinkButton.h"

#include <QKeyEvent>
#include <QStyleOption>
#include <QStylePainter>

namespace pagestack {

namespace {

    constexpr int Margin = 3; // room for the focus frame

} // namespace

HyperlinkButton::HyperlinkButton(QWidget* parent)
    : QToolButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
}

QSize HyperlinkButton::sizeHint() const
{
    return fontMetrics().size(Qt::TextShowMnemonic, text()) + QSize(2 * Margin, 2 * Margin);
}

QSize HyperlinkButton::minimumSizeHint() const { return sizeHint(); }

void HyperlinkButton::paintEvent(QPaintEvent* /*event*/)
{
    QStylePainter painter(this);
    const bool isEnabledNow = isEnabled();
    QFont linkFont = font();
    linkFont.setUnderline(isEnabledNow);
    painter.setFont(linkFont);
    painter.setPen(palette().color(isEnabledNow ? QPalette::Link : QPalette::WindowText));
    painter.drawText(rect().adjusted(Margin, Margin, -Margin, -Margin),
                     Qt::AlignVCenter | Qt::AlignLeading | Qt::TextHideMnemonic, text());
    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}

void HyperlinkButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QToolButton::keyPressEvent(event);
}

} // namespace pagestack
