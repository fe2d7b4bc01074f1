#include "Model/Records/Verdict.h"

#include <array>
#include <cstddef>

namespace vantoro {

namespace {

using Wording = std::array<std::string_view, 5>; // by StressLevel

constexpr Wording fanLabels{"Silent", "Quiet", "Audible", "Loud", "Roaring"};
constexpr Wording heatLabels{"Cool", "Mild", "Warm", "Hot", "Very hot"};
constexpr Wording workLabels{"Idle", "Light", "Busy", "Very busy", "Flat out"};
constexpr Wording fanPhrases{"Your fans are off", "Your fans are barely turning", "Your fans are audible",
                             "Your fans are loud", "Your fans are roaring"};
// What follows the machine's name.
constexpr Wording heatPhrases{"is cool", "is barely warm", "is warm", "is running hot", "is very hot"};
constexpr Wording workPhrases{"is idle", "has little to do", "is busy", "is very busy", "is flat out"};

std::string_view worded(const Wording& wording, StressLevel level) {
    return wording[static_cast<std::size_t>(level)];
}

constexpr std::array<std::string_view, 4> coolingNames{"fans", "passive", "heat", "load"};
constexpr std::array<std::string_view, 4> thermalPressureNames{"nominal", "fair", "serious", "critical"};
constexpr std::array<std::string_view, 5> processKindNames{"userApp", "helper", "commandLine", "systemDaemon",
                                                           "kernel"};
constexpr std::array<std::string_view, 5> throttleReasonNames{"temperature", "power", "current", "firmware", "profile"};
constexpr std::array<std::string_view, 2> systemKindNames{"macos", "linux"};
constexpr std::array<std::string_view, 5> severityNames{"calm", "normal", "elevated", "high", "critical"};
constexpr std::array<std::string_view, 5> stressLevelNames{"idle", "light", "moderate", "heavy", "extreme"};

} // namespace

bool Verdict::speaksOfWork() const {
    return cooling == Cooling::load || (system != SystemKind::macos && isAtRest(state) && work >= StressLevel::heavy);
}

std::string_view Verdict::stateLabel() const {
    if (speaksOfWork())
        return worded(workLabels, cooling == Cooling::load ? state : work);
    if (awaitingReading)
        return "Measuring";
    return worded(cooling == Cooling::fans ? fanLabels : heatLabels, state);
}

std::string Verdict::statePhrase() const {
    const bool ofWork = speaksOfWork();
    // Their floor may be a standstill or not: only a Mac's is known to be one.
    if (cooling == Cooling::fans && !ofWork && state == StressLevel::idle && system != SystemKind::macos)
        return "Your fans are at their slowest";
    if (cooling == Cooling::fans && !ofWork)
        return std::string(worded(fanPhrases, state));
    const std::string_view rest =
        ofWork ? worded(workPhrases, cooling == Cooling::load ? state : work) : worded(heatPhrases, state);
    return std::string(systemWords(system).yourMachineFirst) + ' ' + std::string(rest);
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
