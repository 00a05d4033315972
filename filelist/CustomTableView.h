#pragma once

#include "filelist/SortOrder.h"

#include <QList>
#include <QMenu>
#include <QPointer>
#include <QTableView>
#include <QUrl>

#include <utility>

class QMimeData;

namespace pagestack {

/// The table of the file list: highlighting of whole rows, keys, context menu, files dragged in and
/// out. It changes nothing itself but tells what is wanted.
class CustomTableView : public QTableView
{
    Q_OBJECT
    Q_PROPERTY(QMenu* contextMenu READ contextMenu WRITE setContextMenu)

public:
    explicit CustomTableView(QWidget* parent = nullptr);

    /// Shown at a press of the right mouse button while rows are highlighted, at no other time. Not
    /// owned.
    QMenu* contextMenu() const { return m_contextMenu; }
    void setContextMenu(QMenu* menu) { m_contextMenu = menu; }

    void setModel(QAbstractItemModel* model) override;

    /// The highlighted rows, ascending.
    QList<int> highlightedRows() const;
    /// The first and the last highlighted row; -1 and -1 when there is none.
    std::pair<int, int> highlightedSpan() const;
    /// Highlights exactly these rows, which ascend, and makes the first one current.
    void highlightRows(const QList<int>& rows);
    void selectAll() override;

    /// What the column headers were clicked for, the last click first; a column counts once.
    const SortOrders& currentSortOrders() const { return m_sortOrders; }
    /// Shows `orders` in the header. Nothing is asked to be sorted.
    void setSortOrders(const SortOrders& orders);

    /// Widths, order and sort orders of the columns, for the next start.
    QByteArray saveColumns() const;
    /// False, with the columns left as they are: not made by saveColumns for as many columns.
    bool restoreColumns(const QByteArray& state);

    /// Whether a drag may be dropped: it offers URLs and does not come from this table.
    bool validateDrop(const QObject* source, const QMimeData* offer) const;

    void keyboardSearch(const QString& search) override; ///< by name, in whatever column

signals:
    /// The check marks of these rows are to be inverted; ascending, maybe none.
    void invertRequested(const QList<int>& rows);
    void removeRequested();
    /// A column header was clicked; currentSortOrders() tells for what, `before` what they were.
    void sortRequested(const QList<pagestack::SortOrder>& before);
    void moveUpRequested();
    void moveDownRequested();
    /// Files and folders of this computer, in the order of the drag, one at least.
    void filesDropped(const QList<QUrl>& urls);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void answerDrag(QDragMoveEvent& event);
    void followSortIndicator();
    void setIsDropTarget(bool isDropTarget);
    void setDefaultWidths();

    QPointer<QMenu> m_contextMenu;
    SortOrders m_sortOrders;
    bool m_isDropTarget = false; ///< a drag that may be dropped is above the table
};

} // namespace pagestack
