#pragma once

#include "filelist/PlaceRanges.h"
#include "filelist/ShownRows.h"
#include "filelist/SortOrder.h"

#include <QList>
#include <QMenu>
#include <QPointer>
#include <QTableView>
#include <QUrl>

#include <optional>
#include <utility>

class QMimeData;

namespace pagestack {

class SortHeader;

/// The table of the file list: highlighting of whole rows, keys, context menu, files dragged in and
/// out. It changes no file itself; its signals say what the user asks for.
///
/// It shows a FileTableModel through ShownRows. Rows are those of the list, whatever is hidden; an
/// index of model() has the place where a row is shown.
class CustomTableView : public QTableView
{
    Q_OBJECT
    Q_PROPERTY(QMenu* contextMenu READ contextMenu WRITE setContextMenu)

public:
    explicit CustomTableView(QWidget* parent = nullptr);

    /// Shown only at a press of the right mouse button while rows are highlighted. Not owned.
    QMenu* contextMenu() const { return m_contextMenu; }
    void setContextMenu(QMenu* menu) { m_contextMenu = menu; }

    /// `model` is a FileTableModel, or null.
    void setModel(QAbstractItemModel* model) override;

    enum class InView { CurrentRow, TopRow };
    /// Shows `rows` alone, which ascend, and of the files that come later those that are accepted.
    /// What is highlighted stays so as far as it is shown. `inView` is the row that stays in view,
    /// or the one behind it.
    void showRows(const std::vector<int>& rows, const ShownRows::Accepts& accepts,
                  InView inView = InView::CurrentRow);
    void showAllRows();
    const ShownRows& shownRows() const { return *m_shown; }

    /// The highlighted rows, ascending; none is hidden.
    QList<int> highlightedRows() const;
    /// The first and the last highlighted row; -1 and -1 when there is none.
    std::pair<int, int> highlightedSpan() const;
    /// Highlights exactly those of these rows that are shown; they ascend. Makes the first one
    /// current.
    void highlightRows(const QList<int>& rows);
    void selectAll() override;
    int currentRow() const; ///< -1 when there is none
    void setCurrentRow(int row); ///< highlights nothing; not one that is hidden
    void scrollToRow(int row);

    /// The orders that clicks on column headers asked for, the last click first; each column once.
    const SortOrders& currentSortOrders() const;
    /// Shows `orders` in the header, without sortRequested().
    void setSortOrders(const SortOrders& orders);

    /// Widths, order and sort orders of the columns, for the next start.
    QByteArray saveColumns() const;
    /// False, with the columns left as they are, if saveColumns did not make `state` for as many
    /// columns.
    bool restoreColumns(const QByteArray& state);
    void fillColumnMenu(QMenu& menu); ///< with what the header's own menu has

    /// Whether a drag may bring files: it offers URLs and does not come from this table.
    bool validateDrop(const QObject* source, const QMimeData* offer) const;
    /// What is dropped anywhere on `area`, which outlives the table, is dropped on the table.
    void setDropArea(QWidget& area);

    using QTableView::edit;
    /// Rows can be highlighted and scrolled, and nothing else: no check marks, editing, moving,
    /// removing, sorting or drops.
    void setReadOnly(bool isReadOnly);

    /// Small pictures of first pages in higher rows.
    void showThumbnails(bool isShown);

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
    /// The highlighted rows were dragged to come before row `row`, at the end for the row count.
    void dragRequested(int row);
    /// Files and folders of this computer, in the order of the drag, one at least.
    void filesDropped(const QList<QUrl>& urls);

protected:
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    void changeEvent(QEvent* event) override;
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    /// A cell of each highlighted range: the base class looks at them only to see whether there is
    /// something to be dragged.
    QModelIndexList selectedIndexes() const override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    /// Whom a drag comes from; null: another program.
    virtual const QObject* sourceOf(const QDropEvent& event) const;

private:
    QPixmap dragPicture(const QString& name, int count) const;
    void answerDrag(QDragMoveEvent& event);
    void takeDrop(QDropEvent& event);
    bool isOwnDrag(const QObject* source) const;
    bool canBeReordered() const { return !m_isReadOnly && !m_shown->isFiltered(); }
    int placeOfDrop(const QPoint& position) const;
    void showDropTarget(bool isTarget, int place = -1);
    void changeShownRows(const std::function<void()>& change);
    void pressWithoutControl(const QKeyEvent& event);
    void setRowHeight();
    const PlaceRanges& highlight() const;
    void paintCells(const QRect& area);

    QPointer<QMenu> m_contextMenu;
    ShownRows* m_shown;
    SortHeader* m_header;
    mutable std::optional<PlaceRanges> m_highlight; ///< none: not asked for since it changed
    QPointer<QWidget> m_dropArea;
    bool m_isUsefulDrag = false; ///< it brings something to be added
    bool m_isReadOnly = false;
    bool m_showsThumbnails = false;
    bool m_isDropTarget = false; ///< a drag that may be dropped is above the table
    int m_dropPlace = -1; ///< rows of this table would come before it
};

} // namespace pagestack
