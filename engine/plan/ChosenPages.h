#pragma once

#include <QList>

namespace pagestack {

class FileItem;
struct RunOptions;

/// The pages of `item` that a run with `options` converts, counted from 1, in order: those that are
/// chosen for the file or, where nothing is, for the run, without those that are left out. Reads
/// nothing.
QList<int> chosenPages(const FileItem& item, const RunOptions& options);

/// How many.
int chosenPageCount(const FileItem& item, const RunOptions& options);

/// What is asked of `item` that it lacks, see PageChoice::missing.
QString missingPages(const FileItem& item, const RunOptions& options);

} // namespace pagestack
