// What the diagnosis concludes: how hard the machine works, how much that matters, who is to blame and what helps.
#pragma once

#include "Model/Records/ProcessAggregate.h"
#include "Model/Records/SystemWords.h"
#include "Model/Records/Telemetry.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// How much the present state matters; ordered.
enum class Severity : std::uint8_t { calm = 0, normal = 1, elevated = 2, high = 3, critical = 4 };

/// How hard the cooling works; ordered.
enum class StressLevel : std::uint8_t { idle = 0, light = 1, moderate = 2, heavy = 3, extreme = 4 };

/// One fact row: an icon's name, a short label, the figure as text and a few words on what it means.
struct Factor {
    std::string symbol;
    std::string title;
    std::string value;
    std::string detail;

    bool operator==(const Factor&) const = default;
};

/// One sentence of advice, or the label of a quit action with the process that it ends.
struct Advice {
    std::string text;
    std::optional<std::int32_t> quitPID;

    bool operator==(const Advice&) const = default;
};

struct Verdict {
    Severity severity = Severity::calm;
    StressLevel state = StressLevel::idle;
    Cooling cooling = Cooling::fans;
    /// Whose words it speaks.
    SystemKind system = SystemKind::macos;
    /// What the state is the band of, 0 to 1: how hard the fans work, how the chip's heat presses, or the busy share.
    double load = 0;
    /// The band of the processors' busy share over the last ten seconds.
    StressLevel work = StressLevel::idle;
    /// A machine judged by its chip's temperature, which has not reported a usable one yet.
    bool awaitingReading = false;
    std::string headline = "All quiet";
    /// One paragraph of explanation.
    std::string detail;
    /// The group held most responsible, and up to four more in rank order.
    std::optional<ProcessGroup> suspect;
    std::vector<ProcessGroup> runnersUp;
    std::vector<Factor> factors;
    /// What is most likely to help comes first.
    std::vector<Advice> advice;
    /// Seconds since the current ramp began; 0 without one.
    double sustainedFor = 0;
    /// A short cause phrase for compact views.
    std::string cause;
    /// The graphics processor's work is what the suspects are ranked by.
    bool isOfGraphics = false;
    /// Memory is what is short, and the suspect is who holds most of it.
    bool isOfMemory = false;
    /// All that runs ran just the same while the machine was quiet: nobody is blamed for it.
    bool ranWhileQuiet = false;

    /// Whether it speaks of how busy the processors are: nothing else is known, or they are hard at work though neither
    /// fan nor chip shows it yet. A Mac's never does the latter.
    bool speaksOfWork() const;
    /// One or two words for the menu bar and badges; "Measuring" while a reading is awaited.
    std::string_view stateLabel() const;
    /// The stem that opens most headlines, "Your fans are loud".
    std::string statePhrase() const;

    bool operator==(const Verdict&) const = default;
};

/// Whether the state is idle or light: nothing that needs an explanation.
constexpr bool isAtRest(StressLevel state) {
    return state <= StressLevel::light;
}

/// Case names of the enumerations, as recordings and reports write and read them, in declared order: the name of a case
/// is the one at its value.
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
