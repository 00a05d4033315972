#pragma once

#include "filelist/FileTableModel.h"

#include <QAbstractProxyModel>
#include <QPointer>

#include <functional>
#include <vector>

namespace pagestack {

/// The rows of a FileTableModel that a filter leaves, in their order. While there is no filter it
/// is all of them, and no memory is taken for them. Main thread.
///
/// "Row" is a row of the list, from 0; "place" is where it is shown.
class ShownRows : public QAbstractProxyModel
{
    Q_OBJECT

public:
    using Accepts = std::function<bool(const FileItem& item)>;

    using QAbstractProxyModel::QAbstractProxyModel;

    void setFiles(FileTableModel* model); ///< null: none
    FileTableModel* files() const { return m_files.data(); }

    bool isFiltered() const { return static_cast<bool>(m_accepts); }
    /// Shows `rows`, which ascend, and of the files that come later those that are accepted.
    void show(const std::vector<int>& rows, const Accepts& accepts);
    void showAll();
    /// Shows the same rows, and of the files that come later those that are accepted.
    void accept(const Accepts& accepts) { m_accepts = accepts; }
    /// The rows that show() was called with, as they are by now; none without a filter.
    const std::vector<int>& shown() const { return m_shown; }

    int rowAt(int place) const; ///< -1 for no place
    int placeOf(int row) const; ///< -1 if it is hidden

    QModelIndex mapToSource(const QModelIndex& index) const override;
    QModelIndex mapFromSource(const QModelIndex& index) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex&) const override { return {}; }
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    int lowerPlace(int row) const;
    void beginInsert(const QModelIndex&, int first, int last);
    void endInsert(const QModelIndex&, int first, int last);
    void beginRemove(const QModelIndex&, int first, int last);
    void endRemove(const QModelIndex&, int first, int last);
    void reorder(const QList<int>& rows);
    void announce(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles);

    QPointer<FileTableModel> m_files;
    Accepts m_accepts; ///< empty without a filter
    std::vector<int> m_shown; ///< rows by place
    bool m_isRemoving = false; ///< rows that are shown
};

} // namespace pagestack
