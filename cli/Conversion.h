#pragma once

#include "cli/ExitCode.h"

namespace pagestack {

struct Options;
class Console;

/// Carries out a command line that asks for a conversion: looks up the sources, checks the targets,
/// runs the job on a thread of its own with an event loop on this one, and prints what happens.
/// Needs the application object; main thread. Gives the code for the shell: an ExitCode, or
/// 128 + the number of the signal that cancelled it.
int convert(const Options& options, Console& console);

} // namespace pagestack
