// Real loads on this machine, one after the other, beside `vantoro --explain`.
#pragma once

#include "Tables.h"

namespace culprit {

/// Prints the table; 1 when a load was not named.
int live(const Options& options);

} // namespace culprit
