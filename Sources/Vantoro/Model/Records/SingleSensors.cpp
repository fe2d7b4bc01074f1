#include "Model/Records/SingleSensors.h"

#include <algorithm>
#include <utility>

namespace vantoro {

bool SingleSensors::look(std::vector<double> reading, std::optional<std::size_t> known) {
    constexpr int partialLooksBelieved = 5;
    const std::size_t least = known ? std::min(enough_, (*known + 1) / 2) : enough_;
    partialLooks_ = reading.size() < least ? std::min(partialLooks_ + 1, partialLooksBelieved) : 0;
    if (partialLooks_ > 0 && partialLooks_ < partialLooksBelieved)
        return false;
    celsius_ = std::move(reading);
    isSettled_ = true;
    return true;
}

void SingleSensors::set(std::optional<std::vector<double>> reading) {
    isSettled_ = reading.has_value();
    partialLooks_ = 0;
    celsius_ = std::move(reading).value_or(std::vector<double>());
    // What is drawn of it begins with the coolest, whoever wrote it.
    std::ranges::sort(celsius_);
}

} // namespace vantoro
