#pragma once

namespace pagestack {

/// Gives memory that the program does not use any more back to the system, as far as the system
/// has a way. What a long run took would else stay: it lies between what is still used. Takes
/// some milliseconds; any thread.
void returnFreeMemory();

} // namespace pagestack
