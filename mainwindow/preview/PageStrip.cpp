#include "mainwindow/preview/PageStrip.h"

#include <QLocale>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QWheelEvent>

#include <utility>

namespace pagestack {

namespace {

    constexpr int mostThumbnails = 400;
    constexpr qsizetype mostWanted = 64; ///< more than are in view
    constexpr int gap = 4;

    /// In points, for a text of this height.
    QSize thumbnailSize(const QFontMetrics& font)
    {
        return { font.height() * 4, font.height() * 5 };
    }

    /// The thumbnail above the number of its page.
    class PageDelegate : public QStyledItemDelegate
    {
    public:
        using QStyledItemDelegate::QStyledItemDelegate;

        QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override
        {
            return thumbnailSize(option.fontMetrics)
                + QSize(4 * gap, 3 * gap + option.fontMetrics.height());
        }

        void paint(QPainter* painter, const QStyleOptionViewItem& option,
                   const QModelIndex& index) const override
        {
            QStyleOptionViewItem frame = option;
            const QStyle* const style = option.widget->style();
            style->drawPrimitive(QStyle::PE_PanelItemViewItem, &frame, painter, option.widget);
            const QRect inner = option.rect.adjusted(gap, gap, -gap, -gap);
            const QRect number(inner.left(), inner.bottom() - option.fontMetrics.height() + 1,
                               inner.width(), option.fontMetrics.height());
            const QRect place(inner.topLeft(),
                              QSize(inner.width(), inner.height() - number.height() - gap));
            drawPage(*painter, place, option, index.data(Qt::DecorationRole));
            const bool isSelected = option.state.testFlag(QStyle::State_Selected);
            painter->setPen(
                option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text));
            painter->drawText(number, Qt::AlignCenter, index.data(Qt::DisplayRole).toString());
        }

    private:
        static void drawPage(QPainter& painter, const QRect& place,
                             const QStyleOptionViewItem& option, const QVariant& decoration)
        {
            const auto image = decoration.value<QImage>();
            if (!image.isNull()) {
                const QSize size = image.size().scaled(place.size(), Qt::KeepAspectRatio);
                const QRect rect
                    = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, place);
                painter.fillRect(rect, Qt::white);
                painter.setRenderHint(QPainter::SmoothPixmapTransform);
                painter.drawImage(rect, image);
                painter.setPen(option.palette.color(QPalette::Mid));
                painter.drawRect(rect.adjusted(0, 0, -1, -1));
            } else if (decoration.isValid()) {
                const QIcon warning
                    = option.widget->style()->standardIcon(QStyle::SP_MessageBoxWarning);
                warning.paint(&painter,
                              place.adjusted(place.width() / 4, 0, -place.width() / 4, 0));
            }
        }
    };

} // namespace

PageThumbnails::PageThumbnails(QThreadPool& threads, QObject* parent)
    : QAbstractListModel(parent)
    , m_images(mostThumbnails)
    , m_work(threads, nullptr)
{
}

void PageThumbnails::setPages(int pages, QSize size, MakeImage make,
                              std::function<bool(int page)> isInView)
{
    beginResetModel();
    m_work.cancel();
    m_images.clear();
    m_wanted.clear();
    m_pages = pages;
    m_size = size;
    m_make = std::move(make);
    m_isInView = std::move(isInView);
    endResetModel();
}

int PageThumbnails::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_pages;
}

QVariant PageThumbnails::data(const QModelIndex& index, int role) const
{
    const int page = index.row();
    if (role == Qt::DisplayRole)
        return QString::number(page + 1);
    if (role == Qt::AccessibleTextRole)
        return tr("Page %1").arg(QLocale().toString(page + 1));
    if (role != Qt::DecorationRole)
        return {};
    if (const QImage* image = m_images.object(page))
        return *image;
    if (!m_wanted.contains(page)) {
        m_wanted.append(page);
        if (m_wanted.size() > mostWanted)
            m_wanted.removeFirst();
        QMetaObject::invokeMethod(const_cast<PageThumbnails*>(this), &PageThumbnails::read,
                                  Qt::QueuedConnection);
    }
    return {};
}

void PageThumbnails::hold(bool isHeld)
{
    m_isHeld = isHeld;
    read();
}

void PageThumbnails::put(int page, const QImage& image)
{
    if (page >= m_pages || image.isNull())
        return;
    m_wanted.removeAll(page);
    m_images.insert(
        page, new QImage(image.scaled(m_size, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    emit dataChanged(index(page), index(page), { Qt::DecorationRole });
}

/// The next that is wanted, one at a time; those that have been scrolled away are not any more.
void PageThumbnails::read()
{
    if (m_isHeld || m_work.isUnderWay())
        return;
    while (!m_wanted.isEmpty() && !m_isInView(m_wanted.last()))
        m_wanted.removeLast();
    if (m_wanted.isEmpty())
        return;
    const int page = m_wanted.takeLast();
    m_work.start([make = m_make, wish = PictureWish { page, {}, m_size }](
                     const IsStopped& isStopped) { return make(wish, isStopped); },
                 [this, page](const std::optional<ShownImage>& made, const QString&) {
                     m_images.insert(page, new QImage(made ? made->image : QImage()));
                     emit dataChanged(index(page), index(page), { Qt::DecorationRole });
                     read();
                 });
}

PageStrip::PageStrip(QThreadPool& threads, QWidget* parent)
    : QListView(parent)
    , m_thumbnails(threads, this)
{
    setFlow(LeftToRight);
    setUniformItemSizes(true);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setItemDelegate(new PageDelegate(this));
    setModel(&m_thumbnails);
    setFixedHeight(thumbnailSize(fontMetrics()).height() + fontMetrics().height() + 4 * gap
                   + horizontalScrollBar()->sizeHint().height() + 2 * frameWidth());
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                if (current.isValid())
                    emit pageChosen(current.row());
            });
}

void PageStrip::setPages(int pages, MakeImage make)
{
    const QSignalBlocker unchosen(this);
    const QSize size = (QSizeF(thumbnailSize(fontMetrics())) * devicePixelRatioF()).toSize();
    m_thumbnails.setPages(pages, size, std::move(make), [this](int page) {
        return isVisible() && visualRect(m_thumbnails.index(page)).intersects(viewport()->rect());
    });
}

void PageStrip::setPage(int page)
{
    const QSignalBlocker unchosen(this);
    setCurrentIndex(m_thumbnails.index(page));
}

/// A wheel that turns up and down moves the row.
void PageStrip::wheelEvent(QWheelEvent* event)
{
    const QPoint turn = event->angleDelta();
    const int steps = turn.x() != 0 ? turn.x() : turn.y();
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - steps);
}

} // namespace pagestack
