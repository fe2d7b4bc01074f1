// The culprit list: the applications that use the processor right now.
#pragma once

#include "Model/History/History.h"

#include <vector>

namespace vantoro {

/// The applications of the last 20 seconds that use at least 0.6 % of a core, busiest first. Their stress score is
/// their processor use as a whole number, so that the order of business changes only when a shown figure does.
std::vector<ProcessGroup> rankedSuspects(const History& history);

} // namespace vantoro
