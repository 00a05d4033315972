#include "engine/sources/AllowedFileTypes.h"
#include "filelist/CustomTableView.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>

#include <algorithm>

namespace pagestack {

namespace {

    constexpr qsizetype mostUrlsLookedAt = 20; // a drag has to be answered at once

    /// Whether any of what is dragged may be added to the list. Of many it is not known: the load
    /// says what was left out.
    bool hasUsefulFile(const QMimeData& offer)
    {
        const QList<QUrl> urls = offer.urls();
        const auto isNamedSo
            = [](const QUrl& url) { return url.isLocalFile() && hasAllowedFileType(url.path()); };
        const auto isFolder = [](const QUrl& url) {
            return url.isLocalFile() && QFileInfo(url.toLocalFile()).isDir();
        };
        return urls.size() > mostUrlsLookedAt || std::ranges::any_of(urls, isNamedSo)
            || std::ranges::any_of(urls, isFolder);
    }

} // namespace

bool CustomTableView::isOwnDrag(const QObject* source) const
{
    return source != nullptr && (source == this || source == viewport());
}

bool CustomTableView::validateDrop(const QObject* source, const QMimeData* offer) const
{
    return !m_isReadOnly && !isOwnDrag(source) && offer && offer->hasUrls();
}

void CustomTableView::setDropArea(QWidget& area)
{
    m_dropArea = &area;
    area.setAcceptDrops(true);
    area.installEventFilter(this);
}

bool CustomTableView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_dropArea)
        return QTableView::eventFilter(watched, event);
    const auto* drag = dynamic_cast<QDropEvent*>(event); // the base class of all but leaving
    if (event->type() == QEvent::DragLeave)
        showDropTarget(false);
    else if (drag == nullptr)
        return QTableView::eventFilter(watched, event);
    else if (isOwnDrag(drag->source()) || !isEnabled())
        event->ignore();
    else if (event->type() == QEvent::Drop)
        takeDrop(*static_cast<QDropEvent*>(event));
    else if (event->type() == QEvent::DragEnter)
        dragEnterEvent(static_cast<QDragEnterEvent*>(event));
    else
        answerDrag(*static_cast<QDragMoveEvent*>(event));
    return true;
}

void CustomTableView::dragEnterEvent(QDragEnterEvent* event)
{
    m_isUsefulDrag
        = validateDrop(event->source(), event->mimeData()) && hasUsefulFile(*event->mimeData());
    answerDrag(*event);
}

void CustomTableView::dragMoveEvent(QDragMoveEvent* event) { answerDrag(*event); }

/// Files are copied into the list. Rows of the table itself change their places; to others they are
/// offered as links alone, so that nobody moves a file.
void CustomTableView::answerDrag(QDragMoveEvent& event)
{
    const bool isMove = isOwnDrag(event.source());
    const bool isWelcome = isMove ? canBeReordered() : m_isUsefulDrag;
    const QPoint position = event.position().toPoint();
    showDropTarget(isWelcome && !isMove, isWelcome && isMove ? placeOfDrop(position) : -1);
    if (!isWelcome)
        return event.ignore();
    event.setDropAction(isMove ? Qt::LinkAction : Qt::CopyAction);
    event.accept();
    if (isMove
        && (position.y() < rowHeight(0) || position.y() > viewport()->height() - rowHeight(0)))
        startAutoScroll();
}

void CustomTableView::dragLeaveEvent(QDragLeaveEvent* event)
{
    showDropTarget(false);
    QTableView::dragLeaveEvent(event);
}

void CustomTableView::dropEvent(QDropEvent* event) { takeDrop(*event); }

void CustomTableView::takeDrop(QDropEvent& event)
{
    const int place = placeOfDrop(event.position().toPoint());
    showDropTarget(false);
    stopAutoScroll();
    setState(NoState);
    if (isOwnDrag(event.source()) && canBeReordered()) {
        event.setDropAction(Qt::LinkAction);
        event.accept();
        emit dragRequested(place);
        return;
    }
    if (!validateDrop(event.source(), event.mimeData()))
        return event.ignore();
    QList<QUrl> files = event.mimeData()->urls();
    files.removeIf([](const QUrl& url) { return !url.isLocalFile(); });
    if (files.isEmpty())
        return event.ignore();
    event.setDropAction(Qt::CopyAction);
    event.accept();
    emit filesDropped(files);
}

/// The place before which the rows would come.
int CustomTableView::placeOfDrop(const QPoint& position) const
{
    const int place = rowAt(position.y());
    if (place < 0)
        return m_shown->rowCount();
    const bool isBelowMiddle = position.y() > rowViewportPosition(place) + rowHeight(place) / 2;
    return isBelowMiddle ? place + 1 : place;
}

void CustomTableView::showDropTarget(bool isTarget, int place)
{
    if (isTarget == m_isDropTarget && place == m_dropPlace)
        return;
    m_isDropTarget = isTarget;
    m_dropPlace = place;
    viewport()->update();
}

void CustomTableView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (!m_isDropTarget && m_dropPlace < 0)
        return;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().highlight(), 2));
    if (m_isDropTarget)
        painter.drawRect(viewport()->rect().adjusted(1, 1, -1, -1));
    if (m_dropPlace < 0)
        return;
    const int above = m_dropPlace - 1; // its lower edge is there even behind the last row
    const int y = above < 0 ? 1 : rowViewportPosition(above) + rowHeight(above);
    painter.drawLine(0, y, viewport()->width(), y);
}

} // namespace pagestack
