#pragma once

namespace pagestack {

class Console;
struct Options;

/// Watches a folder until a signal comes, and converts what is complete in it. Needs the
/// application object; main thread. Gives the code for the shell, as convert() does.
int watchFolder(const Options& options, Console& console);

} // namespace pagestack
