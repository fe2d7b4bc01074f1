#include "Model/History/HeatSmoothing.h"

#include <cmath>

namespace vantoro {

double HeatSmoothing::smoothed(UnixSeconds at, double celsius) {
    if (!(celsius > 0))
        return heat_ ? heat_->celsius : 0;
    if (!heat_) {
        heat_ = {.celsius = celsius, .at = at};
        return celsius;
    }
    const double elapsed = at - heat_->at;
    const double weight = elapsed >= 0 ? 1 - std::exp(-elapsed / timeConstantSeconds) : 0;
    heat_ = {.celsius = heat_->celsius + (celsius - heat_->celsius) * weight, .at = at};
    return heat_->celsius;
}

} // namespace vantoro
