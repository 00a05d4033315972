#pragma once

#include "engine/fleet/FaultList.h"
#include "engine/fleet/MergedRun.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace pagestack {

class OutputCheck;

/// The judgement on a plan and its states: totals, and what is not as it should be.
class MergeSummary
{
public:
    /// The next source of the plan; `states` are those of the run.
    void add(const MergedSource& source, const QStringList& states);
    void addForeign(const MergedRun::Foreign& foreign);

    /// Whether all of the plan was done exactly once and nothing failed.
    bool isSound() const;

    /// The members of "merge" in docs/events.schema.json; `check` may be null.
    QJsonObject toJson(const MergedRun& run, const OutputCheck* check, int exitCode) const;

    /// For people: some findings of each kind, then the totals.
    QStringList lines(const MergedRun& run, const OutputCheck* check) const;

private:
    struct Sources
    {
        qint64 done = 0;
        qint64 failed = 0; ///< of which some may be incomplete as well
        qint64 incomplete = 0;
    };
    struct Pages
    {
        qint64 written = 0;
        qint64 skipped = 0;
        qint64 failed = 0;
        qint64 missing = 0;
    };

    void countPages(const MergedSource& source);

    Sources m_sources;
    Pages m_pages;
    qint64 m_outputs = 0; ///< in place
    qint64 m_outputsTwice = 0;
    qint64 m_foreignEvents = 0;
    FaultList m_gaps;
    FaultList m_failures;
    FaultList m_twice;
    FaultList m_foreign;
};

/// "1 page", "2 pages".
QString counted(qint64 number, const QString& noun);

} // namespace pagestack
