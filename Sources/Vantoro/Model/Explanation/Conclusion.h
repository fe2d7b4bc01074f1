// Everything that the model concludes from a history, for the reports that are printed.
#pragma once

#include "Model/History/ChartSeries.h"
#include "Model/History/History.h"
#include "Model/Records/Explanation.h"
#include "Model/Records/Verdict.h"
#include "Model/Text/Format.h"

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
