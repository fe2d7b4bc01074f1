// Up to which frequency the cores of each kind go.
#pragma once

#include "Model/Records/Core.h"

#include <algorithm>
#include <vector>

namespace vantoro {

/// A boost may go beyond what the processor announces: then what was seen is the limit.
class CoreCeilings {
public:
    void see(const std::vector<Core>& cores) {
        for (const Core& core : cores) {
            double& highest = core.isPerformance ? performance_ : efficiency_;
            highest = std::max(highest, core.megahertz);
        }
    }

    /// In MHz; 0 where nothing is announced, for what was seen so far is no limit then.
    double of(bool isPerformance, double announced) const {
        return announced > 0 ? std::max(announced, isPerformance ? performance_ : efficiency_) : 0;
    }

private:
    double performance_ = 0;
    double efficiency_ = 0;
};

} // namespace vantoro
