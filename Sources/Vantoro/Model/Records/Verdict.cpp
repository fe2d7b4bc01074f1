#include "Model/Records/Verdict.h"

#include <array>
#include <cstddef>

namespace vantoro {

namespace {

using Wording = std::array<std::string_view, 5>; // by StressLevel

constexpr Wording fanLabels{"Silent", "Quiet", "Audible", "Loud", "Roaring"};
constexpr Wording passiveLabels{"Cool", "Mild", "Warm", "Hot", "Very hot"};
constexpr Wording fanPhrases{"Your fans are off", "Your fans are barely turning", "Your fans are audible",
                             "Your fans are loud", "Your fans are roaring"};
constexpr Wording passivePhrases{"Your Mac is cool", "Your Mac is barely warm", "Your Mac is warm",
                                 "Your Mac is running hot", "Your Mac is very hot"};

constexpr std::array<std::string_view, 4> coolingNames{"fans", "passive", "heat", "load"};
constexpr std::array<std::string_view, 4> thermalPressureNames{"nominal", "fair", "serious", "critical"};
constexpr std::array<std::string_view, 5> processKindNames{"userApp", "helper", "commandLine", "systemDaemon",
                                                           "kernel"};
constexpr std::array<std::string_view, 5> throttleReasonNames{"temperature", "power", "current", "firmware", "profile"};
constexpr std::array<std::string_view, 2> systemKindNames{"macos", "linux"};
constexpr std::array<std::string_view, 5> severityNames{"calm", "normal", "elevated", "high", "critical"};
constexpr std::array<std::string_view, 5> stressLevelNames{"idle", "light", "moderate", "heavy", "extreme"};

} // namespace

std::string_view Verdict::stateLabel() const {
    if (awaitingReading)
        return "Measuring";
    return (cooling == Cooling::passive ? passiveLabels : fanLabels)[static_cast<std::size_t>(state)];
}

std::string_view Verdict::statePhrase() const {
    return (cooling == Cooling::passive ? passivePhrases : fanPhrases)[static_cast<std::size_t>(state)];
}

template <>
std::span<const std::string_view> caseNames<Cooling>() {
    return coolingNames;
}

template <>
std::span<const std::string_view> caseNames<ThermalPressure>() {
    return thermalPressureNames;
}

template <>
std::span<const std::string_view> caseNames<ProcessKind>() {
    return processKindNames;
}

template <>
std::span<const std::string_view> caseNames<ThrottleReason>() {
    return throttleReasonNames;
}

template <>
std::span<const std::string_view> caseNames<SystemKind>() {
    return systemKindNames;
}

template <>
std::span<const std::string_view> caseNames<Severity>() {
    return severityNames;
}

template <>
std::span<const std::string_view> caseNames<StressLevel>() {
    return stressLevelNames;
}

} // namespace vantoro
