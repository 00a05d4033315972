#include "mainwindow/widgets/KeyLetterCheckBox.h"

#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace pagestack {

void KeyLetterCheckBox::setKeyLetter(qsizetype position, const QColor& color)
{
    m_keyLetter.set(*this, position, color);
}

void KeyLetterCheckBox::clearKeyLetter() { m_keyLetter.clear(*this); }

qsizetype KeyLetterCheckBox::keyLetterPosition() const { return m_keyLetter.positionIn(text()); }

QSize KeyLetterCheckBox::sizeHint() const
{
    return QCheckBox::sizeHint() + QSize(m_keyLetter.extraWidth(*this), 0);
}

QSize KeyLetterCheckBox::minimumSizeHint() const { return sizeHint(); }

void KeyLetterCheckBox::paintEvent(QPaintEvent* event)
{
    if (keyLetterPosition() < 0) {
        QCheckBox::paintEvent(event);
        return;
    }
    QStyleOptionButton option;
    initStyleOption(&option);
    QStylePainter painter(this);
    // The style draws the box and the focus frame, whose place depends on the text; its label it
    // would draw plain.
    QStyleOptionButton box(option);
    box.rect = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    painter.drawPrimitive(QStyle::PE_IndicatorCheckBox, box);
    m_keyLetter.draw(painter, *this,
                     style()->subElementRect(QStyle::SE_CheckBoxContents, &option, this),
                     Qt::AlignLeft, option.palette.color(QPalette::WindowText));
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.rect = style()->subElementRect(QStyle::SE_CheckBoxFocusRect, &option, this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}

} // namespace pagestack
