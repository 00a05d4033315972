#include "filelist/ListEditor.h"

#include <QHash>
#include <QScopedValueRollback>
#include <QUndoCommand>

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <utility>

namespace pagestack {

namespace {

    constexpr int longestHistory = 100; // a step may hold the order of the whole list
    constexpr qsizetype mostToldAtOnce = 10000; // more would hold up the window

    using Items = FileList::Items;
    using Mark = FileTableModel::Mark;

    Items itemsAt(const FileList& files, const QList<int>& rows)
    {
        Items items;
        items.reserve(rows.size());
        for (const int row : rows)
            items.append(files.at(row));
        return items;
    }

    QList<int> rowsInOrder(int count)
    {
        QList<int> rows(count);
        std::iota(rows.begin(), rows.end(), 0);
        return rows;
    }

    bool canMove(const QList<int>& rows, bool isUp, int count)
    {
        return !rows.isEmpty() && (isUp ? rows.first() > 0 : rows.last() < count - 1);
    }

    /// The order with each of `rows`, which ascend, one place higher or lower; empty when one of
    /// them has no place to go to.
    QList<int> moved(const QList<int>& rows, bool isUp, int count)
    {
        if (!canMove(rows, isUp, count))
            return {};
        QList<int> order = rowsInOrder(count);
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const int row = rows.at(isUp ? i : rows.size() - 1 - i);
            order.swapItemsAt(row, isUp ? row - 1 : row + 1);
        }
        return order;
    }

    /// The order of `items` that follows `wanted`; items that are not in `wanted` come last.
    QList<int> orderLike(const Items& wanted, const Items& items)
    {
        QHash<const FileItem*, int> places;
        places.reserve(wanted.size());
        for (int place = 0; place < wanted.size(); ++place)
            places.insert(wanted.at(place).get(), place);
        QList<int> keys;
        keys.reserve(items.size());
        for (const FileList::Item& item : items)
            keys.append(places.value(item.get(), static_cast<int>(wanted.size())));
        QList<int> rows = rowsInOrder(static_cast<int>(items.size()));
        std::stable_sort(rows.begin(), rows.end(),
                         [&keys](int a, int b) { return keys.at(a) < keys.at(b); });
        return rows;
    }

    /// The order of `files` in which those of `items` that it has are at their `places`, which
    /// ascend, and the others around them as before.
    QList<int> orderWith(const Items& items, const QList<int>& places, const FileList& files)
    {
        QHash<const FileItem*, int> placeOf;
        for (int i = 0; i < items.size(); ++i)
            placeOf.insert(items.at(i).get(), places.at(i));
        QList<std::pair<int, int>> moved; // place and row
        QList<int> order;
        order.reserve(files.count());
        for (int row = 0; row < files.count(); ++row) {
            if (const auto place = placeOf.constFind(files.at(row).get()); place != placeOf.cend())
                moved.append({ *place, row });
            else
                order.append(row);
        }
        std::ranges::sort(moved);
        QList<int> merged;
        merged.reserve(files.count());
        auto other = order.cbegin();
        for (const auto& [place, row] : std::as_const(moved)) {
            while (merged.size() < place && other != order.cend())
                merged.append(*other++);
            merged.append(row);
        }
        std::copy(other, order.cend(), std::back_inserter(merged));
        return merged;
    }

    QString markText(qsizetype checked, qsizetype unchecked)
    {
        const int count = static_cast<int>(checked + unchecked);
        if (unchecked == 0)
            return ListEditor::tr("Tick %n File(s)", nullptr, count);
        if (checked == 0)
            return ListEditor::tr("Untick %n File(s)", nullptr, count);
        return ListEditor::tr("Invert Ticks of %n File(s)", nullptr, count);
    }

    /// One step of the history.
    class ListStep : public QUndoCommand
    {
    public:
        using Step = std::function<void(bool isForward)>;

        ListStep(const QString& text, Step step)
            : QUndoCommand(text)
            , m_step(std::move(step))
        {
        }

        void undo() override { m_step(false); }
        void redo() override { m_step(true); }

    private:
        Step m_step;
    };

} // namespace

ListEditor::ListEditor(FileTableModel& model, QObject* parent)
    : QObject(parent)
    , m_model(model)
    , m_nextTurn(0, [this] { tellStep(); })
{
    m_history.setUndoLimit(longestHistory);
    connect(&m_model, &FileTableModel::checkMarkEdited, this, &ListEditor::rememberEdit);
    connect(&m_model, &FileTableModel::pageChoiceEdited, this, &ListEditor::rememberPageChoice);
}

void ListEditor::push(const QString& text, const Items& concerned, const Step& step)
{
    const QScopedValueRollback isNew(m_isNewStep, true);
    m_history.push(new ListStep(text, [this, concerned, step](bool isForward) { // does it
        step(isForward);
        if (m_isNewStep) {
            m_nextTurn.stop(); // what an earlier step concerned is no news any more
            m_concerned.clear();
            return;
        }
        m_concerned = concerned;
        if (concerned.size() > mostToldAtOnce)
            m_nextTurn.start();
        else
            tellStep();
    }));
}

void ListEditor::tellStep()
{
    m_nextTurn.stop(); // of an earlier step
    emit stepped(m_model.files().rowsOf(std::exchange(m_concerned, {})));
}

void ListEditor::mark(const QList<int>& rows, Mark mark)
{
    Items checked;
    Items unchecked;
    for (const int row : rows) {
        const FileList::Item& item = m_model.files().at(row);
        if (!item->isSelected() && mark != Mark::Uncheck)
            checked.append(item);
        else if (item->isSelected() && mark != Mark::Check)
            unchecked.append(item);
    }
    pushMarks(checked, unchecked);
}

void ListEditor::tickOnly(const QList<int>& rows)
{
    Items checked;
    Items unchecked;
    auto next = rows.cbegin();
    for (int row = 0; row < m_model.files().count(); ++row) {
        const bool isWanted = next != rows.cend() && *next == row;
        next += isWanted ? 1 : 0;
        const FileList::Item& item = m_model.files().at(row);
        if (item->isSelected() != isWanted)
            (isWanted ? checked : unchecked).append(item);
    }
    pushMarks(checked, unchecked);
}

/// The mark is as the user set it already; pushing the step sets it once more.
void ListEditor::rememberEdit(int row)
{
    const FileList::Item& item = m_model.files().at(row);
    item->isSelected() ? pushMarks({ item }, {}) : pushMarks({}, { item });
}

/// As above: it is chosen already.
void ListEditor::rememberPageChoice(int row, const QString& before)
{
    const Items items { m_model.files().at(row) };
    push(tr("Choose Pages"), items, [=, this, after = items.first()->pageChoice()](bool isForward) {
        m_model.choosePages(m_model.files().rowsOf(items), isForward ? after : before);
    });
}

void ListEditor::pushMarks(const Items& checked, const Items& unchecked)
{
    if (checked.isEmpty() && unchecked.isEmpty())
        return;
    push(markText(checked.size(), unchecked.size()), checked + unchecked,
         [=, this](bool isForward) {
             const FileList& files = m_model.files();
             m_model.mark(files.rowsOf(checked), isForward ? Mark::Check : Mark::Uncheck);
             m_model.mark(files.rowsOf(unchecked), isForward ? Mark::Uncheck : Mark::Check);
         });
}

void ListEditor::remove(const QList<int>& rows, const QString& text)
{
    if (rows.isEmpty())
        return;
    const Items items = itemsAt(m_model.files(), rows);
    push(text, items, [=, this](bool isForward) {
        if (isForward)
            m_model.removeItems(m_isNewStep ? rows : m_model.files().rowsOf(items));
        else
            m_model.insertItems(items, rows);
    });
}

bool ListEditor::move(const QList<int>& rows, bool isUp, const SortOrders& before)
{
    const FileList& files = m_model.files();
    if (!canMove(rows, isUp, files.count()))
        return false;
    const int count = static_cast<int>(rows.size());
    const Items items = itemsAt(files, rows);
    push(isUp ? tr("Move %n File(s) Up", nullptr, count)
              : tr("Move %n File(s) Down", nullptr, count),
         items, [=, this, &files](bool isForward) {
             m_model.reorder(moved(files.rowsOf(items), isForward == isUp, files.count()));
             emit sorted(isForward ? SortOrders() : before);
         });
    return true;
}

void ListEditor::moveTo(const QList<int>& rows, int target, const SortOrders& before)
{
    const FileList& files = m_model.files();
    const auto movedAbove = std::ranges::lower_bound(rows, target) - rows.cbegin();
    QList<int> places(rows.size());
    std::iota(places.begin(), places.end(), target - static_cast<int>(movedAbove));
    if (places == rows)
        return;
    const Items items = itemsAt(files, rows);
    push(tr("Move %n File(s)", nullptr, static_cast<int>(rows.size())), items,
         [=, this, &files](bool isForward) {
             m_model.reorder(orderWith(items, isForward ? places : rows, files));
             emit sorted(isForward ? SortOrders() : before);
         });
}

void ListEditor::sort(const QList<int>& rows, const SortOrders& before, const SortOrders& after)
{
    if (rows.isEmpty())
        return; // in that order already
    const FileList& files = m_model.files();
    const Items oldItems = files.items();
    m_model.reorder(rows);
    // The orders are kept as lists that the list itself shares, until it changes.
    push(after.value(0).isAscending ? tr("Sort") : tr("Sort Backwards"), {},
         [=, this, &files, newItems = files.items()](bool isForward) {
             if (!m_isNewStep)
                 m_model.reorder(orderLike(isForward ? newItems : oldItems, files.items()));
             emit sorted(isForward ? after : before);
         });
}

} // namespace pagestack
