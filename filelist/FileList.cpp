#include "filelist/FileList.h"

#include <algorithm>
#include <utility>

namespace pagestack {

QList<int> ascending(QList<int> rows)
{
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

bool FileList::append(const Item& item)
{
    Q_ASSERT(item);
    const qsizetype before = m_known.size();
    m_known.insert(Known(*item));
    if (m_known.size() == before)
        return false;
    m_items.append(item);
    include(*item);
    return true;
}

void FileList::removeRows(int first, int count)
{
    Q_ASSERT(first >= 0 && count >= 0 && first + count <= this->count());
    const auto begin = m_items.cbegin() + first;
    std::for_each(begin, begin + count, [this](const Item& item) { exclude(*item); });
    m_items.remove(first, count);
}

/// The rows of the first ones of `items` that are in the list in this order.
QList<int> FileList::rowsInOrder(const Items& items) const
{
    QList<int> rows;
    rows.reserve(items.size());
    auto next = items.cbegin();
    for (int row = 0; row < count() && next != items.cend(); ++row) {
        if (m_items.at(row) != *next)
            continue;
        rows.append(row);
        ++next;
    }
    return rows;
}

QList<int> FileList::rowsOf(const Items& items) const
{
    QList<int> rows = rowsInOrder(items);
    if (rows.size() == items.size())
        return rows;
    rows.clear();
    QSet<const FileItem*> wanted;
    wanted.reserve(items.size());
    for (const Item& item : items)
        wanted.insert(item.get());
    for (int row = 0; row < count() && rows.size() < wanted.size(); ++row) {
        if (wanted.contains(m_items.at(row).get()))
            rows.append(row);
    }
    return rows;
}

void FileList::clear() { *this = FileList(); }

bool FileList::setSelected(int row, bool isSelected)
{
    FileItem& item = *m_items.at(row);
    if (item.isSelected() == isSelected)
        return false;
    item.setIsSelected(isSelected);
    m_checkedCount += isSelected ? 1 : -1;
    m_checkedPages += isSelected ? item.pages() : -item.pages();
    return true;
}

void FileList::reorder(const QList<int>& rows)
{
    Q_ASSERT(rows.size() == m_items.size());
    Items ordered;
    ordered.reserve(m_items.size());
    if (m_items.isDetached()) {
        for (const int row : rows)
            ordered.append(std::move(m_items[row]));
    } else { // another has the list as it was
        for (const int row : rows)
            ordered.append(std::as_const(m_items).at(row));
    }
    m_items.swap(ordered);
}

void FileList::include(const FileItem& item)
{
    m_totalPages += item.pages();
    if (item.isSelected()) {
        ++m_checkedCount;
        m_checkedPages += item.pages();
    }
}

void FileList::exclude(const FileItem& item)
{
    m_known.remove(Known(item));
    m_totalPages -= item.pages();
    if (item.isSelected()) {
        --m_checkedCount;
        m_checkedPages -= item.pages();
    }
}

} // namespace pagestack
