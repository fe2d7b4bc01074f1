#include "Model/Records/SystemWords.h"

#include <fmt/format.h>

namespace vantoro {

std::string machineName(const std::optional<std::string>& modelIdentifier,
                        const std::optional<std::string>& processorBrand) {
    if (!modelIdentifier || modelIdentifier->empty())
        return "This Mac";
    if (!processorBrand || processorBrand->empty())
        return *modelIdentifier;
    if (modelIdentifier->starts_with("MacBook"))
        return fmt::format("MacBook · {}", *processorBrand);
    return *processorBrand;
}

std::string sensorSummary(Cooling cooling, int fanCount, int sensorCount) {
    if (cooling == Cooling::passive)
        return fmt::format("No fans · {} sensors", sensorCount);
    return fmt::format("{} {} · {} sensors", fanCount, fanCount == 1 ? "fan" : "fans", sensorCount);
}

} // namespace vantoro
