#pragma once

#include "filelist/FileItem.h"

#include <QList>
#include <QString>

#include <memory>

namespace pagestack {

/// What the list is sorted by. A `key` that names no property of FileItem, the empty one too, is no
/// order at all.
struct SortOrder
{
    QString key; ///< "isSelected", "name", "pages", "size", "type", "dateModified", ...
    bool isAscending = true;

    friend bool operator==(const SortOrder&, const SortOrder&) = default;
};

/// The rows of `items` in sorted order: the item of the new row i is now in row result[i]. Numbers
/// sort as numbers, dates as dates with unknown ones first, texts as people of the user's language
/// sort them: without regard to case, digits as numbers. Equal items keep their order, in both
/// directions. Each property is read once an item. Empty when `order` is none or the items are
/// sorted already.
///
/// Any thread, as long as nobody changes the items meanwhile. Sorting by a date asks the file
/// system about each file, on as many threads as there are processors.
QList<int> sortedRows(const QList<std::shared_ptr<FileItem>>& items, const SortOrder& order);

} // namespace pagestack
