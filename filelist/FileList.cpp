#include "filelist/FileList.h"

#include <algorithm>
#include <utility>

namespace pagestack {

bool FileList::append(const Item& item)
{
    Q_ASSERT(item);
    const qsizetype before = m_urls.size();
    m_urls.insert(item->filePath());
    if (m_urls.size() == before)
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

int FileList::removeIf(const std::function<bool(int row, const FileItem& item)>& isUnwanted)
{
    Items kept;
    kept.reserve(m_items.size());
    for (int row = 0; row < count(); ++row) {
        if (isUnwanted(row, *m_items.at(row)))
            exclude(*m_items.at(row));
        else
            kept.append(m_items.at(row));
    }
    const int removed = static_cast<int>(m_items.size() - kept.size());
    m_items.swap(kept);
    return removed;
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
    for (const int row : rows)
        ordered.append(m_items.at(row));
    m_items.swap(ordered);
}

void FileList::sort(const SortOrder& order)
{
    const QList<int> rows = sortedRows(m_items, order);
    if (!rows.isEmpty())
        reorder(rows);
}

void FileList::moveRows(int first, int count, int before)
{
    Q_ASSERT(first >= 0 && count >= 0 && first + count <= this->count());
    Q_ASSERT(before >= 0 && before <= this->count());
    const auto begin = m_items.begin();
    if (before <= first)
        std::rotate(begin + before, begin + first, begin + first + count);
    else
        std::rotate(begin + first, begin + first + count, begin + before);
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
    m_urls.remove(item.filePath());
    m_totalPages -= item.pages();
    if (item.isSelected()) {
        --m_checkedCount;
        m_checkedPages -= item.pages();
    }
}

} // namespace pagestack
