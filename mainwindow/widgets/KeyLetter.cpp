#include "mainwindow/widgets/KeyLetter.h"

#include <QAbstractButton>
#include <QFontMetrics>
#include <QKeySequence>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QTextCharFormat>
#include <QTextLayout>
#include <QtMath>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// `title` on one line with its letter at `position` bold and underlined, in `letterColor`
    /// where that is valid.
    void layOut(QTextLayout& layout, qsizetype position, const QColor& letterColor)
    {
        if (position >= 0) {
            QTextLayout::FormatRange letter;
            letter.start = static_cast<int>(position);
            letter.length = 1;
            letter.format.setFontWeight(QFont::Bold);
            letter.format.setFontUnderline(true);
            if (letterColor.isValid())
                letter.format.setForeground(letterColor);
            layout.setFormats({ letter });
        }
        layout.beginLayout();
        QTextLine line = layout.createLine();
        if (line.isValid())
            line.setLineWidth(QWIDGETSIZE_MAX);
        layout.endLayout();
    }

} // namespace

void KeyLetter::set(QAbstractButton& button, qsizetype position, const QColor& color)
{
    if (position < 0 || position >= button.text().size()) {
        clear(button);
        return;
    }
    m_title = button.text();
    m_position = position;
    m_color = color == button.palette().color(QPalette::Active, button.foregroundRole()) ? QColor()
                                                                                         : color;
#ifndef Q_OS_MACOS
    button.setShortcut(QKeySequence(u"Alt+"_s + m_title.at(position).toUpper()));
#endif
    button.updateGeometry();
    button.update();
}

void KeyLetter::clear(QAbstractButton& button)
{
    if (m_position < 0)
        return;
    m_position = -1;
    button.setShortcut(QKeySequence());
    button.updateGeometry();
    button.update();
}

qsizetype KeyLetter::positionIn(const QString& title) const
{
    return title == m_title ? m_position : -1;
}

int KeyLetter::extraWidth(const QAbstractButton& button) const
{
    const QString title = button.text();
    const qsizetype position = positionIn(title);
    if (position < 0)
        return 0;
    QTextLayout layout(title, button.font());
    layOut(layout, position, {});
    const int plain = button.fontMetrics().size(Qt::TextShowMnemonic, title).width();
    return qMax(0, qCeil(layout.lineAt(0).naturalTextWidth()) - plain);
}

void KeyLetter::draw(QPainter& painter, const QAbstractButton& button, const QRectF& area,
                     Qt::Alignment alignment, const QColor& textColor) const
{
    const QString title = button.text();
    QTextLayout layout(title, button.font(), painter.device());
    layOut(layout, positionIn(title), button.isEnabled() ? m_color : QColor());
    const QTextLine line = layout.lineAt(0);
    if (!line.isValid())
        return;
    const QSizeF size(line.naturalTextWidth(), line.height());
    qreal x = area.left();
    if ((alignment & Qt::AlignHCenter) != 0)
        x += qMax(0.0, (area.width() - size.width()) / 2);
    else if (button.layoutDirection() == Qt::RightToLeft)
        x += area.width() - size.width();
    painter.setPen(textColor);
    layout.draw(&painter, QPointF(x, area.top() + (area.height() - size.height()) / 2));
}

void KeyLetter::drawWithIndicator(QStylePainter& painter, const QAbstractButton& button,
                                  const QStyleOptionButton& option, const Pieces& pieces) const
{
    const QStyle& style = *button.style();
    // The style draws the indicator and the focus frame, whose place depends on the text; its label
    // it would draw plain.
    QStyleOptionButton indicator(option);
    indicator.rect = style.subElementRect(pieces.indicatorArea, &option, &button);
    painter.drawPrimitive(pieces.indicator, indicator);
    draw(painter, button, style.subElementRect(pieces.titleArea, &option, &button), Qt::AlignLeft,
         option.palette.color(QPalette::WindowText));
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.rect = style.subElementRect(pieces.focusArea, &option, &button);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}

} // namespace pagestack
