#include "filelist/SortOrder.h"

#include "filelist/InParallel.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>
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

    /// Rows in the order of the keys so far.
    class Ranking
    {
    public:
        explicit Ranking(const Items& items)
            : m_items(items)
            , m_rows(items.size())
        {
            std::iota(m_rows.begin(), m_rows.end(), 0);
            if (items.size() > 1)
                m_ties.push_back({ 0, static_cast<int>(items.size()) });
        }

        /// The items that are equal to others so far.
        Items tiedItems() const;
        /// Sorts each group of equal items by `keys`, which are those of tiedItems().
        template <typename Key>
        void refine(const std::vector<Key>& keys, bool isAscending);

        const QList<int>& rows() const { return m_rows; }

    private:
        struct Tie
        {
            int first; ///< place in m_rows
            int count;
        };

        const Items& m_items;
        QList<int> m_rows;
        std::vector<Tie> m_ties;
    };

    Items Ranking::tiedItems() const
    {
        Items items;
        for (const auto& [first, count] : m_ties)
            for (int place = first; place < first + count; ++place)
                items.append(m_items.at(m_rows.at(place)));
        return items;
    }

    template <typename Key>
    void Ranking::refine(const std::vector<Key>& keys, bool isAscending)
    {
        std::vector<Tie> left;
        auto key = keys.cbegin();
        for (const auto& [first, count] : m_ties) {
            const auto isBefore
                = [&](int a, int b) { return isAscending ? key[a] < key[b] : key[b] < key[a]; };
            std::vector<int> order(static_cast<std::size_t>(count));
            std::iota(order.begin(), order.end(), 0);
            std::stable_sort(order.begin(), order.end(), isBefore);
            const QList<int> before = m_rows.sliced(first, count);
            int start = 0;
            for (int i = 0; i < count; ++i) {
                const int place = order[static_cast<std::size_t>(i)];
                m_rows[first + i] = before.at(place);
                if (i + 1 < count && !isBefore(place, order[static_cast<std::size_t>(i) + 1]))
                    continue;
                if (i > start)
                    left.push_back({ first + start, i + 1 - start });
                start = i + 1;
            }
            key += count;
        }
        m_ties = std::move(left);
    }

    template <typename KeyOf>
    void refineBy(Ranking& ranking, bool isAscending, KeyOf keyOf)
    {
        const Items items = ranking.tiedItems();
        std::vector<decltype(keyOf(std::declval<const FileItem&>()))> keys;
        keys.reserve(static_cast<std::size_t>(items.size()));
        for (const auto& item : items)
            keys.push_back(keyOf(*item));
        ranking.refine(keys, isAscending);
    }

    void refineByText(Ranking& ranking, bool isAscending, QString (FileItem::*text)() const)
    {
        const QCollator order = collator();
        refineBy(ranking, isAscending,
                 [&](const FileItem& item) { return order.sortKey((item.*text)()); });
    }

    // The file system is asked about several files at a time.
    void refineByDate(Ranking& ranking, bool isAscending, QDateTime FileDates::*date,
                      const SortReading& reading)
    {
        const Items items = ranking.tiedItems();
        std::vector<qint64> keys(static_cast<std::size_t>(items.size()));
        inParallel(static_cast<int>(items.size()), [&](int, int first, int end) {
            for (int i = first; i < end && reading.isWanted(); ++i)
                keys[static_cast<std::size_t>(i)]
                    = milliseconds(reading.readDates(*items.at(i)).*date);
        });
        ranking.refine(keys, isAscending);
    }

    QDateTime FileDates::*dateNamedBy(const QString& key)
    {
        if (key == u"dateModified"_s)
            return &FileDates::modified;
        if (key == u"dateCreated"_s)
            return &FileDates::created;
        return key == u"dateAccessed"_s ? &FileDates::accessed : nullptr;
    }

    void refineByOrder(Ranking& ranking, const SortOrder& order, const SortReading& reading)
    {
        const auto& [key, isAscending] = order;
        if (QDateTime FileDates::*const date = dateNamedBy(key))
            refineByDate(ranking, isAscending, date, reading);
        else if (key == u"status"_s && reading.stateOf)
            refineBy(ranking, isAscending, reading.stateOf);
        else if (key == u"isSelected"_s)
            refineBy(ranking, isAscending,
                     [](const FileItem& item) { return static_cast<int>(item.isSelected()); });
        else if (key == u"pages"_s)
            refineBy(ranking, isAscending, [](const FileItem& item) { return item.pages(); });
        else if (key == u"size"_s)
            refineBy(ranking, isAscending, [](const FileItem& item) { return item.size(); });
        else if (key == u"name"_s)
            refineByText(ranking, isAscending, &FileItem::name);
        else if (key == u"pageChoice"_s)
            refineByText(ranking, isAscending, &FileItem::pageChoice);
        else if (key == u"type"_s)
            refineByText(ranking, isAscending, &FileItem::type);
        else if (key == u"location"_s)
            refineByText(ranking, isAscending, &FileItem::location);
    }

} // namespace

bool needsDates(const SortOrders& orders)
{
    return std::any_of(orders.cbegin(), orders.cend(),
                       [](const SortOrder& order) { return dateNamedBy(order.key) != nullptr; });
}

QList<int> sortedRows(const Items& items, const SortOrders& orders, const SortReading& reading)
{
    Ranking ranking(items);
    for (const SortOrder& order : orders) {
        refineByOrder(ranking, order, reading);
        if (!reading.isWanted())
            return {};
    }
    const QList<int>& rows = ranking.rows();
    return std::is_sorted(rows.cbegin(), rows.cend()) ? QList<int>() : rows;
}

} // namespace pagestack
