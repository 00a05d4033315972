#pragma once

#include "filelist/RowStatus.h"
#include "filelist/ShownDates.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>

namespace pagestack {

/// An order of the list. A `key` that is not "status" and does not name a property of FileItem, the
/// empty one too, is ignored.
struct SortOrder
{
    QString key; ///< "isSelected", "name", "pages", "size", "type", "dateModified", ...
    bool isAscending = true;

    friend bool operator==(const SortOrder&, const SortOrder&) = default;
};

/// The first order decides, each further one among the files that are equal so far.
using SortOrders = QList<SortOrder>;

/// How a sort learns what the items do not hold.
struct SortReading
{
    ReadDates readDates = &FileItem::dates; ///< takes long for files on another computer
    /// Asked before each file; false ends the sort without a result. Any thread.
    std::function<bool()> isWanted = [] { return true; };
    std::function<RowStatus::State(const FileItem& item)> stateOf {}; ///< none: all are alike
};

/// Whether a sort may have to read dates.
bool needsDates(const SortOrders& orders);

/// The rows of `items` in sorted order: the item of the new row i is now in row result[i]. Numbers
/// sort as numbers, dates as dates with unknown ones first, texts as people of the user's language
/// sort them: without regard to case, digits as numbers. Equal items keep their order, in both
/// directions. A property is read once an item, and only where the orders before leave items
/// equal. Empty when `orders` are none, the items are sorted already or the sort is not wanted any
/// more.
///
/// Any thread, as long as nobody changes the items meanwhile. Sorting by a date asks the file
/// system about each file, on as many threads as there are processors.
QList<int> sortedRows(const QList<std::shared_ptr<FileItem>>& items, const SortOrders& orders,
                      const SortReading& reading = {});

} // namespace pagestack
