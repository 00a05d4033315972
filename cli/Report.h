#pragma once

#include "cli/Options.h"
#include "cli/Progress.h"
#include "engine/job/Process.h"
#include "engine/sources/Sources.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>

#include <algorithm>
#include <functional>

namespace pagestack {

class Console;

/// What became of the pages of one source, or of all.
struct PageCounts
{
    int gathered = 0; ///< in a file, or in one that was still to be put in place
    int written = 0; ///< in files that are in place
    int failed = 0;
    int skipped = 0;

    /// With what was gathered for a file that could not be put in place, and so is lost.
    int allFailed() const { return failed + std::max(0, gathered - written); }
};

/// What became of a run.
struct RunCounts
{
    PageCounts pages;
    int notReached = 0; ///< pages
    int sources = 0; ///< of which pages were written
    int incompleteSources = 0; ///< of these, for a reason that is none of a single page
    int failedSources = 0; ///< as a whole
};

/// "12 pages of 3 sources written, 1 page failed, 2 pages skipped".
QString totalText(const RunCounts& counts);

/// "scan.tif: 3 pages written, 1 failed".
QString resultText(const QString& shown, const PageCounts& counts);

/// One line for files of folders that are no sources, of which the first ten are named.
QString leftOutText(const QStringList& shown);

/// Listens to a job and prints its results, troubles and progress, on the job's thread as long as
/// that runs. Everything else belongs to the time before or after.
class Report : public QObject
{
    Q_OBJECT

public:
    /// `options` and `console` are borrowed. `outputs`, which are planned, belong to
    /// `sources` one by one.
    Report(const Options& options, const QList<Source>& sources, const QList<OutputFile>& outputs,
           Console& console);

    void listenTo(const Process& job);

    /// Asked before a line about a source is printed.
    using Filter = std::function<bool(const QString& sourcePath, const QString& line)>;
    void setFilter(const Filter& isPrinted) { m_isPrinted = isPrinted; }

    void endProgress();

    /// Prints the final message of the job, unless that speaks of success and there was none, and
    /// then the totals. `lostPaths` are sources that could not even be planned.
    void finish(const QString& message, int lostPaths, bool hasOtherFailures);

    /// Whether a page or a source failed so far.
    bool hasFailures() const { return m_hasFailures; }
    /// Whether one of these may work the next time.
    bool hasPassingFailures() const { return m_hasPassingFailures; }

private:
    void addDiagnostic(const Diagnostic& diagnostic);
    void addPage(const QString& sourcePath, int page, const QString& outputPath,
                 Process::PageOutcome outcome);
    void addFile(const QString& sourcePath, const QString& outputPath, int pages);
    void skipFile(const QString& sourcePath, const QString& outputPath, int pages);
    void endSource(int processed);

    QString shown(const QString& sourcePath) const;

    const Options& m_options;
    QList<Source> m_sources;
    QList<OutputFile> m_outputs;
    QList<int> m_pagesPlanned; ///< of each source
    QHash<QString, qsizetype> m_places; ///< of the sources, by path
    Console& m_console;
    Progress m_progress;
    PageCounts m_counts; ///< of the source in hand
    bool m_hasSourceFailed = false; ///< the one in hand
    RunCounts m_total; ///< of the sources before it
    int m_pagesInHand = 0; ///< of it, dealt with
    int m_pagesBefore = 0; ///< of the sources before it
    bool m_hasFailures = false;
    bool m_hasPassingFailures = false;
    Filter m_isPrinted; ///< none: all are
};

} // namespace pagestack
