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
    m_keyLetter.drawWithIndicator(painter, *this, option,
                                  { QStyle::PE_IndicatorCheckBox, QStyle::SE_CheckBoxIndicator,
                                    QStyle::SE_CheckBoxContents, QStyle::SE_CheckBoxFocusRect });
}

} // namespace pagestack
