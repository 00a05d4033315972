#pragma once

#include "engine/fleet/MergedSource.h"
#include "engine/log/Log.h"

namespace pagestack {

/// Adds `source` to `log`, whose order is that of the calls, as a run in one part would have told
/// of it.
void addToLog(Log& log, const MergedSource& source);

} // namespace pagestack
