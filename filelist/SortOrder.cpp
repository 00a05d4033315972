#include "filelist/SortOrder.h"

#include "filelist/InParallel.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    using Items = QList<std::shared_ptr<FileItem>>;

    QCollator collator()
    {
        const QLocale system = QLocale::system().collation();
        // The C locale compares code points: neither case nor numbers would count.
        QCollator result(system.language() == QLocale::C
                             ? QLocale(QLocale::English, QLocale::UnitedStates)
                             : system);
        result.setNumericMode(true);
        result.setCaseSensitivity(Qt::CaseInsensitive);
        return result;
    }

    qint64 milliseconds(const QDateTime& date)
    {
        return date.isValid() ? date.toMSecsSinceEpoch() : std::numeric_limits<qint64>::min();
    }

    template <typename Key>
    QList<int> rowsByKeys(const std::vector<Key>& keys, bool isAscending)
    {
        const auto isBefore = [&](int a, int b) {
            const auto& first = keys[static_cast<std::size_t>(isAscending ? a : b)];
            const auto& second = keys[static_cast<std::size_t>(isAscending ? b : a)];
            return first < second;
        };
        QList<int> rows(static_cast<qsizetype>(keys.size()));
        std::iota(rows.begin(), rows.end(), 0);
        if (std::is_sorted(rows.cbegin(), rows.cend(), isBefore))
            return {};
        std::stable_sort(rows.begin(), rows.end(), isBefore);
        return rows;
    }

    // `keyOf` is called once an item.
    template <typename KeyOf>
    QList<int> rowsByKey(const Items& items, bool isAscending, KeyOf keyOf)
    {
        std::vector<decltype(keyOf(*items.first()))> keys;
        keys.reserve(static_cast<std::size_t>(items.size()));
        for (const auto& item : items)
            keys.push_back(keyOf(*item));
        return rowsByKeys(keys, isAscending);
    }

    QList<int> rowsByText(const Items& items, bool isAscending, QString (FileItem::*text)() const)
    {
        const QCollator order = collator();
        return rowsByKey(items, isAscending,
                         [&](const FileItem& item) { return order.sortKey((item.*text)()); });
    }

    // The file system is asked about several files at a time.
    QList<int> rowsByDate(const Items& items, bool isAscending, QDateTime (FileItem::*date)() const)
    {
        std::vector<qint64> keys(static_cast<std::size_t>(items.size()));
        inParallel(static_cast<int>(items.size()), [&](int, int first, int end) {
            for (int i = first; i < end; ++i)
                keys[static_cast<std::size_t>(i)] = milliseconds((*items.at(i).*date)());
        });
        return rowsByKeys(keys, isAscending);
    }

} // namespace

QList<int> sortedRows(const Items& items, const SortOrder& order)
{
    const QString& key = order.key;
    const bool isAscending = order.isAscending;
    if (items.isEmpty())
        return {};
    if (key == u"isSelected"_s)
        return rowsByKey(items, isAscending,
                         [](const FileItem& item) { return static_cast<int>(item.isSelected()); });
    if (key == u"pages"_s)
        return rowsByKey(items, isAscending, [](const FileItem& item) { return item.pages(); });
    if (key == u"size"_s)
        return rowsByKey(items, isAscending, [](const FileItem& item) { return item.size(); });
    if (key == u"name"_s)
        return rowsByText(items, isAscending, &FileItem::name);
    if (key == u"type"_s)
        return rowsByText(items, isAscending, &FileItem::type);
    if (key == u"location"_s)
        return rowsByText(items, isAscending, &FileItem::location);
    if (key == u"dateModified"_s)
        return rowsByDate(items, isAscending, &FileItem::dateModified);
    if (key == u"dateCreated"_s)
        return rowsByDate(items, isAscending, &FileItem::dateCreated);
    if (key == u"dateAccessed"_s)
        return rowsByDate(items, isAscending, &FileItem::dateAccessed);
    return {};
}

} // namespace pagestack
