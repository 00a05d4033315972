#include "filelist/ShownRows.h"

#include <algorithm>

namespace pagestack {

void ShownRows::setFiles(FileTableModel* model)
{
    beginResetModel();
    if (m_files)
        m_files->disconnect(this);
    m_files = model;
    m_accepts = {};
    m_shown.clear();
    setSourceModel(model);
    if (model != nullptr) {
        connect(model, &FileTableModel::rowsAboutToBeInserted, this, &ShownRows::beginInsert);
        connect(model, &FileTableModel::rowsInserted, this, &ShownRows::endInsert);
        connect(model, &FileTableModel::rowsAboutToBeRemoved, this, &ShownRows::beginRemove);
        connect(model, &FileTableModel::rowsRemoved, this, &ShownRows::endRemove);
        connect(model, &FileTableModel::reordered, this, &ShownRows::reorder);
        connect(model, &FileTableModel::dataChanged, this, &ShownRows::announce);
        connect(model, &FileTableModel::modelAboutToBeReset, this, [this] { beginResetModel(); });
        connect(model, &FileTableModel::modelReset, this, [this] {
            m_shown.clear();
            endResetModel();
        });
    }
    endResetModel();
}

void ShownRows::show(const std::vector<int>& rows, const Accepts& accepts)
{
    beginResetModel();
    m_shown = rows;
    m_accepts = accepts;
    endResetModel();
}

void ShownRows::showAll()
{
    beginResetModel();
    std::vector<int>().swap(m_shown);
    m_accepts = {};
    endResetModel();
}

int ShownRows::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || !m_files)
        return 0;
    return isFiltered() ? static_cast<int>(m_shown.size()) : m_files->rowCount();
}

int ShownRows::columnCount(const QModelIndex& parent) const
{
    return m_files && !parent.isValid() ? m_files->columnCount() : 0;
}

QModelIndex ShownRows::index(int row, int column, const QModelIndex& parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

// The base class asks the first row for the column, which there may be none.
QVariant ShownRows::headerData(int section, Qt::Orientation orientation, int role) const
{
    return m_files ? m_files->headerData(section, orientation, role) : QVariant();
}

int ShownRows::rowAt(int place) const
{
    if (place < 0 || place >= rowCount())
        return -1;
    return isFiltered() ? m_shown.at(static_cast<std::size_t>(place)) : place;
}

/// The place of `row`, or where it would be if it were shown.
int ShownRows::lowerPlace(int row) const
{
    return static_cast<int>(std::ranges::lower_bound(m_shown, row) - m_shown.begin());
}

int ShownRows::placeOf(int row) const
{
    const int place = isFiltered() ? lowerPlace(row) : row;
    return rowAt(place) == row ? place : -1;
}

QModelIndex ShownRows::mapToSource(const QModelIndex& index) const
{
    return index.isValid() && m_files ? m_files->index(rowAt(index.row()), index.column())
                                      : QModelIndex();
}

QModelIndex ShownRows::mapFromSource(const QModelIndex& index) const
{
    return index.isValid() ? this->index(placeOf(index.row()), index.column()) : QModelIndex();
}

// Files come at the end of the list.
void ShownRows::beginInsert(const QModelIndex& /*parent*/, int first, int last)
{
    if (!isFiltered())
        beginInsertRows({}, first, last);
}

void ShownRows::endInsert(const QModelIndex& /*parent*/, int first, int last)
{
    if (!isFiltered())
        return endInsertRows();
    std::vector<int> fresh;
    for (int row = first; row <= last; ++row)
        if (m_accepts(*m_files->files().at(row)))
            fresh.push_back(row);
    if (fresh.empty())
        return;
    const int before = rowCount();
    beginInsertRows({}, before, before + static_cast<int>(fresh.size()) - 1);
    m_shown.insert(m_shown.end(), fresh.begin(), fresh.end());
    endInsertRows();
}

void ShownRows::beginRemove(const QModelIndex& /*parent*/, int first, int last)
{
    const int begin = isFiltered() ? lowerPlace(first) : first;
    const int end = isFiltered() ? lowerPlace(last + 1) : last + 1;
    m_isRemoving = begin < end;
    if (m_isRemoving)
        beginRemoveRows({}, begin, end - 1);
}

void ShownRows::endRemove(const QModelIndex& /*parent*/, int first, int last)
{
    if (isFiltered()) {
        const auto behind = m_shown.erase(m_shown.begin() + lowerPlace(first),
                                          m_shown.begin() + lowerPlace(last + 1));
        for (auto row = behind; row != m_shown.end(); ++row)
            *row -= last + 1 - first;
    }
    if (m_isRemoving)
        endRemoveRows();
}

/// The item of row i was in row rows[i].
void ShownRows::reorder(const QList<int>& rows)
{
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    std::vector<int> newRows(static_cast<std::size_t>(rows.size()));
    for (int row = 0; row < rows.size(); ++row)
        newRows.at(static_cast<std::size_t>(rows.at(row))) = row;
    const QModelIndexList before = persistentIndexList();
    std::vector<int> rowsBefore;
    rowsBefore.reserve(static_cast<std::size_t>(before.size()));
    for (const QModelIndex& old : before)
        rowsBefore.push_back(rowAt(old.row()));
    for (int& row : m_shown)
        row = newRows.at(static_cast<std::size_t>(row));
    std::ranges::sort(m_shown);
    QModelIndexList after;
    after.reserve(before.size());
    for (qsizetype i = 0; i < before.size(); ++i) {
        const int row = rowsBefore.at(static_cast<std::size_t>(i));
        after.append(
            index(placeOf(newRows.at(static_cast<std::size_t>(row))), before.at(i).column()));
    }
    changePersistentIndexList(before, after);
    emit layoutChanged({}, VerticalSortHint);
}

void ShownRows::announce(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles)
{
    const int begin = isFiltered() ? lowerPlace(first.row()) : first.row();
    const int end = isFiltered() ? lowerPlace(last.row() + 1) : last.row() + 1;
    if (begin < end)
        emit dataChanged(index(begin, first.column()), index(end - 1, last.column()), roles);
}

} // namespace pagestack
