#pragma once

#include <QHash>
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

/// The same for many items, quickly, also where pages are chosen for the run.
class ChosenPageCounter
{
public:
    /// `options` are borrowed.
    explicit ChosenPageCounter(const RunOptions& options)
        : m_options(options)
    {
    }
    int count(const FileItem& item);

private:
    const RunOptions& m_options;
    QHash<int, int> m_known; ///< by the pages of an item without a choice of its own
};

/// What is asked of `item` that it lacks, see PageChoice::missing.
QString missingPages(const FileItem& item, const RunOptions& options);

} // namespace pagestack
