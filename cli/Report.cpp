#include "cli/Report.h"

#include "cli/Console.h"
#include "cli/Preflight.h"
#include "engine/files/PosixFile.h"
#include "engine/plan/ChosenPages.h"
#include "engine/support/Paths.h"

#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// "1 page", "2 pages".
    QString counted(int count, const QString& thing)
    {
        return u"%1 %2%3"_s.arg(count).arg(thing, count == 1 ? u""_s : u"s"_s);
    }

    QList<int> pageCounts(const QList<OutputFile>& outputs, const RunOptions& options)
    {
        QList<int> counts;
        for (const OutputFile& output : outputs) {
            int pages = 0;
            for (const auto& item : output.fileItems)
                pages += chosenPageCount(*item, options);
            counts.append(pages);
        }
        return counts;
    }

} // namespace

QString totalText(const RunCounts& counts)
{
    const QString page = u"page"_s;
    const QString source = u"source"_s;
    QString text = u"%1 of %2 written"_s.arg(counted(counts.pages.written, page),
                                             counted(counts.sources, source));
    const auto add = [&text](int count, const QString& thing, const QString& fate) {
        if (count > 0)
            text += u", "_s + counted(count, thing) + fate;
    };
    add(counts.pages.allFailed(), page, u" failed"_s);
    add(counts.failedSources, source, u" failed"_s);
    add(counts.incompleteSources, source, u" incomplete"_s);
    add(counts.pages.skipped, page, u" skipped"_s);
    add(counts.notReached, page, u" not reached"_s);
    return text;
}

QString resultText(const QString& shown, const PageCounts& counts)
{
    QString text = u"%1: %2 written"_s.arg(shown, counted(counts.written, u"page"_s));
    if (counts.allFailed() > 0)
        text += u", %1 failed"_s.arg(counts.allFailed());
    if (counts.skipped > 0)
        text += u", %1 skipped"_s.arg(counts.skipped);
    return text;
}

QString leftOutText(const QStringList& shown)
{
    constexpr qsizetype most = 10;
    QString names = shown.mid(0, most).join(u", "_s);
    if (shown.size() > most)
        names += u" and %1 more"_s.arg(shown.size() - most);
    return u"left out for the unusual case of its ending, unless it is named itself: "_s + names;
}

Report::Report(const Options& options, const QList<Source>& sources,
               const QList<OutputFile>& outputs, Console& console)
    : m_options(options)
    , m_sources(sources)
    , m_outputs(outputs)
    , m_pagesPlanned(pageCounts(outputs, options.conversion.run))
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
    connect(&job, &Process::diagnosed, this, &Report::addDiagnostic, atOnce);
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

void Report::endProgress() { m_progress.finish(); }

void Report::finish(const QString& message, int lostPaths, bool hasOtherFailures)
{
    if (m_options.isQuiet)
        return;
    const bool isSuccess = message == u"All files converted successfully."_s;
    if (!isSuccess || !(m_hasFailures || hasOtherFailures)) {
        for (const QString& line : QString(message).remove(u'\r').split(u'\n'))
            m_console.result(line);
    }
    RunCounts total = m_total;
    total.failedSources += lostPaths;
    total.notReached = std::accumulate(m_pagesPlanned.cbegin(), m_pagesPlanned.cend(), 0)
        - total.pages.written - total.pages.allFailed() - total.pages.skipped;
    m_console.result(totalText(total));
}

void Report::addDiagnostic(const Diagnostic& diagnostic)
{
    if (diagnostic.severity == Diagnostic::Severity::Error) {
        m_hasFailures = true;
        m_hasPassingFailures = m_hasPassingFailures || isPassing(diagnostic.reason.toStdString());
        m_hasSourceFailed = m_hasSourceFailed || diagnostic.page == 0;
    }
    const QString line = messageText(diagnostic, shown(diagnostic.sourcePath));
    if (!m_isPrinted || m_isPrinted(diagnostic.sourcePath, line))
        m_console.trouble(line);
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
        m_console.result(shownTarget(m_sources.at(place), m_outputs.at(place),
                                     lastPathComponent(outputPath), m_options));
}

void Report::skipFile(const QString&, const QString&, int pages)
{
    m_counts.gathered -= pages;
    m_counts.skipped += pages;
}

void Report::endSource(int processed)
{
    const qsizetype place = processed - 1;
    const Source& source = m_sources.at(place);
    const QString line = resultText(source.shown, m_counts);
    if (!m_options.isQuiet && (!m_isPrinted || m_isPrinted(source.path, line)))
        m_console.result(line);
    m_total.pages.gathered += m_counts.gathered;
    m_total.pages.written += m_counts.written;
    m_total.pages.failed += m_counts.failed;
    m_total.pages.skipped += m_counts.skipped;
    m_total.sources += m_counts.written > 0 ? 1 : 0;
    if (std::exchange(m_hasSourceFailed, false))
        ++(m_counts.written > 0 ? m_total.incompleteSources : m_total.failedSources);
    m_counts = {};
    m_pagesInHand = 0;
    m_pagesBefore += m_pagesPlanned.at(place);
    m_progress.setDone(m_pagesBefore);
}

} // namespace pagestack
