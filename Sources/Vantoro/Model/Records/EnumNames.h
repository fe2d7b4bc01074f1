// Case names of the enumerations, as recordings and reports write and read them.
#pragma once

#include "Model/Records/SystemKind.h"
#include "Model/Records/Verdict.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace vantoro {

/// The names in declared order: the name of a case is the one at its value.
template <class Enum>
std::span<const std::string_view> caseNames();

template <>
std::span<const std::string_view> caseNames<Cooling>();
template <>
std::span<const std::string_view> caseNames<ThermalPressure>();
template <>
std::span<const std::string_view> caseNames<ProcessKind>();
template <>
std::span<const std::string_view> caseNames<ThrottleReason>();
/// The words of a recording: "macos" and "linux".
template <>
std::span<const std::string_view> caseNames<SystemKind>();
template <>
std::span<const std::string_view> caseNames<Severity>();
template <>
std::span<const std::string_view> caseNames<StressLevel>();

/// The case's name as it stands in the code.
template <class Enum>
std::string_view caseName(Enum value) {
    return caseNames<Enum>()[static_cast<std::size_t>(value)];
}

/// The case of this name, if there is one.
template <class Enum>
std::optional<Enum> caseNamed(std::string_view name) {
    const std::span<const std::string_view> names = caseNames<Enum>();
    const auto found = std::ranges::find(names, name);
    if (found == names.end())
        return std::nullopt;
    return static_cast<Enum>(found - names.begin());
}

} // namespace vantoro
