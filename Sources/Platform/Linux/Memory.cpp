#include "Platform/Memory.h"

#include <malloc.h>

namespace vantoro {

void releaseUnusedMemory() {
    ::malloc_trim(0);
}

} // namespace vantoro
