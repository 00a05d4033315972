#pragma once

#include "filelist/FileItem.h"

#include <QList>
#include <QSet>
#include <QUrl>

#include <memory>

namespace pagestack {

/// `rows` in ascending order, each once.
QList<int> ascending(QList<int> rows);

/// The files of the window in their order, each URL once, with running totals.
///
/// The totals hold as long as check marks are changed here only and page counts not at all. Main
/// thread, no lock. Another thread may read the items of a copy of items() while the window is busy
/// and so leaves them alone.
///
/// Rows are counted from 0; a row that does not exist is a fault of the caller (assertion).
class FileList
{
public:
    using Item = std::shared_ptr<FileItem>;
    using Items = QList<Item>;

    const Items& items() const { return m_items; } ///< a copy costs nothing
    int count() const { return static_cast<int>(m_items.size()); }
    const Item& at(int row) const { return m_items.at(row); }
    /// Whether an item with this URL is in the list; takes the same time however long the list is.
    bool contains(const QUrl& url) const { return contains(*FileItem::unread(url)); }
    bool contains(const FileItem& item) const { return m_known.contains(Known(item)); }

    /// The rows of those of `items` that are in the list, ascending. An item that is only equal to
    /// one of the list is not in it.
    QList<int> rowsOf(const Items& items) const;

    qint64 totalPages() const { return m_totalPages; }
    qint64 checkedCount() const { return m_checkedCount; }
    qint64 checkedPages() const { return m_checkedPages; }

    /// Adds `item`, which is not null, at the end. False, with nothing changed, if an equal item is
    /// there.
    bool append(const Item& item);
    void reserve(int count) { m_known.reserve(count); } ///< room for as many in all
    void removeRows(int first, int count);
    void clear();

    /// False if the check mark is `isSelected` already.
    bool setSelected(int row, bool isSelected);

    /// Puts the item of row rows[i] into row i; `rows` names every row once.
    void reorder(const QList<int>& rows);

private:
    /// An item by its URL.
    struct Known
    {
        explicit Known(const FileItem& known)
            : item(&known)
            , hash(known.identityHash())
        {
        }
        const FileItem* item;
        std::size_t hash; ///< beside the item: most comparisons look no further

        friend std::size_t qHash(const Known& known, std::size_t seed) { return known.hash ^ seed; }
        friend bool operator==(const Known& a, const Known& b)
        {
            return a.hash == b.hash && a.item->isEqual(b.item);
        }
    };

    QList<int> rowsInOrder(const Items& items) const;
    void include(const FileItem& item);
    void exclude(const FileItem& item);

    Items m_items;
    QSet<Known> m_known;
    qint64 m_totalPages = 0;
    qint64 m_checkedCount = 0;
    qint64 m_checkedPages = 0;
};

} // namespace pagestack
