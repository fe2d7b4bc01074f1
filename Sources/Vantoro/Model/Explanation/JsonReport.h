// Everything the model concludes, for other programs to read.
#pragma once

#include "Model/History/ChartSeries.h"
#include "Model/History/History.h"
#include "Model/Records/Explanation.h"
#include "Model/Records/Verdict.h"

#include <string>
#include <vector>

namespace vantoro {

/// One JSON object on one line, without a newline: the vitals of the newest snapshot (of a zero one in an empty
/// history) and everything given. Real numbers have full precision, times are seconds since 1970-01-01 UTC, absent
/// optionals are null; numbers that are not finite are written as 0, bytes that are not UTF-8 as U+FFFD.
std::string jsonReport(const History& history, const Verdict& verdict, const std::vector<ProcessGroup>& suspects,
                       const Explanation& explanation, const ChartSeries& series);

} // namespace vantoro
