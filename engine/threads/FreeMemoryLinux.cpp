#include "engine/threads/FreeMemory.h"

#include <malloc.h>

namespace pagestack {

void returnFreeMemory()
{
#ifdef __GLIBC__ // which other C libraries on Linux lack
    malloc_trim(0);
#endif
}

} // namespace pagestack
