#pragma once

#include "engine/job/PageWorkerPool.h"
#include "engine/options/RunOptions.h"
#include "engine/plan/OutputFile.h"
#include "engine/plan/OutputNames.h"

#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace pagestack {

class MirroredFolders;
class Settings;

/// Lets worker threads prepare the pages that come next in a run. Only the job's thread may use
/// this class; it takes documents and pages strictly in the order of the plan, and puts them in
/// place itself.
///
/// The plan must be free of hazards (see RunPlan): no output changes what a later page is read from
/// or where it goes. So the results are those of a run without workers.
///
/// Memory, time and open files for a page do not depend on the number of pages and sources: only a
/// few pages for each worker are looked at ahead.
class PagePrefetcher
{
public:
    using TargetFilter = std::function<bool(const QString& outputPath)>;
    using Flag = PageWorkerPool::Flag;

    /// Prepares with `workers` threads what `plan`, `settings` and `options` ask for, except for
    /// targets that `isWanted`, where there is one, refuses. Those that are idle, out of `threads`,
    /// help with large pages. `settings`, `threads` and `folders` are borrowed; for `isRunning` see
    /// PageWorkerPool.
    PagePrefetcher(QList<OutputFile> plan, const Settings& settings, RunOptions options,
                   int workers, SpareThreads& threads, MirroredFolders& folders,
                   TargetFilter isWanted, Flag isRunning);

    /// Ends the workers; what was not taken is removed.
    ~PagePrefetcher();
    PagePrefetcher(const PagePrefetcher&) = delete;
    PagePrefetcher& operator=(const PagePrefetcher&) = delete;

    /// The turn of an item has come, and the outputs of those before it are in place: its source.
    /// Throws std::runtime_error as TiffDocument does.
    std::shared_ptr<TiffDocument> open(PlanPlace place);

    /// The turn of a page has come, and the outputs of those before it are in place: what was made
    /// of it, which may be nothing. `document` is the one that was opened last; of another one
    /// there is nothing. `page` counts from 1.
    PrefetchedPage take(const TiffDocument& document, int page);

    /// Gives back the disk space, memory and open files of what was prepared ahead of the item or
    /// page whose turn it is: those pages are made in their turn. False when there was nothing.
    bool dropAhead();

    /// As RunTogether, by the workers that are idle.
    void runTogether(int mostThreads, const std::function<void()>& work)
    {
        m_workers.runTogether(mostThreads, work);
    }

    /// As RunLater, by the workers.
    bool runLater(std::function<void()> work) { return m_workers.runLater(std::move(work)); }

private:
    /// An item, when its page is 0, or a page that is looked at ahead.
    struct Step
    {
        PlanPlace place;
        int page = 0;
        std::shared_ptr<SharedSource> source;
        std::shared_ptr<PageTask> task; ///< null: not prepared
    };

    bool isBefore(const Step& step, PlanPlace place, int page) const;
    void moveTo(PlanPlace place, int page);
    void lookAhead();
    bool lookAtNext();
    void lookAtItem(const OutputFile& output, const FileItem& item);
    void lookAtPage(const OutputFile& output, int page);
    void startAt(PlanPlace place);
    void beginPages();
    bool isWanted(const QString& path) const;

    const QList<OutputFile> m_plan;
    const Settings& m_settings;
    const RunOptions m_options;
    const OutputNames m_names;
    SpareThreads& m_threads;
    MirroredFolders& m_folders;
    const TargetFilter m_isWanted;
    const bool m_putsAhead; ///< files get their names before their turn
    const Flag m_isRunning;
    const std::size_t m_mostSteps;

    std::deque<Step> m_steps; ///< from the one whose turn it is on
    const TiffDocument* m_document = nullptr; ///< opened last; only compared
    PlanPlace m_place; ///< of `m_document`
    bool m_hasBegun = false; ///< its pages' turn has come

    std::vector<std::shared_ptr<PageTask>> m_found; ///< by the look ahead under way

    // What is to be looked at next.
    PlanPlace m_nextPlace;
    int m_nextPage = 0; ///< 0: the item
    QList<int> m_pages; ///< of the item, that are converted
    std::shared_ptr<SharedSource> m_source;
    bool m_isSourcePrepared = true; ///< it is of use to prepare pages of this source

    PageWorkerPool m_workers; ///< last: its threads end before the rest does
};

} // namespace pagestack
