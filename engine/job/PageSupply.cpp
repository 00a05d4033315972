#include "engine/job/PageSupply.h"

#include "engine/files/PosixFile.h"
#include "engine/job/Process.h"
#include "engine/job/SourceFindings.h"
#include "engine/plan/RunPlan.h"
#include "engine/threads/Capacity.h"

#include <algorithm>

namespace pagestack {

namespace {

    bool hasSeveralPages(const QList<OutputFile>& plan)
    {
        int pages = 0;
        for (const OutputFile& output : plan)
            for (const std::shared_ptr<FileItem>& item : output.fileItems) {
                pages += std::min(item->pages(), 2);
                if (pages > 1)
                    return true;
            }
        return false;
    }

} // namespace

PageSupply::PageSupply(const Process& job, const RunSetup& options)
    : m_job(job)
    , m_options(options)
    , m_jobs(options.jobs > 0 ? options.jobs : jobsWithin(usableCores(), memoryLimitBytes()))
    , m_threads(m_jobs)
    , m_folders(options.choices.mirrorsFolders ? job.settings()->outputFolderPath() : QString())
{
}

PageSupply::~PageSupply() = default;

void PageSupply::prepare(const QList<OutputFile>& plan)
{
    if (m_jobs == 1 || !hasSeveralPages(plan))
        return;
    const Settings& settings = *m_job.settings();
    const auto isCombining = [this] { return m_job.isCombining(); };
    const auto planned = [&] {
        return RunPlan(plan, settings, m_options.choices, RunPlan::Numbering::None, {},
                       isCombining);
    };
    if (!(m_options.hasHazards ? *m_options.hasHazards : planned().hasHazards()))
        m_prefetcher
            = std::make_unique<PagePrefetcher>(plan, settings, m_options.choices, m_jobs, m_threads,
                                               m_folders, m_options.targetFilter, isCombining);
}

QString PageSupply::makeFolderFor(const QString& outputPath)
{
    try {
        m_folders.makeFor(outputPath);
        return {};
    } catch (const std::exception& error) {
        return reasonOf(error);
    }
}

std::shared_ptr<TiffDocument> PageSupply::open(const QString& path, PlanPlace place)
{
    return m_prefetcher ? m_prefetcher->open(place)
                        : std::make_shared<TiffDocument>(path, m_options.choices.treatment);
}

PrefetchedPage PageSupply::take(const TiffDocument& document, int page)
{
    return m_prefetcher ? m_prefetcher->take(document, page) : PrefetchedPage {};
}

RunTogether PageSupply::helpers()
{
    if (!m_prefetcher)
        return {};
    return [this](int mostThreads, const std::function<void()>& work) {
        m_prefetcher->runTogether(mostThreads, work);
    };
}

RunLater PageSupply::laterHelp()
{
    if (!m_prefetcher)
        return {};
    return [this](std::function<void()> work) { return m_prefetcher->runLater(std::move(work)); };
}

QString PageSupply::withRoom(const std::function<QString()>& attempt)
{
    const QString reason = attempt();
    const bool isAgain = !reason.isNull() && m_prefetcher && isWantOfRoom(reason.toStdString())
        && m_prefetcher->dropAhead();
    return isAgain ? attempt() : reason;
}

} // namespace pagestack
