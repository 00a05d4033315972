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
/// out. It changes no file itself; its signals say what the user asks for.
class CustomTableView : public QTableView
{
    Q_OBJECT
    Q_PROPERTY(QMenu* contextMenu READ contextMenu WRITE setContextMenu)

public:
    explicit CustomTableView(QWidget* parent = nullptr);

    /// Shown only at a press of the right mouse button while rows are highlighted. Not owned.
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

    /// The orders that clicks on column headers asked for, the last click first; each column once.
    const SortOrders& currentSortOrders() const { return m_sortOrders; }
    /// Shows `orders` in the header, without sortRequested().
    void setSortOrders(const SortOrders& orders);

    /// Widths, order and sort orders of the columns, for the next start.
    QByteArray saveColumns() const;
    /// False, with the columns left as they are, if saveColumns did not make `state` for as many
    /// columns.
    bool restoreColumns(const QByteArray& state);

    /// Whether a drag may be dropped: it offers URLs and does not come from this table.
    bool validateDrop(const QObject* source, const QMimeData* offer) const;

    using QTableView::edit;
    /// Rows can be highlighted and scrolled, and nothing else: no check marks, editing, moving,
    /// removing, sorting or drops.
    void setReadOnly(bool isReadOnly);

    /// Takes over what is being typed into a row; false if it was refused.
    bool endEditing();

    void keyboardSearch(const QString& search) override; ///< by name, in whatever column

signals:
    /// The check marks of these rows are to be inverted; ascending, maybe none.
    void invertRequested(const QList<int>& rows);
    void removeRequested();
    /// A column header was clicked and changed currentSortOrders(), which were `before`.
    void sortRequested(const QList<pagestack::SortOrder>& before);
    void moveUpRequested();
    void moveDownRequested();
    /// Files and folders of this computer, in the order of the drag, one at least.
    void filesDropped(const QList<QUrl>& urls);

protected:
    void changeEvent(QEvent* event) override;
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
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
    void setRowHeight();

    QPointer<QMenu> m_contextMenu;
    SortOrders m_sortOrders;
    bool m_isReadOnly = false;
    bool m_isDropTarget = false; ///< a drag that may be dropped is above the table
};

} // namespace pagestack
