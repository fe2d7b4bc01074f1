// How the model counts time.
#pragma once

namespace vantoro {

/// Wall-clock instant: seconds since 1970-01-01 UTC, with fraction.
using UnixSeconds = double;

} // namespace vantoro
