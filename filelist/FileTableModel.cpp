#include "filelist/FileTableModel.h"

#include "engine/log/ShownReason.h"
#include "engine/options/ConversionOptions.h"
#include "engine/options/PageChoice.h"
#include "filelist/PathClipboard.h"

#include <QMimeData>
#include <QTextDocument>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    struct ColumnFacts
    {
        const char16_t* identifier = nullptr;
        const char16_t* sortKey = nullptr; ///< the property of FileItem
        const char* title = nullptr;
        QDateTime FileDates::*date = nullptr;
    };

    constexpr std::array<ColumnFacts, FileTableModel::ColumnCount> columns { {
        { u"isselected", u"isSelected", "" },
        { u"name", u"name", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Name") },
        { u"status", u"status", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Status") },
        { u"pages", u"pages", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Pages") },
        { u"pagesToConvert", u"pageChoice",
          QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Pages to convert") },
        { u"sizeInKB", u"size", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Size") },
        { u"type", u"type", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Type") },
        { u"location", u"location", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Location") },
        { u"dateModified", u"dateModified",
          QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Modified"), &FileDates::modified },
        { u"dateCreated", u"dateCreated", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Created"),
          &FileDates::created },
        { u"dateAccessed", u"dateAccessed",
          QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Accessed"), &FileDates::accessed },
        // Nothing sorts by it: all files would have to be read.
        { u"pixels", u"pixels", QT_TRANSLATE_NOOP("pagestack::FileTableModel", "Pixels") },
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
    constexpr qsizetype mostRangesChangedOneByOne = 64;

    /// The order of `count` rows in which the rows of `last`, which ascend, come last.
    QList<int> withRowsLast(int count, const QList<int>& last)
    {
        QList<int> order;
        order.reserve(count);
        auto next = last.cbegin();
        for (int row = 0; row < count; ++row) {
            if (next != last.cend() && *next == row)
                ++next;
            else
                order.append(row);
        }
        return order + last;
    }

    /// The order in which the rows from `first` on come into the rows `targets`, which ascend.
    QList<int> withLastRowsAt(int first, const QList<int>& targets)
    {
        QList<int> order;
        order.reserve(first + targets.size());
        int kept = 0;
        for (int i = 0; i < targets.size(); ++i) {
            while (order.size() < targets.at(i) && kept < first)
                order.append(kept++);
            order.append(first + i);
        }
        while (kept < first)
            order.append(kept++);
        return order;
    }

} // namespace

FileTableModel::FileTableModel(FileList& files, const ReadDates& readDates)
    : m_files(files)
    , m_shownDates(readDates)
{
    connect(&m_shownDates, &ShownDates::changed, this,
            [this] { announceColumns(DateModified, DateAccessed, { Qt::DisplayRole }); });
    connect(&m_shownPixels, &ShownPixels::changed, this,
            [this] { announceColumns(Pixels, Pixels, { Qt::DisplayRole }); });
    connect(&m_statuses, &RowStatuses::changed, this, [this] {
        announceColumns(Status, Status, { Qt::DisplayRole, Qt::DecorationRole, Qt::ToolTipRole });
    });
}

void FileTableModel::announceColumns(Column first, Column last, const QList<int>& roles)
{
    if (m_files.count() > 0) // the files may have left the list
        emit dataChanged(index(0, first), index(m_files.count() - 1, last), roles);
}

void FileTableModel::showThumbnails(bool isShown, double ratio)
{
    m_thumbnails = isShown ? std::make_unique<ShownThumbnails>(ratio) : nullptr;
    const auto announce = [this] { announceColumns(Name, Name, { Qt::DecorationRole }); };
    if (m_thumbnails)
        connect(m_thumbnails.get(), &ShownThumbnails::changed, this, announce);
    announce();
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

int FileTableModel::columnSortedBy(const QString& key)
{
    const auto column
        = std::find_if(columns.cbegin(), columns.cend(),
                       [&](const ColumnFacts& facts) { return key == facts.sortKey; });
    return column == columns.cend() ? -1 : static_cast<int>(column - columns.cbegin());
}

QVariant FileTableModel::objectValue(int row, const QString& identifier) const
{
    if (row < 0 || row >= m_files.count())
        return u""_s;
    return m_files.at(row)->displayField(identifier);
}

bool FileTableModel::append(const FileList::Item& item)
{
    if (m_files.contains(*item))
        return false;
    beginInsertRows({}, m_files.count(), m_files.count());
    m_files.append(item);
    endInsertRows();
    return true;
}

int FileTableModel::removeItems(const QList<int>& rows)
{
    const QList<int> removed = ascending(rows);
    QList<RowRange> ranges = rangesOf(removed);
    if (ranges.size() > mostRangesChangedOneByOne) {
        reorder(withRowsLast(m_files.count(), removed));
        const int count = static_cast<int>(removed.size());
        ranges = { { m_files.count() - count, count } };
    }
    for (auto range = ranges.crbegin(); range != ranges.crend(); ++range) {
        beginRemoveRows({}, range->first, range->first + range->count - 1);
        m_files.removeRows(range->first, range->count);
        endRemoveRows();
    }
    return static_cast<int>(removed.size());
}

void FileTableModel::insertItems(const FileList::Items& items, const QList<int>& rows)
{
    QList<int> targets;
    FileList::Items fresh;
    targets.reserve(items.size());
    fresh.reserve(items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (m_files.contains(*items.at(i)))
            continue;
        targets.append(std::min(rows.at(i), m_files.count() + static_cast<int>(fresh.size())));
        fresh.append(items.at(i));
    }
    if (fresh.isEmpty())
        return;
    const int before = m_files.count();
    m_files.reserve(before + static_cast<int>(fresh.size()));
    beginInsertRows({}, before, before + static_cast<int>(fresh.size()) - 1);
    for (const FileList::Item& item : std::as_const(fresh))
        m_files.append(item);
    endInsertRows();
    const QList<int> order = withLastRowsAt(before, targets);
    if (!std::ranges::is_sorted(order)) // not where they were the last ones
        reorder(order);
}

void FileTableModel::clear()
{
    beginResetModel();
    m_files.clear();
    endResetModel();
}

int FileTableModel::mark(const QList<int>& rows, Mark mark)
{
    int changed = 0;
    int first = m_files.count();
    int last = -1;
    for (const int row : rows) {
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

void FileTableModel::choosePages(const QList<int>& rows, const QString& choice)
{
    if (rows.isEmpty())
        return;
    for (const int row : rows)
        m_files.at(row)->setPageChoice(choice);
    const auto [first, last] = std::ranges::minmax(rows);
    announceChoices(first, last);
}

void FileTableModel::choosePages(const QHash<QUrl, QString>& choices)
{
    if (choices.isEmpty())
        return;
    int first = m_files.count();
    int last = -1;
    for (int row = 0; row < m_files.count(); ++row) {
        const auto choice = choices.constFind(m_files.at(row)->filePath());
        if (choice == choices.cend())
            continue;
        m_files.at(row)->setPageChoice(*choice);
        first = std::min(first, row);
        last = row;
    }
    if (last >= 0)
        announceChoices(first, last);
}

void FileTableModel::announceChoices(int first, int last)
{
    emit dataChanged(index(first, PagesToConvert), index(last, PagesToConvert),
                     { Qt::DisplayRole, Qt::EditRole });
}

bool FileTableModel::takePageChoice(int row, const QString& text)
{
    const QString choice = text.trimmed();
    const QString before = m_files.at(row)->pageChoice();
    try {
        const PageChoice checked(choice);
    } catch (const OptionError& error) {
        emit pageChoiceRefused(QString::fromUtf8(error.what()));
        return false;
    }
    if (choice == before)
        return true;
    choosePages({ row }, choice);
    emit pageChoiceEdited(row, before);
    return true;
}

void FileTableModel::sort(int column, Qt::SortOrder order)
{
    SortReading reading;
    reading.stateOf = m_statuses.states();
    reorder(sortedRows(m_files.items(), { sortOrder(column, order) }, reading));
}

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
    emit reordered(rows);
    emit layoutChanged({}, VerticalSortHint);
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
    if (role == Qt::ToolTipRole)
        return toolTip(index);
    if (index.column() == IsSelected)
        return checkMarkData(item, role);
    if (role == Qt::DisplayRole || (role == Qt::EditRole && index.column() == PagesToConvert))
        return shownText(index);
    if (role == Qt::DecorationRole && index.column() == Status)
        return statusIcon(item);
    if (role == Qt::DecorationRole && index.column() == Name && m_thumbnails)
        return m_thumbnails->of(m_files.at(index.row()));
    if (role == Qt::TextAlignmentRole && index.column() == Size)
        return (Qt::AlignRight | Qt::AlignVCenter).toInt();
    return {};
}

/// The path, and what is to be said of the status; that alone in the column of the status.
QString FileTableModel::toolTip(const QModelIndex& index) const
{
    const FileItem& item = *m_files.at(index.row());
    const RowStatus known = status(index.row());
    QStringList lines { item.localFile() };
    if (index.column() == Status)
        lines = { known.text() };
    else if (item.pages() == 0)
        lines.append(tr("No page of this file can be read."));
    lines.append(shownReason(known.reason));
    lines.removeAll(QString());
    const QString text = lines.join(u'\n');
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

QVariant FileTableModel::statusIcon(const FileItem& item) const
{
    const RowStatus::State state = m_statuses.of(item).state;
    return m_statusIcons && state != RowStatus::State::None ? m_statusIcons(state) : QVariant();
}

QVariant FileTableModel::shownText(const QModelIndex& index) const
{
    const FileList::Item& item = m_files.at(index.row());
    if (QDateTime FileDates::*const date = factsOf(index.column())->date)
        return FileItem::columnText(m_shownDates.of(item).*date);
    if (index.column() == Status)
        return m_statuses.of(*item).text();
    if (index.column() == Pixels)
        return m_shownPixels.of(item);
    return item->displayField(identifier(index.column()));
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
    if (index.isValid() && index.column() == PagesToConvert && role == Qt::EditRole)
        return takePageChoice(index.row(), value.toString());
    if (!index.isValid() || index.column() != IsSelected || role != Qt::CheckStateRole)
        return false;
    const bool isSelected = value.toInt() == Qt::Checked;
    if (!m_files.setSelected(index.row(), isSelected))
        return true;
    emit checkMarkEdited(index.row());
    announceMarks(index.row(), index.row());
    return true;
}

QVariant FileTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const ColumnFacts* facts = factsOf(section);
    if (orientation != Qt::Horizontal || !facts)
        return {};
    if (section == IsSelected && (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole))
        return tr("Converted when ticked");
    if (section == PagesToConvert && role == Qt::ToolTipRole)
        return tr("Such as 1,3-5,-1 (the last one); F2 or a double click edits it. Empty: what the "
                  "options say, or all.");
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
    if (index.column() == PagesToConvert)
        flags |= Qt::ItemIsEditable;
    return flags;
}

QStringList FileTableModel::mimeTypes() const { return { u"text/uri-list"_s }; }

QMimeData* FileTableModel::mimeData(const QModelIndexList& indexes) const
{
    QList<int> rows;
    for (const QModelIndex& index : indexes)
        rows.append(index.row());
    FileList::Items items;
    for (const int row : ascending(rows))
        items.append(m_files.at(row));
    return offeredFiles(items, false).release(); // the drag owns it
}

} // namespace pagestack
