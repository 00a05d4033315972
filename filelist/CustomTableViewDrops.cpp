#include "engine/sources/AllowedFileTypes.h"
#include "filelist/CustomTableView.h"
#include "filelist/PathClipboard.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QPixmap>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr QPoint besidePointer(12, 12);
    constexpr int dragMargin = 6;
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

const QObject* CustomTableView::sourceOf(const QDropEvent& event) const { return event.source(); }

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
    else if (isOwnDrag(sourceOf(*drag)) || !isEnabled())
        event->ignore();
    else if (event->type() == QEvent::Drop)
        takeDrop(*static_cast<QDropEvent*>(event));
    else if (event->type() == QEvent::DragEnter)
        dragEnterEvent(static_cast<QDragEnterEvent*>(event));
    else
        answerDrag(*static_cast<QDragMoveEvent*>(event));
    return true;
}

/// The base class would look at each cell that is highlighted, and have its picture of the rows lie
/// on the line that shows where they would come.
void CustomTableView::startDrag(Qt::DropActions actions)
{
    FileList::Items items;
    for (const int row : highlightedRows())
        items.append(m_shown->files()->files().at(row));
    if (items.isEmpty())
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(offeredFiles(items, false).release());
    drag->setPixmap(dragPicture(items.first()->name(), static_cast<int>(items.size())));
    drag->setHotSpot(-besidePointer);
    drag->exec(actions, defaultDropAction());
}

QModelIndexList CustomTableView::selectedIndexes() const
{
    QModelIndexList cells;
    for (const PlaceRanges::Range& range : highlight().ranges())
        cells.append(m_shown->index(range.first, FileTableModel::Name));
    return cells;
}

/// The name of the first file, and how many there are.
QPixmap CustomTableView::dragPicture(const QString& name, int count) const
{
    const QFontMetrics font = fontMetrics();
    QString text = font.elidedText(name, Qt::ElideMiddle, 30 * font.averageCharWidth());
    if (count > 1)
        text += u" (%1)"_s.arg(locale().toString(count));
    const QSize size(font.horizontalAdvance(text) + 2 * dragMargin, font.height() + dragMargin);
    QPixmap picture(size * devicePixelRatioF());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(palette().color(QPalette::Highlight));
    QPainter painter(&picture);
    painter.setFont(this->font());
    painter.setPen(palette().color(QPalette::HighlightedText));
    const QRect area(QPoint(), size);
    painter.drawRect(area.adjusted(0, 0, -1, -1)); // apart from rows of the same colour
    painter.drawText(area, Qt::AlignCenter, text);
    return picture;
}

void CustomTableView::dragEnterEvent(QDragEnterEvent* event)
{
    m_isUsefulDrag
        = validateDrop(sourceOf(*event), event->mimeData()) && hasUsefulFile(*event->mimeData());
    answerDrag(*event);
}

void CustomTableView::dragMoveEvent(QDragMoveEvent* event)
{
    if (isOwnDrag(sourceOf(*event)))
        QTableView::dragMoveEvent(event); // scrolls at the edges
    answerDrag(*event);
}

/// Files are copied into the list. Rows of the table itself change their places; to others they are
/// offered as links alone, so that nobody moves a file.
void CustomTableView::answerDrag(QDragMoveEvent& event)
{
    const bool isMove = isOwnDrag(sourceOf(event));
    const bool isWelcome = isMove ? canBeReordered() : m_isUsefulDrag;
    showDropTarget(isWelcome && !isMove,
                   isWelcome && isMove ? placeOfDrop(event.position().toPoint()) : -1);
    if (!isWelcome)
        return event.ignore();
    event.setDropAction(isMove ? Qt::LinkAction : Qt::CopyAction);
    event.accept();
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
    if (isOwnDrag(sourceOf(event)) && canBeReordered()) {
        event.setDropAction(Qt::LinkAction);
        event.accept();
        emit dragRequested(place);
        return;
    }
    if (!validateDrop(sourceOf(event), event.mimeData()))
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

} // namespace pagestack
