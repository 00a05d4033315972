#pragma once

#include "engine/job/PagePrefetcher.h"
#include "engine/plan/MirroredFolders.h"
#include "engine/threads/RunLater.h"
#include "engine/threads/RunTogether.h"
#include "engine/threads/SpareThreads.h"

#include <functional>
#include <memory>

namespace pagestack {

class Process;
struct RunSetup;

/// Where a run gets its sources and pages from: worker threads that prepare them, or nobody. On the
/// job's thread.
class PageSupply
{
public:
    /// Both are borrowed.
    PageSupply(const Process& job, const RunSetup& options);
    ~PageSupply();
    PageSupply(const PageSupply&) = delete;
    PageSupply& operator=(const PageSupply&) = delete;

    /// Lets worker threads prepare what the outputs of `plan` need, where that is of use and does
    /// no harm. They leave alone the targets that the target filter refuses.
    void prepare(const QList<OutputFile>& plan);

    /// The source whose turn has come. Throws std::runtime_error as TiffDocument does.
    std::shared_ptr<TiffDocument> open(const QString& path, PlanPlace place);

    /// What was prepared of the page whose turn has come; may be nothing.
    PrefetchedPage take(const TiffDocument& document, int page);

    /// Null when `attempt`, which gives the reason of its failure, succeeds, be it in a second try
    /// for which what was prepared ahead made room: a run with one thread would have had it.
    QString withRoom(const std::function<QString()>& attempt);

    /// Makes the folder of an output whose turn has come, where it is one of those that are
    /// mirrored. Null, or the reason why it cannot be made.
    QString makeFolderFor(const QString& outputPath);

    SpareThreads& threads() { return m_threads; }

    /// The workers; empty without them.
    RunTogether helpers();
    RunLater laterHelp();

private:
    const Process& m_job;
    const RunSetup& m_options;
    const int m_jobs;
    SpareThreads m_threads;
    MirroredFolders m_folders;
    std::unique_ptr<PagePrefetcher> m_prefetcher; ///< null when the job's thread does everything
};

} // namespace pagestack
