// Everything that the model concludes from a history, for the reports that are printed.
#pragma once

#include "Design/Format.h"
#include "Model/ChartSeries.h"
#include "Model/Explanation.h"
#include "Model/History.h"
#include "Model/Verdict.h"

#include <vector>

namespace vantoro {

struct Conclusion {
    /// The newest snapshot; the zero snapshot for an empty history.
    Snapshot snapshot;
    Verdict verdict;
    std::vector<ProcessGroup> suspects;
    Explanation explanation;
    ChartSeries series;
};

Conclusion conclude(const History& history, const Format& format);

} // namespace vantoro
