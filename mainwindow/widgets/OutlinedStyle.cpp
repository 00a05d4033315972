#include "mainwindow/widgets/OutlinedStyle.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString styleWithDarkOutlines = u"fusion"_s;
    constexpr int darkBelow = 110; // lightness of 255

} // namespace

void OutlinedStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                  QPainter* painter, const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isBox = element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
    const bool isDark = option->palette.color(QPalette::Window).lightness() < darkBelow;
    if (!isDark || !(isBox || element == PE_IndicatorRadioButton)
        || baseStyle()->name() != styleWithDarkOutlines)
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const bool isEnabled = option->state.testFlag(State_Enabled);
    painter->setPen(isEnabled ? option->palette.color(QPalette::Disabled, QPalette::WindowText)
                              : option->palette.color(QPalette::Mid));
    painter->setBrush(Qt::NoBrush);
    const QRectF outline = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    if (isBox)
        painter->drawRect(outline);
    else
        painter->drawEllipse(outline);
    painter->restore();
}

void outlineIndicators()
{
    if (QApplication::style()->name() == styleWithDarkOutlines)
        QApplication::setStyle(new OutlinedStyle(styleWithDarkOutlines));
}

} // namespace pagestack
