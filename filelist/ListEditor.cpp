#include "filelist/ListEditor.h"

#include <QHash>
#include <QUndoCommand>

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

namespace pagestack {

namespace {

    constexpr int longestHistory = 100; // a step may hold the order of the whole list

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

    /// The order with each of `rows`, which ascend, one place higher; empty when one cannot be.
    QList<int> movedUp(const QList<int>& rows, int count)
    {
        if (rows.isEmpty() || rows.first() == 0)
            return {};
        QList<int> order = rowsInOrder(count);
        for (const int row : rows)
            order.swapItemsAt(row - 1, row);
        return order;
    }

    QList<int> movedDown(const QList<int>& rows, int count)
    {
        if (rows.isEmpty() || rows.last() == count - 1)
            return {};
        QList<int> order = rowsInOrder(count);
        for (auto row = rows.crbegin(); row != rows.crend(); ++row)
            order.swapItemsAt(*row, *row + 1);
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

} // namespace

/// One step of the history. `apply` does it or takes it back and gives the files that it concerned.
class ListStep : public QUndoCommand
{
public:
    ListStep(FileTableModel& model, const QString& text)
        : QUndoCommand(text)
        , m_model(model)
    {
    }

    void undo() override { step(false); }
    void redo() override { step(true); }
    void setObserver(std::function<void(const QList<int>& rows)> observer)
    {
        m_observer = std::move(observer);
    }

protected:
    virtual Items apply(bool isForward) = 0;
    FileTableModel& model() const { return m_model; }
    const FileList& files() const { return m_model.files(); }

private:
    void step(bool isForward)
    {
        const Items concerned = apply(isForward);
        if (m_observer) // not yet when the step is made
            m_observer(files().rowsOf(concerned));
    }

    FileTableModel& m_model;
    std::function<void(const QList<int>& rows)> m_observer;
};

namespace {

    class MarkStep : public ListStep
    {
    public:
        MarkStep(FileTableModel& model, Items checked, Items unchecked)
            : ListStep(model, textFor(checked, unchecked))
            , m_checked(std::move(checked))
            , m_unchecked(std::move(unchecked))
        {
        }

    protected:
        Items apply(bool isForward) override
        {
            model().mark(files().rowsOf(m_checked), isForward ? Mark::Check : Mark::Uncheck);
            model().mark(files().rowsOf(m_unchecked), isForward ? Mark::Uncheck : Mark::Check);
            return m_checked + m_unchecked;
        }

    private:
        static QString textFor(const Items& checked, const Items& unchecked)
        {
            const int count = static_cast<int>(checked.size() + unchecked.size());
            if (unchecked.isEmpty())
                return ListEditor::tr("Tick %n File(s)", nullptr, count);
            if (checked.isEmpty())
                return ListEditor::tr("Untick %n File(s)", nullptr, count);
            return ListEditor::tr("Invert Ticks of %n File(s)", nullptr, count);
        }

        Items m_checked; ///< those that the step ticks
        Items m_unchecked;
    };

    class RemoveStep : public ListStep
    {
    public:
        RemoveStep(FileTableModel& model, const QList<int>& rows, const QString& text)
            : ListStep(model, text)
            , m_items(itemsAt(model.files(), rows))
        {
            for (const int row : rows)
                m_places.append({ row, model.files().at(row) });
        }

    protected:
        Items apply(bool isForward) override
        {
            if (!isForward)
                model().insertItems(m_places);
            else
                model().removeItems(files().rowsOf(m_items));
            return m_items;
        }

    private:
        Items m_items;
        QList<FileList::Place> m_places;
    };

    class MoveStep : public ListStep
    {
    public:
        MoveStep(FileTableModel& model, const QList<int>& rows, bool isUp)
            : ListStep(
                model,
                isUp ? ListEditor::tr("Move %n File(s) Up", nullptr, static_cast<int>(rows.size()))
                     : ListEditor::tr("Move %n File(s) Down", nullptr,
                                      static_cast<int>(rows.size())))
            , m_items(itemsAt(model.files(), rows))
            , m_isUp(isUp)
        {
        }

    protected:
        Items apply(bool isForward) override
        {
            const QList<int> rows = files().rowsOf(m_items);
            model().reorder(isForward == m_isUp ? movedUp(rows, files().count())
                                                : movedDown(rows, files().count()));
            return m_items;
        }

    private:
        Items m_items;
        bool m_isUp;
    };

    class SortStep : public ListStep
    {
    public:
        struct State
        {
            Items items;
            SortOrders orders;
        };
        using Announce = std::function<void(const SortOrders& orders)>;

        SortStep(FileTableModel& model, State before, State after, Announce announce)
            : ListStep(model, textFor(after.orders))
            , m_before(std::move(before))
            , m_after(std::move(after))
            , m_announce(std::move(announce))
        {
        }

    protected:
        Items apply(bool isForward) override
        {
            const State& wanted = isForward ? m_after : m_before;
            model().reorder(orderLike(wanted.items, files().items()));
            m_announce(wanted.orders);
            return {};
        }

    private:
        static QString textFor(const SortOrders& orders)
        {
            return orders.value(0).isAscending ? ListEditor::tr("Sort")
                                               : ListEditor::tr("Sort Backwards");
        }

        State m_before;
        State m_after;
        Announce m_announce;
    };

} // namespace

ListEditor::ListEditor(FileTableModel& model, QObject* parent)
    : QObject(parent)
    , m_model(model)
{
    m_history.setUndoLimit(longestHistory);
    connect(&m_model, &FileTableModel::checkMarkEdited, this, &ListEditor::rememberEdit);
}

void ListEditor::push(ListStep* step)
{
    m_history.push(step); // does it
    step->setObserver([this](const QList<int>& rows) { emit stepped(rows); });
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
    if (!checked.isEmpty() || !unchecked.isEmpty())
        push(new MarkStep(m_model, checked, unchecked));
}

/// The mark is as the user set it already; pushing the step sets it once more.
void ListEditor::rememberEdit(int row)
{
    const FileList::Item& item = m_model.files().at(row);
    push(item->isSelected() ? new MarkStep(m_model, { item }, {})
                            : new MarkStep(m_model, {}, { item }));
}

void ListEditor::remove(const QList<int>& rows, const QString& text)
{
    if (!rows.isEmpty())
        push(new RemoveStep(m_model, rows, text));
}

bool ListEditor::moveUp(const QList<int>& rows)
{
    if (rows.isEmpty() || rows.first() == 0)
        return false;
    push(new MoveStep(m_model, rows, true));
    return true;
}

bool ListEditor::moveDown(const QList<int>& rows)
{
    if (rows.isEmpty() || rows.last() == m_model.files().count() - 1)
        return false;
    push(new MoveStep(m_model, rows, false));
    return true;
}

void ListEditor::sort(const QList<int>& rows, const SortOrders& before, const SortOrders& after)
{
    if (rows.isEmpty())
        return; // in that order already
    const FileList& files = m_model.files();
    push(new SortStep(m_model, { files.items(), before }, { itemsAt(files, rows), after },
                      [this](const SortOrders& orders) { emit sorted(orders); }));
}

} // namespace pagestack
