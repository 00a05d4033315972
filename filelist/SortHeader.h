#pragma once

#include "filelist/SortOrder.h"

#include <QHeaderView>
#include <QMenu>

namespace pagestack {

/// The header of the table of files: its columns can be moved, sized, chosen and sorted by. A click
/// on a column makes it the first to be sorted by, those before follow; with Control or Shift it
/// comes last, or is turned round where it stands.
class SortHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit SortHeader(QWidget* parent = nullptr);

    const SortOrders& orders() const { return m_orders; } ///< each column once
    void setOrders(const SortOrders& orders); ///< without ordersChanged()

    /// Widths, order, choice and sort orders of the columns.
    QByteArray save() const;
    /// False, with the columns left as they are, if save() did not make `state` for as many.
    bool restore(const QByteArray& state);
    /// Takes none but its own, which stays empty: highlighted are rows, and whether they make up a
    /// column would be asked of each of them.
    void setSelectionModel(QItemSelectionModel* selection) override;
    /// The columns in the order of the model, as wide as their titles and what they commonly
    /// hold; that of the
    /// pixels, which files are read for, is hidden.
    void resetColumns();

    /// Fills `menu` with a check mark for each column that can be hidden.
    void fillMenu(QMenu& menu);

signals:
    void ordersChanged(const QList<pagestack::SortOrder>& before);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void initStyleOptionForIndex(QStyleOptionHeader* option, int logicalIndex) const override;

private:
    void followIndicator();

    SortOrders m_orders;
    bool m_isAdding = false; ///< Control or Shift is held
};

} // namespace pagestack
