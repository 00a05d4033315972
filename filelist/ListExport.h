#pragma once

#include "filelist/FileList.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace pagestack {

/// The list as text in UTF-8: a line of titles and a line for each item, ticked or not, in the
/// order of the list, eight fields with tabs between them, a ninth with the pages to convert where
/// these are chosen for any file, each line ending in a line feed. Dates are in UTC ("2013-03-05
/// 16:07:09 +0000"), "(null)" where there is none. A tab or a line feed in a file's name is written
/// as it is.
///
/// Reads the dates of every file. Any thread, as long as nobody changes the items meanwhile.
/// Returns nothing as soon as `goesOn`, asked on any thread, is false.
QByteArray exportText(const FileList::Items& items, const std::function<bool()>& goesOn);

/// Replaces the file at `path` by `text` as a whole or not at all. Throws std::runtime_error with
/// the reason.
void writeExport(const QString& path, const QByteArray& text);

} // namespace pagestack
