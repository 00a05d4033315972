#include "mainwindow/preview/PictureView.h"

#include "engine/log/ShownReason.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace pagestack {

namespace {

    constexpr int pauseMs = 40;
    constexpr int patienceMs = 250;
    constexpr double largestZoom = 16;
    constexpr double zoomStep = 1.25;
    constexpr double wheelStep = 120; ///< eighths of a degree
    constexpr double clearZoom = 2; ///< from here on pixels are shown as squares
    constexpr double goodEnough = 1.02; ///< what a picture may be enlarged
    constexpr double tooLarge = 1.25; ///< and reduced
    constexpr int margin = 8;
    constexpr double keyStep = 60;
    constexpr int far = std::numeric_limits<int>::max() / 2;

} // namespace

PictureView::PictureView(QThreadPool& threads, QWidget* parent)
    : QWidget(parent)
    , m_wholeWork(threads, nullptr)
    , m_partWork(threads, nullptr)
    , m_pause(pauseMs, [this] { want(); })
    , m_patience(patienceMs, [this] {
        forget();
        say(waitingText());
    })
{
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(120, 120);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PictureView::showPage(int page, MakeImage make)
{
    expectPage();
    m_page = page;
    m_make = std::move(make);
    wantWhole();
}

void PictureView::expectPage()
{
    stop();
    m_isNew = true;
    if (m_text == waitingText()) // it goes on
        return;
    m_patience.start();
    say({});
}

QString PictureView::waitingText() { return tr("Reading the page..."); }

void PictureView::showText(const QString& text)
{
    stop();
    m_patience.stop();
    forget();
    say(text);
}

void PictureView::stop()
{
    m_make = nullptr; // which may hold a file
    m_wholeWork.cancel();
    m_partWork.cancel();
}

void PictureView::say(const QString& text)
{
    m_text = text;
    setAccessibleDescription(text);
    update();
}

void PictureView::forget()
{
    m_whole = {};
    m_part = {};
}

QSize PictureView::devicePixels() const
{
    const QSize room = size() - QSize(2 * margin, 2 * margin);
    return (QSizeF(room) * devicePixelRatioF()).toSize().expandedTo(QSize(1, 1));
}

double PictureView::fittingZoom() const
{
    const QSize room = devicePixels();
    return std::min({ 1.0, static_cast<double>(room.width()) / pageSize().width(),
                      static_cast<double>(room.height()) / pageSize().height() });
}

double PictureView::shownZoom() const
{
    if (!hasPage())
        return 1;
    return m_zoom > 0 ? m_zoom : fittingZoom();
}

double PictureView::pointsAPixel() const { return shownZoom() / devicePixelRatioF(); }

QRectF PictureView::placeOf(const QRect& region) const
{
    const double scale = pointsAPixel();
    const QPointF middle(width() / 2.0, height() / 2.0);
    return { middle + (QPointF(region.topLeft()) - m_center) * scale,
             QSizeF(region.size()) * scale };
}

QPointF PictureView::pageAt(QPointF point) const
{
    return m_center + (point - QPointF(width() / 2.0, height() / 2.0)) / pointsAPixel();
}

QRect PictureView::visibleRegion() const
{
    const QRectF seen(pageAt({}), pageAt(QPointF(width(), height())));
    return seen.toAlignedRect().intersected(QRect(QPoint(), pageSize()));
}

void PictureView::setZoom(double zoom) { zoomAt(zoom, QPointF(width() / 2.0, height() / 2.0)); }

void PictureView::zoomBy(double factor) { setZoom(shownZoom() * factor); }

/// What of the page is at `point` stays there.
void PictureView::zoomAt(double zoom, QPointF point)
{
    if (!hasPage())
        return;
    const QPointF held = pageAt(point);
    m_zoom = zoom < fittingZoom() ? 0 : std::min(zoom, largestZoom);
    m_center += held - pageAt(point);
    followMove();
    emit placeChanged();
}

void PictureView::setPlace(double zoom, QPointF center)
{
    m_zoom = zoom;
    m_center = center;
    followMove();
}

void PictureView::moveBy(QPointF points)
{
    m_center -= points / pointsAPixel();
    followMove();
    emit placeChanged();
}

void PictureView::followMove()
{
    keepInside();
    m_pause.start();
    update();
}

/// A page that is smaller than the view stays in its middle.
void PictureView::keepInside()
{
    if (!hasPage())
        return;
    const auto kept = [&](double middle, int pixels, int points) {
        const double half = std::min(points / pointsAPixel(), static_cast<double>(pixels)) / 2;
        return std::clamp(middle, half, std::max(half, pixels - half));
    };
    m_center = { kept(m_center.x(), pageSize().width(), width()),
                 kept(m_center.y(), pageSize().height(), height()) };
}

void PictureView::want()
{
    if (!hasPage() || m_isNew)
        return;
    const QSize room = devicePixels();
    const bool isLarger = room.width() > m_room.width() || room.height() > m_room.height();
    // What is far too large is shown with pixels left out.
    const bool isFarSmaller
        = room.width() * tooLarge < m_room.width() || room.height() * tooLarge < m_room.height();
    if ((isLarger || (isFarSmaller && m_whole.hasParts)) && !m_wholeWork.isUnderWay())
        wantWhole();
    const double has = std::max(
        static_cast<double>(m_whole.image.width()) / std::max(m_whole.region.width(), 1),
        static_cast<double>(m_whole.image.height()) / std::max(m_whole.region.height(), 1));
    if (m_whole.hasParts && std::min(1.0, shownZoom()) > has * goodEnough)
        wantPart();
    else
        m_part = {};
}

void PictureView::wantWhole()
{
    m_room = devicePixels();
    m_wholeWork.start([make = m_make, wish = PictureWish { m_page, {}, m_room }](
                          const IsStopped& isStopped) { return make(wish, isStopped); },
                      [this](std::optional<ShownImage>& made, const QString& reason) {
                          m_patience.stop();
                          if (made) {
                              take(std::move(*made));
                              return;
                          }
                          forget();
                          say(shownReason(reason));
                          emit failed(m_text);
                      });
}

void PictureView::take(ShownImage whole)
{
    const bool isOther = whole.pageSize != pageSize();
    say({});
    if (std::exchange(m_isNew, false))
        m_part = {};
    m_whole = std::move(whole);
    if (isOther) // else the pages may be compared, so that the place stays
        m_center = QPointF(0, 0);
    followMove();
    emit shown(m_whole.losses);
}

void PictureView::wantPart()
{
    const QRect seen = visibleRegion().intersected(m_whole.region);
    const double zoom = std::min(1.0, shownZoom());
    const bool isThere = m_part.region.contains(seen)
        && m_part.image.width() + 1 >= m_part.region.width() * zoom / goodEnough;
    if (isThere || seen.isEmpty())
        return;
    const int moreX = seen.width() / 4;
    const int moreY = seen.height() / 4;
    const QRect region = seen.adjusted(-moreX, -moreY, moreX, moreY).intersected(m_whole.region);
    const QSize most(static_cast<int>(std::ceil(region.width() * zoom)),
                     static_cast<int>(std::ceil(region.height() * zoom)));
    m_partWork.start([make = m_make, wish = PictureWish { m_page, region, most }](
                         const IsStopped& isStopped) { return make(wish, isStopped); },
                     [this](std::optional<ShownImage>& made, const QString&) {
                         if (!made) // the page has been read before, but now the file has changed
                             return;
                         m_part = std::move(*made);
                         update();
                     });
}

void PictureView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(hasPage() ? QPalette::Mid : QPalette::Window));
    if (!hasPage()) {
        painter.drawText(rect().adjusted(margin, margin, -margin, -margin),
                         Qt::AlignCenter | Qt::TextWordWrap, m_text);
    } else {
        painter.fillRect(placeOf(m_whole.region), Qt::white);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, shownZoom() < clearZoom);
        if (!m_whole.image.isNull())
            painter.drawImage(placeOf(m_whole.region), m_whole.image);
        if (!m_part.image.isNull())
            painter.drawImage(placeOf(m_part.region), m_part.image);
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void PictureView::resizeEvent(QResizeEvent*) { followMove(); }

void PictureView::wheelEvent(QWheelEvent* event)
{
    const double steps = event->angleDelta().y() / wheelStep;
    if (event->modifiers().testFlag(Qt::ControlModifier))
        zoomAt(shownZoom() * std::pow(zoomStep, steps), event->position());
    else if (m_zoom > 0)
        moveBy(QPointF(event->angleDelta()) / 2);
}

void PictureView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_zoom <= 0)
        return;
    m_dragged = event->position();
    setCursor(Qt::ClosedHandCursor);
}

void PictureView::mouseMoveEvent(QMouseEvent* event)
{
    if (!event->buttons().testFlag(Qt::LeftButton) || m_zoom <= 0)
        return;
    moveBy(event->position() - std::exchange(m_dragged, event->position()));
}

void PictureView::mouseReleaseEvent(QMouseEvent*) { unsetCursor(); }

void PictureView::mouseDoubleClickEvent(QMouseEvent* event)
{
    zoomAt(m_zoom > 0 ? 0 : 1, event->position());
}

void PictureView::keyPressEvent(QKeyEvent* event)
{
    const bool isMoved = m_zoom > 0;
    switch (event->key()) {
    case Qt::Key_PageDown:
        return emit pageRequested(1);
    case Qt::Key_PageUp:
        return emit pageRequested(-1);
    case Qt::Key_Home:
        return emit pageRequested(-far);
    case Qt::Key_End:
        return emit pageRequested(far);
    case Qt::Key_Right:
        return isMoved ? moveBy({ -keyStep, 0 }) : emit pageRequested(1);
    case Qt::Key_Left:
        return isMoved ? moveBy({ keyStep, 0 }) : emit pageRequested(-1);
    case Qt::Key_Down:
        return isMoved ? moveBy({ 0, -keyStep }) : emit pageRequested(1);
    case Qt::Key_Up:
        return isMoved ? moveBy({ 0, keyStep }) : emit pageRequested(-1);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return zoomBy(zoomStep);
    case Qt::Key_Minus:
        return zoomBy(1 / zoomStep);
    case Qt::Key_0:
        return setZoom(0);
    case Qt::Key_1:
        return setZoom(1);
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace pagestack
