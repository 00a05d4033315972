#pragma once

#include "cli/Options.h"
#include "engine/fleet/PlanFile.h"
#include "engine/plan/OutputFile.h"
#include "engine/sources/Sources.h"

#include <QList>
#include <QString>

#include <vector>

namespace pagestack {

/// The part of a plan that a run is to do.
struct PlannedRun
{
    /// A source, of which the pages `from` to `to` are meant, counted from 0 among those planned,
    /// the last one excluded.
    struct Item
    {
        PlanSource source;
        Shard::Part part;

        QString pages() const; ///< these, as PageChoice reads them
    };

    PlanHead head;
    QString identity;
    std::vector<Item> items;
};

/// Reads what `options` ask for. Throws std::runtime_error.
PlannedRun readPlannedRun(const Options& options);

/// What the names and bytes of all outputs depend on. `outputFolder` is absolute.
PlanHead planHead(const Options& options, const QString& outputFolder);

/// `options` with what the plan has settled.
Options withPlan(Options options, const PlanHead& head);

/// As the run takes it.
Source sourceOf(const PlannedRun::Item& item);

/// What becomes of `item`; `output` has its file item. Null, or why the file is not the one that
/// was planned.
QString takePlan(OutputFile& output, const PlannedRun::Item& item);

} // namespace pagestack
