#pragma once

#include "engine/support/Pause.h"
#include "mainwindow/preview/LatestWork.h"
#include "mainwindow/preview/ShownImage.h"

#include <QPointF>
#include <QWidget>

namespace pagestack {

/// A page as a picture that can be zoomed and moved. It holds the whole page at the size that fits,
/// and of an enlarged page the part in view, which it asks for as they are needed. Main thread.
class PictureView : public QWidget
{
    Q_OBJECT

public:
    /// The work is done by `threads`.
    PictureView(QThreadPool& threads, QWidget* parent);

    /// Shows a page that `make` gives the images of; what was shown before stays until it is there,
    /// but not for long.
    void showPage(int page, MakeImage make);
    /// The page of before is shown for a moment yet: what takes its place is being made.
    void expectPage();
    /// Shows `text` in place of a page.
    void showText(const QString& text);
    QString text() const { return m_text; } ///< empty while a page is shown

    bool hasPage() const { return !m_whole.pageSize.isEmpty(); }
    QSize pageSize() const { return m_whole.pageSize; }
    const ShownImage& whole() const { return m_whole; }
    /// What is in view, in pixels of the page.
    QRect visibleRegion() const;

    /// Pixels of the screen for a pixel of the page; 0: as many as fit.
    double zoom() const { return m_zoom; }
    QPointF center() const { return m_center; } ///< in pixels of the page
    double shownZoom() const; ///< what fits as a number
    void setZoom(double zoom);
    /// Shows the same part of its page as another view.
    void setPlace(double zoom, QPointF center);
    void zoomBy(double factor);

signals:
    void placeChanged(); ///< by the user
    void pageRequested(int step); ///< the next or the one before; far for the first and the last
    void shown(const QStringList& losses); ///< the page is there
    void failed(const QString& reason);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QSize devicePixels() const;
    double fittingZoom() const;
    double pointsAPixel() const; ///< of the page
    QRectF placeOf(const QRect& region) const;
    QPointF pageAt(QPointF point) const;
    void zoomAt(double zoom, QPointF point);
    void moveBy(QPointF points);
    void followMove();
    void keepInside();
    void stop();
    void forget();
    static QString waitingText();
    void say(const QString& text); ///< in place of the page; empty: nothing
    void want();
    void wantWhole();
    void wantPart();
    void take(ShownImage whole);

    int m_page = 0;
    MakeImage m_make; ///< null: there is no page
    double m_zoom = 0;
    QPointF m_center;
    bool m_isNew = true; ///< what is shown is still another page
    QPointF m_dragged; ///< where the mouse was last, while it moves the page
    QString m_text;
    QSize m_room; ///< that `m_whole` was made for, in pixels of the screen
    ShownImage m_whole;
    ShownImage m_part; ///< none where the other one is good enough
    LatestWork m_wholeWork;
    LatestWork m_partWork;
    Pause m_pause; ///< between a move and the look at what it needs
    Pause m_patience; ///< with the page of before
};

} // namespace pagestack
