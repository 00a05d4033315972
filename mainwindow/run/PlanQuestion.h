#pragma once

#include <QString>

namespace pagestack {

class RunPlan;

/// What to ask the user about a `plan` whose outputs would replace each other or sources: the first
/// of them, and how one is named by the plan `numbered`.
QString planQuestion(const RunPlan& plan, const RunPlan& numbered);

} // namespace pagestack
