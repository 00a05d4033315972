#include "mainwindow/widgets/TallPage.h"

#include <QEvent>
#include <QScrollBar>

namespace pagestack {

TallPage::TallPage(QWidget* parent)
    : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus); // its fields have it
}

int TallPage::leastWidth() const
{
    return (widget() == nullptr ? 0 : widget()->minimumSizeHint().width())
        + verticalScrollBar()->sizeHint().width();
}

QSize TallPage::sizeHint() const
{
    const int height = widget() == nullptr ? 0 : widget()->sizeHint().height();
    return QSize(leastWidth(), height).expandedTo(minimumSizeHint());
}

QSize TallPage::minimumSizeHint() const
{
    return { leastWidth(), QScrollArea::minimumSizeHint().height() };
}

void TallPage::showEvent(QShowEvent* event)
{
    QScrollArea::showEvent(event);
    viewport()->setAutoFillBackground(false);
    if (widget() != nullptr)
        widget()->setAutoFillBackground(false);
}

bool TallPage::eventFilter(QObject* watched, QEvent* event)
{
    // What the page shows has changed, and with it its least width.
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

} // namespace pagestack
