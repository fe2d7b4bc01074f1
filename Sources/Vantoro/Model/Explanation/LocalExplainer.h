// Writes the sectioned explanation from the local history. A pure function, run only when someone asks for the report.
#pragma once

#include "Model/History/History.h"
#include "Model/Records/Explanation.h"
#include "Model/Text/Format.h"

namespace vantoro {

struct LocalExplainer {
    LocalExplainer() = delete;

    /// Where things stand, what draws the power, what changed when the heating began, whether that is normal and what
    /// to do. `verdict` is the one concluded from this history, `snapshot` its newest. The second and third section are
    /// left out when there is nothing to say; missing readings choose gentler sentences.
    static Explanation explain(const History& history, const Verdict& verdict, const Snapshot& snapshot,
                               const Format& format);
};

} // namespace vantoro
