#include "Platform/Memory.h"

#include <malloc/malloc.h>

namespace vantoro {

void releaseUnusedMemory() {
    ::malloc_zone_pressure_relief(nullptr, 0);
}

} // namespace vantoro
