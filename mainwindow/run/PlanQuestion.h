#pragma once

#include <QString>

namespace pagestack {

class RunPlan;

/// Whether numbers keep the outputs of a run apart; those of several pages of one source may not.
bool isSolvedBy(const RunPlan& numbered);

/// What to ask or, where numbers are no help, to tell the user about a `plan` whose outputs would
/// replace each other or sources: the first of them, and how one is named by the plan `numbered`.
QString planQuestion(const RunPlan& plan, const RunPlan& numbered);

/// Whether an output would replace its own source.
bool hasOwnSource(const RunPlan& plan);

/// What to ask about the files at the targets of a `plan`, of which there are some.
QString existingQuestion(const RunPlan& plan);

} // namespace pagestack
