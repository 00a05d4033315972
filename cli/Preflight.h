#pragma once

#include "engine/plan/RunPlan.h"
#include "engine/sources/Sources.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <stdexcept>

namespace pagestack {

struct Options;

/// Output that cannot go where it should; nothing was written.
class OutputRefused : public std::runtime_error
{
public:
    explicit OutputRefused(const QString& reason)
        : std::runtime_error(reason.toStdString())
    {
    }
};

/// A file besides the outputs that a run is to write.
struct ReportFile
{
    QString what; ///< "log"
    QString name; ///< as given
    QString target; ///< what is written to, whatever links lead there
};

/// The log, the report and the record, as far as `options` ask for them in files.
QList<ReportFile> reportFiles(const Options& options);

/// The absolute path of the output folder `folder`. Throws OutputRefused when it is not writable,
/// or missing with its parent. Makes nothing.
QString checkedOutputFolder(const QString& folder);

/// Makes the folder when it is missing. Throws OutputRefused.
void makeOutputFolder(const QString& path);

/// A count of findings, of which the first ten are kept.
class Findings
{
public:
    void add(const QString& text);
    int count() const { return m_count; }
    /// The findings, and a last line that tells how many more there are.
    QStringList lines() const;

private:
    int m_count = 0;
    QStringList m_first;
};

/// The findings of a plan, with paths as the user knows them.
struct TargetFindings
{
    Findings refusals; ///< any of these forbids the run
    Findings warnings;
};

/// Tells what `plan` found, as far as `options` ask for it. Its outputs belong to `sources` one by
/// one; the files `own` may be replaced.
TargetFindings findingsOf(const RunPlan& plan, const QList<Source>& sources, const Options& options,
                          const QSet<QString>& own = {});

/// The path of the target `name` of `source`, whose `output` is planned, as the user knows it.
QString shownTarget(const Source& source, const OutputFile& output, const QString& name,
                    const Options& options);

} // namespace pagestack
