#include "Model/Records/EnumNames.h"

#include <array>

namespace vantoro {

namespace {

constexpr std::array<std::string_view, 4> coolingNames{"fans", "passive", "heat", "load"};
constexpr std::array<std::string_view, 4> thermalPressureNames{"nominal", "fair", "serious", "critical"};
constexpr std::array<std::string_view, 5> processKindNames{"userApp", "helper", "commandLine", "systemDaemon",
                                                           "kernel"};
constexpr std::array<std::string_view, 5> throttleReasonNames{"temperature", "power", "current", "firmware", "profile"};
constexpr std::array<std::string_view, 2> systemKindNames{"macos", "linux"};
constexpr std::array<std::string_view, 5> severityNames{"calm", "normal", "elevated", "high", "critical"};
constexpr std::array<std::string_view, 5> stressLevelNames{"idle", "light", "moderate", "heavy", "extreme"};

} // namespace

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
