#pragma once

#include "filelist/FileList.h"

#include <QList>
#include <QString>

namespace pagestack {

/// The rows of the items whose name contains `text`, whatever its case; with a "/" in `text`, whose
/// whole path does. Ascending; none for an empty text.
QList<int> rowsWithName(const FileList::Items& items, const QString& text);

} // namespace pagestack
