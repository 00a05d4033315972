#pragma once

namespace pagestack {

struct Options;
class Console;

/// Carries out "plan": prints the plan of a run (docs/fleet.md) on standard output, or nothing when
/// two of its outputs want one name. Needs the application object; main thread. Gives the code for
/// the shell.
int printPlan(const Options& options, Console& console);

} // namespace pagestack
