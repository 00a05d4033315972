#include "engine/threads/FreeMemory.h"

namespace pagestack {

void returnFreeMemory() { }

} // namespace pagestack
