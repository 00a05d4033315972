#include "filelist/FileTableModel.h"

#include <QMimeData>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    struct ColumnFacts
    {
        const char16_t* identifier;
        const char16_t* sortKey; ///< the property of FileItem
        const char* title;
    };

    constexpr std::array<ColumnFacts, FileTableModel::ColumnCount> columns { {
        { u"isselected", u"isSelected", "" },
        { u"name", u"name", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Name") },
        { u"pages", u"pages", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Pages") },
        { u"sizeInKB", u"size", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Size") },
        { u"type", u"type", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Type") },
        { u"dateModified", u"dateModified",
          QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Modified") },
        { u"dateCreated", u"dateCreated",
          QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Created") },
        { u"dateAccessed", u"dateAccessed",
          QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Accessed") },
        { u"location", u"location", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Location") },
    } };

    const ColumnFacts* factsOf(int column)
    {
        return column >= 0 && column < FileTableModel::ColumnCount
            ? &columns.at(static_cast<std::size_t>(column))
            : nullptr;
    }

    struct RowRange
    {
        int first;
        int count;
    };

    QList<RowRange> rangesOf(const QList<int>& ascendingRows)
    {
        QList<RowRange> ranges;
        for (const int row : ascendingRows) {
            if (!ranges.isEmpty() && ranges.last().first + ranges.last().count == row)
                ++ranges.last().count;
            else
                ranges.append({ row, 1 });
        }
        return ranges;
    }

    // Each range that is removed on its own moves the rows behind it, in the list and in the views.
    constexpr qsizetype mostRangesRemovedOneByOne = 64;

} // namespace

FileTableModel::FileTableModel(FileList& files, QObject* parent)
    : QAbstractTableModel(parent)
    , m_files(files)
{
}

QString FileTableModel::identifier(int column)
{
    const ColumnFacts* facts = factsOf(column);
    return facts ? QString::fromUtf16(facts->identifier) : QString();
}

SortOrder FileTableModel::sortOrder(int column, Qt::SortOrder order)
{
    const ColumnFacts* facts = factsOf(column);
    return { facts ? QString::fromUtf16(facts->sortKey) : QString(), order == Qt::AscendingOrder };
}

QVariant FileTableModel::objectValue(int row, const QString& identifier) const
{
    if (row < 0 || row >= m_files.count())
        return u""_s;
    return m_files.at(row)->displayField(identifier);
}

bool FileTableModel::append(const FileList::Item& item)
{
    if (m_files.contains(item->filePath()))
        return false;
    beginInsertRows({}, m_files.count(), m_files.count());
    m_files.append(item);
    endInsertRows();
    return true;
}

int FileTableModel::appendMany(const FileList::Items& items)
{
    FileList::Items fresh;
    QSet<QUrl> taken;
    for (const FileList::Item& item : items) {
        const QUrl url = item->filePath();
        if (m_files.contains(url) || taken.contains(url))
            continue;
        taken.insert(url);
        fresh.append(item);
    }
    const int added = static_cast<int>(fresh.size());
    if (added == 0)
        return 0;
    beginInsertRows({}, m_files.count(), m_files.count() + added - 1);
    for (const FileList::Item& item : std::as_const(fresh))
        m_files.append(item);
    endInsertRows();
    return added;
}

int FileTableModel::removeItems(const QList<int>& rows)
{
    QList<int> ascending = rows;
    std::sort(ascending.begin(), ascending.end());
    ascending.erase(std::unique(ascending.begin(), ascending.end()), ascending.end());
    const QList<RowRange> ranges = rangesOf(ascending);
    if (ranges.size() > mostRangesRemovedOneByOne) {
        beginResetModel();
        auto next = ascending.cbegin();
        m_files.removeIf([&](int row, const FileItem&) {
            const bool isUnwanted = next != ascending.cend() && *next == row;
            next += isUnwanted ? 1 : 0;
            return isUnwanted;
        });
        endResetModel();
    } else {
        for (auto range = ranges.crbegin(); range != ranges.crend(); ++range) {
            beginRemoveRows({}, range->first, range->first + range->count - 1);
            m_files.removeRows(range->first, range->count);
            endRemoveRows();
        }
    }
    return static_cast<int>(ascending.size());
}

int FileTableModel::removeIf(const std::function<bool(int row, const FileItem& item)>& isUnwanted)
{
    QList<int> rows;
    for (int row = 0; row < m_files.count(); ++row) {
        if (isUnwanted(row, *m_files.at(row)))
            rows.append(row);
    }
    return removeItems(rows);
}

void FileTableModel::clear()
{
    beginResetModel();
    m_files.clear();
    endResetModel();
}

bool FileTableModel::setSelected(int row, bool isSelected)
{
    if (!m_files.setSelected(row, isSelected))
        return false;
    announceMarks(row, row);
    return true;
}

int FileTableModel::mark(const QList<int>& rows, Mark mark) { return markRows(&rows, mark); }

int FileTableModel::markAll(Mark mark) { return markRows(nullptr, mark); }

int FileTableModel::markRows(const QList<int>* rows, Mark mark)
{
    const qsizetype count = rows ? rows->size() : m_files.count();
    int changed = 0;
    int first = m_files.count();
    int last = -1;
    for (qsizetype i = 0; i < count; ++i) {
        const int row = rows ? rows->at(i) : static_cast<int>(i);
        const bool isSelected
            = mark == Mark::Invert ? !m_files.at(row)->isSelected() : mark == Mark::Check;
        if (!m_files.setSelected(row, isSelected))
            continue;
        ++changed;
        first = std::min(first, row);
        last = std::max(last, row);
    }
    if (changed > 0)
        announceMarks(first, last);
    return changed;
}

void FileTableModel::announceMarks(int first, int last)
{
    emit dataChanged(index(first, IsSelected), index(last, IsSelected), { Qt::CheckStateRole });
    emit checkMarksChanged();
}

void FileTableModel::sort(int column, Qt::SortOrder order) { sortBy(sortOrder(column, order)); }

void FileTableModel::sortBy(const SortOrder& order) { reorder(sortedRows(m_files.items(), order)); }

void FileTableModel::reorder(const QList<int>& rows)
{
    if (rows.isEmpty())
        return;
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    QList<int> newRows(rows.size());
    for (int row = 0; row < rows.size(); ++row)
        newRows[rows.at(row)] = row;
    m_files.reorder(rows);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& old : before)
        after.append(index(newRows.at(old.row()), old.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, VerticalSortHint);
}

void FileTableModel::moveItems(int first, int count, int before)
{
    // Refused where nothing would move.
    if (count <= 0 || !beginMoveRows({}, first, first + count - 1, {}, before))
        return;
    m_files.moveRows(first, count, before);
    endMoveRows();
}

int FileTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_files.count();
}

int FileTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant FileTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_files.count())
        return {};
    const FileItem& item = *m_files.at(index.row());
    if (role == Qt::ToolTipRole) {
        const QString path = item.filePath().toLocalFile();
        return item.pages() > 0 ? path : tr("%1\nNo page of this file can be read.").arg(path);
    }
    if (index.column() == IsSelected)
        return checkMarkData(item, role);
    if (role == Qt::DisplayRole)
        return item.displayField(identifier(index.column()));
    if (role == Qt::TextAlignmentRole && index.column() == Size)
        return (Qt::AlignRight | Qt::AlignVCenter).toInt();
    return {};
}

QVariant FileTableModel::checkMarkData(const FileItem& item, int role) const
{
    if (role == Qt::CheckStateRole)
        return item.isSelected() ? Qt::Checked : Qt::Unchecked;
    if (role == Qt::AccessibleTextRole)
        return item.isSelected() ? tr("%1 is converted").arg(item.name())
                                 : tr("%1 is left out").arg(item.name());
    return {};
}

bool FileTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != IsSelected || role != Qt::CheckStateRole)
        return false;
    setSelected(index.row(), value.toInt() == Qt::Checked);
    return true;
}

QVariant FileTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const ColumnFacts* facts = factsOf(section);
    if (orientation != Qt::Horizontal || !facts)
        return {};
    if (section == IsSelected && (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole))
        return tr("Converted when ticked");
    if (role == Qt::DisplayRole)
        return section == IsSelected ? u""_s : tr(facts->title);
    if (role == Qt::TextAlignmentRole)
        return ((section == Size ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter).toInt();
    return {};
}

Qt::ItemFlags FileTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled
        | Qt::ItemNeverHasChildren;
    if (index.column() == IsSelected)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

QStringList FileTableModel::mimeTypes() const { return { u"text/uri-list"_s }; }

QMimeData* FileTableModel::mimeData(const QModelIndexList& indexes) const
{
    QList<int> rows;
    for (const QModelIndex& index : indexes)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    QList<QUrl> urls;
    for (const int row : std::as_const(rows))
        urls.append(m_files.at(row)->filePath());
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    return data.release(); // the drag owns it
}

} // namespace pagestack
