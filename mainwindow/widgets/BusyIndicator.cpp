#include "mainwindow/widgets/BusyIndicator.h"

#include <QPainter>
#include <QTimerEvent>

namespace pagestack {

namespace {

    constexpr int SpokeCount = 12;
    constexpr int StepMs = 80;

} // namespace

BusyIndicator::BusyIndicator(QWidget* parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void BusyIndicator::startAnimation()
{
    m_isAnimating = true;
    followVisibility(isVisible());
}

void BusyIndicator::stopAnimation()
{
    m_isAnimating = false;
    followVisibility(isVisible());
}

bool BusyIndicator::isAnimating() const { return m_isAnimating; }

QSize BusyIndicator::sizeHint() const
{
    const int side = fontMetrics().height() * 5 / 4;
    return { side, side };
}

void BusyIndicator::followVisibility(bool visible)
{
    if (!m_isAnimating || !visible)
        m_timer.stop();
    else if (!m_timer.isActive())
        m_timer.start(StepMs, this);
    update();
}

void BusyIndicator::paintEvent(QPaintEvent* /*event*/)
{
    if (!m_isAnimating)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const double radius = qMin(width(), height()) / 2.0;
    for (int spoke = 0; spoke < SpokeCount; ++spoke) {
        // The spoke of the present step is the darkest, those that it has left behind fade.
        const int age = (m_step - spoke + SpokeCount) % SpokeCount;
        QColor color = palette().color(QPalette::WindowText);
        color.setAlphaF(1.0F - 0.85F * static_cast<float>(age) / (SpokeCount - 1));
        painter.setPen(QPen(color, radius / 5, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(360.0 * spoke / SpokeCount);
        painter.drawLine(QPointF(0, -radius * 0.5), QPointF(0, -radius * 0.85));
        painter.restore();
    }
}

void BusyIndicator::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timer.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    m_step = (m_step + 1) % SpokeCount;
    update();
}

void BusyIndicator::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    followVisibility(true);
}

void BusyIndicator::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    followVisibility(false);
}

} // namespace pagestack
