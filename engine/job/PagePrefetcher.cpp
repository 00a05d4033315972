#include "engine/job/PagePrefetcher.h"

#include "engine/plan/ChosenPages.h"
#include "engine/plan/MirroredFolders.h"
#include "engine/settings/Settings.h"

#include <QScopeGuard>

#include <algorithm>
#include <sys/resource.h>
#include <tuple>
#include <utility>

namespace pagestack {

namespace {

    // A source of one page takes two steps, and pages that take long may lie apart.
    constexpr std::size_t stepsAWorker = 12;
    constexpr std::size_t fewestSteps = 40;

    /// A step can hold its source and its output open. Most of what may be open is left to the
    /// rest of the program.
    std::size_t stepsAhead(int workers)
    {
        const std::size_t wanted
            = std::max(fewestSteps, stepsAWorker * static_cast<std::size_t>(workers));
        struct rlimit limit = {};
        if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
            return wanted;
        return std::clamp<std::size_t>(wanted, 1, std::max<std::size_t>(1, limit.rlim_cur / 8));
    }

} // namespace

PagePrefetcher::PagePrefetcher(QList<OutputFile> plan, const Settings& settings, RunOptions options,
                               int workers, SpareThreads& threads, MirroredFolders& folders,
                               TargetFilter isWanted, Flag isRunning)
    : m_plan(std::move(plan))
    , m_settings(settings)
    , m_options(std::move(options))
    , m_names(settings, m_options)
    , m_threads(threads)
    , m_folders(folders)
    , m_isWanted(std::move(isWanted))
    , m_putsAhead(!m_isWanted && !isKeptTogether(settings))
    , m_isRunning(isRunning)
    , m_mostSteps(stepsAhead(workers))
    , m_workers(workers, threads, std::move(isRunning))
{
}

PagePrefetcher::~PagePrefetcher() = default;

std::shared_ptr<TiffDocument> PagePrefetcher::open(PlanPlace place)
{
    moveTo(place, 0);
    if (m_steps.empty()) { // The run was cancelled: nothing is prepared any more.
        startAt({ m_plan.size(), 0 });
        m_document = nullptr;
        const FileItem& item = *m_plan.at(place.output).fileItems.at(place.item);
        return std::make_shared<TiffDocument>(item.localFile(), m_options.treatment);
    }
    const std::shared_ptr<SharedSource> source = m_steps.front().source;
    std::shared_ptr<TiffDocument> document = source->open();
    m_document = document.get();
    m_place = place;
    m_hasBegun = false;
    return document;
}

PrefetchedPage PagePrefetcher::take(const TiffDocument& document, int page)
{
    if (&document != m_document)
        return {};
    beginPages();
    moveTo(m_place, page);
    if (m_steps.empty() || m_steps.front().page != page || !m_steps.front().task)
        return {};
    const Step& step = m_steps.front();
    PrefetchedPage prepared = m_workers.take(*step.task);
    // The pages of a source are mostly alike, and to ask a worker for each costs more than to copy.
    if (step.task->needsNoEncoding && step.source == m_source
        && !m_options.treatment.keepsCompression)
        m_isSourcePrepared = false;
    return prepared;
}

/// Only once the source has begun may files of its pages have their names: what was there before is
/// noted then. Never where files that are there may be left alone: another run that does the same
/// would count on one that a cancel takes back.
void PagePrefetcher::beginPages()
{
    if (std::exchange(m_hasBegun, true) || !m_putsAhead)
        return;
    for (const Step& step : m_steps)
        if (step.task && step.place == m_place)
            m_workers.putAhead(*step.task);
}

bool PagePrefetcher::dropAhead()
{
    bool isDropped = false;
    for (const Step& step : m_steps)
        if (step.task)
            m_workers.drop(*step.task);
    m_workers.settle();
    for (Step& step : m_steps) {
        const bool isAhead = &step != &m_steps.front();
        isDropped = (step.task && isAhead) || isDropped;
        step.task.reset();
    }
    return isDropped;
}

bool PagePrefetcher::isBefore(const Step& step, PlanPlace place, int page) const
{
    return std::tie(step.place, step.page) < std::tie(place, page);
}

/// Forgets all before the page, or before the item when `page` is 0, whose turn it is, and looks as
/// far ahead as it goes.
void PagePrefetcher::moveTo(PlanPlace place, int page)
{
    while (!m_steps.empty() && isBefore(m_steps.front(), place, page)) {
        if (m_steps.front().task)
            m_workers.drop(*m_steps.front().task);
        m_steps.pop_front();
    }
    if (m_nextPlace < place)
        startAt(place);
    else if (m_nextPlace == place)
        m_nextPage = std::max(m_nextPage, page);
    lookAhead();
}

void PagePrefetcher::startAt(PlanPlace place)
{
    m_nextPlace = place;
    m_nextPage = 0;
}

void PagePrefetcher::lookAhead()
{
    // Several at a time: to wake a worker for each costs more than a small page.
    if (m_steps.size() > m_mostSteps / 2)
        return;
    const auto hand = qScopeGuard([this] { // whatever ends the look ahead: they are waited for
        m_workers.add(m_found);
        m_found.clear();
    });
    while (m_isRunning() && m_steps.size() < m_mostSteps && lookAtNext()) { }
}

/// False when nothing follows.
bool PagePrefetcher::lookAtNext()
{
    if (m_nextPlace.output == m_plan.size())
        return false;
    const OutputFile& output = m_plan.at(m_nextPlace.output);
    if (m_nextPlace.item == output.fileItems.size()) {
        startAt({ m_nextPlace.output + 1, 0 });
        return true;
    }
    if (m_nextPage == 0)
        lookAtItem(output, *output.fileItems.at(m_nextPlace.item));
    else if (const auto page = std::ranges::lower_bound(m_pages, m_nextPage);
             page != m_pages.cend())
        lookAtPage(output, *page);
    else
        startAt({ m_nextPlace.output, m_nextPlace.item + 1 });
    return true;
}

void PagePrefetcher::lookAtItem(const OutputFile& output, const FileItem& item)
{
    m_source = std::make_shared<SharedSource>(item.localFile(), m_options.treatment);
    m_pages = chosenPages(item, m_options);
    m_isSourcePrepared = !isKeptTogether(m_settings) || isWanted(m_names.path(output, 0));
    m_steps.push_back({ m_nextPlace, 0, m_source, nullptr });
    m_nextPage = 1;
}

void PagePrefetcher::lookAtPage(const OutputFile& output, int page)
{
    Step step { m_nextPlace, page, m_source, nullptr };
    m_nextPage = page + 1;
    const bool isTogether = isKeptTogether(m_settings);
    const bool isGathered = isTogether && m_pages.size() > 1;
    const QString path = isGathered ? QString() : m_names.path(output, isTogether ? 0 : step.page);
    if (m_isSourcePrepared && (isTogether || isWanted(path))) {
        step.task = std::make_shared<PageTask>();
        step.task->source = m_source;
        step.task->page = step.page;
        step.task->targetPath = path;
        step.task->folders = &m_folders;
        step.task->options = { .jpegQuality = m_settings.jpegQuality(),
                               .tiffCompressionIndex = m_settings.tiffCompressionIndex(),
                               .threads = &m_threads,
                               .verifies = m_options.verifies,
                               .needsDigest = m_options.needsDigests(),
                               .reencodes = m_options.reencodes };
        step.task->isPutAhead = m_putsAhead && m_hasBegun && step.place == m_place;
        m_found.push_back(step.task);
    }
    m_steps.push_back(std::move(step));
}

bool PagePrefetcher::isWanted(const QString& path) const
{
    try {
        return !m_isWanted || m_isWanted(path);
    } catch (...) {
        return false; // it is asked again when it is the turn of the output
    }
}

} // namespace pagestack
