#include "mainwindow/widgets/KeyLetterRadioButton.h"

#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace pagestack {

void KeyLetterRadioButton::setKeyLetter(qsizetype position, const QColor& color)
{
    m_keyLetter.set(*this, position, color);
}

void KeyLetterRadioButton::clearKeyLetter() { m_keyLetter.clear(*this); }

qsizetype KeyLetterRadioButton::keyLetterPosition() const { return m_keyLetter.positionIn(text()); }

QSize KeyLetterRadioButton::sizeHint() const
{
    return QRadioButton::sizeHint() + QSize(m_keyLetter.extraWidth(*this), 0);
}

QSize KeyLetterRadioButton::minimumSizeHint() const { return sizeHint(); }

void KeyLetterRadioButton::paintEvent(QPaintEvent* event)
{
    if (keyLetterPosition() < 0) {
        QRadioButton::paintEvent(event);
        return;
    }
    QStyleOptionButton option;
    initStyleOption(&option);
    QStylePainter painter(this);
    m_keyLetter.drawWithIndicator(painter, *this, option,
                                  { QStyle::PE_IndicatorRadioButton,
                                    QStyle::SE_RadioButtonIndicator, QStyle::SE_RadioButtonContents,
                                    QStyle::SE_RadioButtonFocusRect });
}

} // namespace pagestack
