#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "filelist/ListEditor.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "ui_MainWindow.h"

namespace pagestack {

using namespace Qt::StringLiterals;

/// Wanted until the next Cancel or the end of the program.
DateReading PagestackAppDelegate::dateReading() const
{
    const auto isWanted = [this, cancels = m_cancelCount.load()] {
        return m_cancelCount == cancels && !m_isTerminating;
    };
    return { m_services.readDates, isWanted };
}

void PagestackAppDelegate::sortDescriptorsDidChange(const SortOrders& oldOrders)
{
    const SortOrders orders = m_ui->mainTableView->currentSortOrders();
    if (m_worker)
        m_ui->mainTableView->setSortOrders(oldOrders);
    else if (m_files.count() < 2 || !needsDates(orders))
        m_editor->sort(sortedRows(m_files.items(), orders), oldOrders, orders);
    else
        sortBesideTheWindow(oldOrders, orders);
}

/// Dates may come from another computer. The window is busy until they are there.
void PagestackAppDelegate::sortBesideTheWindow(const SortOrders& oldOrders,
                                               const SortOrders& orders)
{
    startBusy([this, items = m_files.items(), oldOrders, orders, dates = dateReading()] {
        bool isDone = false;
        try {
            const QList<int> rows = sortedRows(items, orders, dates);
            callOnMainThread([&] {
                isDone = dates.isWanted();
                if (isDone)
                    m_editor->sort(rows, oldOrders, orders);
            });
        } catch (const std::exception& error) {
            systemLogError(u"tableView:sortDescriptorsDidChange:"_s, error);
        }
        if (!isDone)
            callOnMainThread([&] { m_ui->mainTableView->setSortOrders(oldOrders); });
    });
}

/// On the loader's thread; only the new order goes to the main thread. A list that was left as the
/// files came has no order.
void PagestackAppDelegate::sortAsTable()
{
    CustomTableView* table = m_ui->mainTableView;
    SortOrders orders;
    FileList::Items items;
    callOnMainThread([&] {
        orders = table->currentSortOrders();
        items = m_files.items();
    });
    const DateReading dates = dateReading();
    const QList<int> rows = sortedRows(items, orders, dates);
    callOnMainThread([&] {
        if (dates.isWanted())
            m_tableModel->reorder(rows);
        else if (!m_isTerminating) // the next start has the same columns
            table->setSortOrders({});
    });
}

} // namespace pagestack
