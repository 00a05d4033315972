#include "mainwindow/run/RunProgress.h"

#include "engine/job/Process.h"
#include "engine/plan/ChosenPages.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr double trustInNews = 0.3; ///< of a new estimate, against the one that is shown
    constexpr double partPrepared = 0.6; ///< of the pages that other threads have in hand
    constexpr qint64 newsMs = 500;
    constexpr qint64 fewSecondsMs = 3500; ///< below which a number promises too much

    RunWork workOf(const OutputFile& output, const RunOptions& options)
    {
        RunWork work;
        for (const std::shared_ptr<FileItem>& item : output.fileItems) {
            const double pages = chosenPageCount(*item, options);
            work.pages += pages;
            work.bytes += item->pages() > 0 ? item->size() * pages / item->pages() : 0;
        }
        return work;
    }

} // namespace

RunWork workOf(const QList<OutputFile>& outputs, const RunOptions& options)
{
    RunWork all;
    for (const OutputFile& output : outputs) {
        const RunWork work = workOf(output, options);
        all.pages += work.pages;
        all.bytes += work.bytes;
    }
    return all;
}

QString shortClockText(qint64 milliseconds)
{
    const qint64 seconds = (milliseconds + 500) / 1000;
    const QString minutes = u"%1:%2"_s.arg(seconds / 60 % 60).arg(seconds % 60, 2, 10, QChar(u'0'));
    return seconds < 3600 ? minutes
                          : u"%1:"_s.arg(seconds / 3600) + minutes.rightJustified(5, QChar(u'0'));
}

RunProgress::RunProgress(int cores)
    : m_cores(cores)
{
}

void RunProgress::follow(Process& job)
{
    stopFollowing();
    m_job = &job;
    m_done = {};
    m_shownMs.reset();
    m_pausedAtMs.reset();
    setPlanned({});
    // The job tells on its own thread; with this object as the receiver it arrives on the main one.
    connect(&job, &Process::pageDone, this, [this] {
        ++m_done.pages;
        ++m_done.inHand;
    });
    connect(&job, &Process::totalFileProcessedChanged, this, &RunProgress::passSources);
}

void RunProgress::setPlanned(const RunWork& planned)
{
    m_pagesPlanned = std::llround(planned.pages);
    m_pace = RunPace(planned);
    m_elapsed.start(); // what came before was no conversion
    m_pausedMs = 0;
    if (isPaused())
        m_pausedAtMs = 0;
}

void RunProgress::stopFollowing()
{
    if (m_job != nullptr)
        m_job->disconnect(this);
    m_job = nullptr;
}

/// Also pages that could not be converted are done with.
void RunProgress::passSources(int processed)
{
    const QList<OutputFile> outputs = m_job->outputFiles();
    for (; m_done.sources < std::min<qsizetype>(processed, outputs.size()); ++m_done.sources) {
        const RunWork work = workOf(outputs.at(m_done.sources), m_job->runOptions());
        m_done.passed.pages += work.pages;
        m_done.passed.bytes += work.bytes;
    }
    m_done.inHand = 0;
}

void RunProgress::setPaused(bool isPaused)
{
    if (isPaused)
        m_pausedAtMs = m_elapsed.elapsed();
    else if (m_pausedAtMs)
        m_pausedMs += m_elapsed.elapsed() - *std::exchange(m_pausedAtMs, std::nullopt);
}

qint64 RunProgress::workedMs() const
{
    return m_pausedAtMs.value_or(m_elapsed.elapsed()) - m_pausedMs;
}

void RunProgress::update()
{
    if (m_job == nullptr)
        return;
    RunWork done = m_done.passed;
    double pages = m_done.inHand;
    // Others are being prepared, and come as soon as it is their turn.
    if (m_done.pages > 0)
        pages += partPrepared * (m_cores - 1);
    const QList<OutputFile> outputs = m_job->outputFiles();
    for (qsizetype i = m_done.sources; pages > 0 && i < outputs.size(); ++i) {
        const RunWork work = workOf(outputs.at(i), m_job->runOptions());
        const double part = std::min(pages, work.pages);
        pages -= part;
        done.pages += part;
        done.bytes += work.pages > 0 ? work.bytes * part / work.pages : 0;
    }
    const qint64 now = workedMs();
    m_pace.take(done, now);
    const std::optional<qint64> left = m_pace.remainingMs();
    if (!left || (m_shownMs && now - m_shownAtMs < newsMs))
        return;
    const double expected = static_cast<double>(
        m_shownMs ? std::max<qint64>(0, *m_shownMs - (now - m_shownAtMs)) : *left);
    m_shownMs = std::llround(expected + trustInNews * (static_cast<double>(*left) - expected));
    m_shownAtMs = now;
}

QString RunProgress::pageText() const
{
    return tr("page %1 of %2")
        .arg(QLocale().toString(m_done.pages), QLocale().toString(m_pagesPlanned));
}

QString RunProgress::paceText() const
{
    QStringList parts;
    if (const double pages = m_pace.pagesPerSecond(); pages > 0)
        parts.append(tr("%1 pages/s").arg(QLocale().toString(pages, 'f', pages < 10 ? 1 : 0)));
    if (m_shownMs)
        parts.append(*m_shownMs < fewSecondsMs
                         ? tr("a few seconds left")
                         : tr("about %1 left").arg(shortClockText(*m_shownMs)));
    return parts.join(u", "_s);
}

} // namespace pagestack
