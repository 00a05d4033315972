#include "mainwindow/widgets/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>

namespace pagestack {

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize ElidedLabel::sizeHint() const
{
    return { fontMetrics().averageCharWidth() * 30, fontMetrics().height() + 2 };
}

QSize ElidedLabel::minimumSizeHint() const
{
    return { fontMetrics().averageCharWidth() * 10, fontMetrics().height() + 2 };
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        const auto* const help = static_cast<QHelpEvent*>(event);
        // A tool tip takes what looks like markup for markup.
        QToolTip::showText(help->globalPos(),
                           shownText() == text() ? QString() : Qt::convertFromPlainText(text()),
                           this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    style()->drawItemText(
        &painter, contentsRect(),
        static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment()).toInt()),
        palette(), isEnabled(), shownText(), foregroundRole());
}

} // namespace pagestack
