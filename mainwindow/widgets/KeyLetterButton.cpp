#include "mainwindow/widgets/KeyLetterButton.h"

#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace pagestack {

void KeyLetterButton::setKeyLetter(qsizetype position, const QColor& color)
{
    m_keyLetter.set(*this, position, color);
}

void KeyLetterButton::clearKeyLetter() { m_keyLetter.clear(*this); }

qsizetype KeyLetterButton::keyLetterPosition() const { return m_keyLetter.positionIn(text()); }

QSize KeyLetterButton::sizeHint() const
{
    return QPushButton::sizeHint() + QSize(m_keyLetter.extraWidth(*this), 0);
}

QSize KeyLetterButton::minimumSizeHint() const { return sizeHint(); }

void KeyLetterButton::paintEvent(QPaintEvent* event)
{
    if (keyLetterPosition() < 0) {
        QPushButton::paintEvent(event);
        return;
    }
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    QStylePainter painter(this);
    painter.drawControl(QStyle::CE_PushButton, option);

    QRectF area = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    if (isDown() || isChecked()) {
        area.translate(style()->pixelMetric(QStyle::PM_ButtonShiftHorizontal, &option, this),
                       style()->pixelMetric(QStyle::PM_ButtonShiftVertical, &option, this));
    }
    m_keyLetter.draw(painter, *this, area, Qt::AlignHCenter,
                     option.palette.color(QPalette::ButtonText));
}

} // namespace pagestack
