// Memory that the program no longer uses, given back to the system.
#pragma once

namespace vantoro {

/// Worth calling after much was freed at once, as when a window has closed. Linux: malloc_trim, and madvise for the
/// instructions that only the window needed; Mac: malloc_zone_pressure_relief.
void releaseUnusedMemory();

} // namespace vantoro
