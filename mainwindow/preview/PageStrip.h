#pragma once

#include "mainwindow/preview/LatestWork.h"
#include "mainwindow/preview/ShownImage.h"

#include <QAbstractListModel>
#include <QCache>
#include <QListView>

namespace pagestack {

/// The pages of a file as thumbnails, of which those in view are read and some hundred kept.
class PageThumbnails : public QAbstractListModel
{
    Q_OBJECT

public:
    PageThumbnails(QThreadPool& threads, QObject* parent);

    /// Forgets all. `make` gives the images of a file of `pages` pages, of which those that
    /// `isInView` are read.
    void setPages(int pages, QSize size, MakeImage make, std::function<bool(int page)> isInView);
    QSize size() const { return m_size; } ///< of a thumbnail, in pixels of the screen, at most
    /// While it is held, nothing is read.
    void hold(bool isHeld);
    /// A thumbnail that need not be read; `image` may be larger.
    void put(int page, const QImage& image);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    void read();

    int m_pages = 0;
    QSize m_size;
    MakeImage m_make;
    bool m_isHeld = false;
    std::function<bool(int page)> m_isInView;
    mutable QCache<int, QImage> m_images; ///< null images for pages that cannot be read
    mutable QList<int> m_wanted; ///< the last that was asked for at the end
    LatestWork m_work;
};

/// Thumbnails in a row; the current one is the page that is shown.
class PageStrip : public QListView
{
    Q_OBJECT

public:
    PageStrip(QThreadPool& threads, QWidget* parent);

    void setPages(int pages, MakeImage make);
    void setPage(int page); ///< from 0; without pageChosen()
    PageThumbnails& thumbnails() { return m_thumbnails; }

signals:
    void pageChosen(int page);

protected:
    void wheelEvent(QWheelEvent* event) override;

private:
    PageThumbnails m_thumbnails;
};

} // namespace pagestack
