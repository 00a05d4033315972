#pragma once

#include "cli/Options.h"
#include "cli/Progress.h"
#include "cli/Sources.h"
#include "engine/job/Process.h"

#include <QHash>
#include <QList>
#include <QObject>

namespace pagestack {

class Console;

/// What became of the pages of one source.
struct PageCounts
{
    int gathered = 0; ///< in a file, or in one that was still to be put in place
    int written = 0; ///< in files that are in place
    int failed = 0;
    int skipped = 0;
};

/// "scan.tif: 3 pages written, 1 failed".
QString resultText(const QString& shown, const PageCounts& counts);

/// "scan.tif[3]: reason"; page 0 is the file as a whole: "scan.tif: reason".
QString troubleText(const QString& shown, int page, const QString& reason);

/// Listens to a job and prints its results, troubles and progress, on the job's thread as long as
/// that runs. Everything else belongs to the time before or after.
class Report : public QObject
{
    Q_OBJECT

public:
    /// `options` and `console` are borrowed. `outputs` belong to `sources` one by one.
    Report(const Options& options, const QList<Source>& sources, const QList<OutputFile>& outputs,
           Console& console);

    void listenTo(const Process& job);

    /// Ends the progress line and prints the final message of the job.
    void finish(const QString& message);

    /// Whether a page or a source failed so far.
    bool hasFailures() const { return m_hasFailures; }

private:
    void addTrouble(const QString& sourcePath, int page, const QString& reason);
    void addRemark(const QString& sourcePath, int page, const QString& remark);
    void addPage(const QString& sourcePath, int page, const QString& outputPath,
                 Process::PageOutcome outcome);
    void addFile(const QString& sourcePath, const QString& outputPath, int pages);
    void skipFile(const QString& sourcePath, const QString& outputPath, int pages);
    void endSource(int processed);

    QString shown(const QString& sourcePath) const;

    const Options& m_options;
    QList<Source> m_sources;
    QList<int> m_pagesPlanned; ///< of each source
    QHash<QString, qsizetype> m_places; ///< of the sources, by path
    Console& m_console;
    Progress m_progress;
    PageCounts m_counts; ///< of the source in hand
    int m_pagesInHand = 0; ///< of it, dealt with
    int m_pagesBefore = 0; ///< of the sources before it
    bool m_hasFailures = false;
};

} // namespace pagestack
