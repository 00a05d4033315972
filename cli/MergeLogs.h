#pragma once

namespace pagestack {

class Console;
struct Options;

/// Says whether all of a plan was done exactly once, as the states of its runs tell. Returns the
/// exit code.
int mergeLogs(const Options& options, Console& console);

} // namespace pagestack
