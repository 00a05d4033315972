#pragma once

#include <QProxyStyle>

namespace pagestack {

/// Gives tick boxes and radio buttons an outline that is seen on dark windows, where the style
/// beneath draws a darker one.
class OutlinedStyle : public QProxyStyle
{
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
};

/// Makes it the style of the program, if that has the style which needs it.
void outlineIndicators();

} // namespace pagestack
