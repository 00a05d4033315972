#include "cli/Report.h"

#include "cli/Console.h"
#include "cli/Preflight.h"
#include "engine/job/OutputNames.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QList<int> pageCounts(const QList<OutputFile>& outputs)
    {
        QList<int> counts;
        for (const OutputFile& output : outputs) {
            int pages = 0;
            for (const auto& item : output.fileItems)
                pages += item->pages();
            counts.append(pages);
        }
        return counts;
    }

} // namespace

QString resultText(const QString& shown, const PageCounts& counts)
{
    QString text = u"%1: %2 %3 written"_s.arg(shown)
                       .arg(counts.written)
                       .arg(counts.written == 1 ? u"page"_s : u"pages"_s);
    // What was gathered for a file that could not be put in place is lost.
    const int failed = counts.failed + std::max(0, counts.gathered - counts.written);
    if (failed > 0)
        text += u", %1 failed"_s.arg(failed);
    if (counts.skipped > 0)
        text += u", %1 skipped"_s.arg(counts.skipped);
    return text;
}

QString troubleText(const QString& shown, int page, const QString& reason)
{
    const QString place = page > 0 ? u"%1[%2]"_s.arg(shown).arg(page) : shown;
    return place + u": "_s + (reason.isEmpty() ? u"failed for an unknown reason"_s : reason);
}

Report::Report(const Options& options, const QList<Source>& sources,
               const QList<OutputFile>& outputs, Console& console)
    : m_options(options)
    , m_sources(sources)
    , m_pagesPlanned(pageCounts(outputs))
    , m_console(console)
    , m_progress(console, options.progress,
                 std::accumulate(m_pagesPlanned.cbegin(), m_pagesPlanned.cend(), 0))
{
    for (qsizetype i = 0; i < m_sources.size(); ++i)
        m_places.insert(m_sources.at(i).path, i);
}

void Report::listenTo(const Process& job)
{
    // At once, on the job's thread: waking another one for every page takes as long as copying it.
    const Qt::ConnectionType atOnce = Qt::DirectConnection;
    connect(&job, &Process::troubleMet, this, &Report::addTrouble, atOnce);
    connect(&job, &Process::pageRemarked, this, &Report::addRemark, atOnce);
    connect(&job, &Process::pageDone, this, &Report::addPage, atOnce);
    connect(&job, &Process::fileWritten, this, &Report::addFile, atOnce);
    connect(&job, &Process::fileSkipped, this, &Report::skipFile, atOnce);
    connect(&job, &Process::totalFileProcessedChanged, this, &Report::endSource, atOnce);
    connect(
        &job, &Process::logTroubleMet, this,
        [this](const QString& path, const QString& reason) {
            m_console.trouble(path.isEmpty() ? reason : path + u": "_s + reason);
        },
        atOnce);
}

void Report::finish(const QString& message)
{
    m_progress.finish();
    if (m_options.isQuiet)
        return;
    for (const QString& line : QString(message).remove(u'\r').split(u'\n'))
        m_console.result(line);
}

void Report::addTrouble(const QString& sourcePath, int page, const QString& reason)
{
    m_hasFailures = true;
    m_console.trouble(troubleText(shown(sourcePath), page, reason));
}

void Report::addRemark(const QString& sourcePath, int page, const QString& remark)
{
    m_console.trouble(troubleText(shown(sourcePath), page, u"warning: "_s + remark));
}

QString Report::shown(const QString& sourcePath) const
{
    const qsizetype place = m_places.value(sourcePath, -1);
    return place < 0 ? sourcePath : m_sources.at(place).shown;
}

void Report::addPage(const QString&, int, const QString&, Process::PageOutcome outcome)
{
    switch (outcome) {
    case Process::PageOutcome::Written:
        ++m_counts.gathered;
        break;
    case Process::PageOutcome::Failed:
        ++m_counts.failed;
        break;
    case Process::PageOutcome::Skipped:
        ++m_counts.skipped;
        break;
    }
    ++m_pagesInHand;
    m_progress.setDone(m_pagesBefore + m_pagesInHand);
}

void Report::addFile(const QString& sourcePath, const QString& outputPath, int pages)
{
    m_counts.written += pages;
    const qsizetype place = m_places.value(sourcePath, -1);
    if (m_options.isVerbose && place >= 0)
        m_console.result(
            shownTarget(m_sources.at(place), lastPathComponent(outputPath), m_options));
}

void Report::skipFile(const QString&, const QString&, int pages)
{
    m_counts.gathered -= pages;
    m_counts.skipped += pages;
}

void Report::endSource(int processed)
{
    const qsizetype place = processed - 1;
    if (!m_options.isQuiet)
        m_console.result(resultText(m_sources.at(place).shown, m_counts));
    m_counts = {};
    m_pagesInHand = 0;
    m_pagesBefore += m_pagesPlanned.at(place);
    m_progress.setDone(m_pagesBefore);
}

} // namespace pagestack
