// What the values of a recording's line go to: a field, an element of a list, or a record that begins. A value that
// does not fit is told in words that follow the field's name.
#pragma once

#include "Model/Recording/JsonScanner.h"
#include "Model/Recording/RecordingReasons.h"
#include "Model/Records/Telemetry.h"
#include "Model/Records/Verdict.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace vantoro {

/// Where in a line the scan stands: in one of its records, or between the elements of a list.
enum class RecordingPlace {
    line,
    snapshot,
    fans,
    fan,
    temps,
    power,
    cpu,
    memory,
    processes,
    process,
    stalls,
    cores,
    core,
    throttle,
    dieSensors,
    gpuSensors
};

/// Lists of records, and lists of plain values.
inline bool isRecordList(RecordingPlace place) {
    return place == RecordingPlace::fans || place == RecordingPlace::processes || place == RecordingPlace::cores;
}

inline bool isValueList(RecordingPlace place) {
    return place == RecordingPlace::throttle || place == RecordingPlace::dieSensors ||
           place == RecordingPlace::gpuSensors;
}

struct ShareTarget {
    double* percent;
};
struct OptionalShareTarget {
    std::optional<double>* percent;
};
/// The next element of a list. Of a list without end only the beginning is kept.
struct NumbersTarget {
    static constexpr std::size_t mostKept = 1024;
    std::vector<double>* list;
};
/// The same of a list of words, each of which is kept once.
struct WordsTarget {
    std::vector<ThrottleReason>* list;
};

/// Nothing stands for an unknown key.
using RecordingTarget = std::variant<std::monostate, double*, ShareTarget, std::uint64_t*, std::int32_t*, bool*,
                                     std::string*, std::optional<std::string>*, std::optional<double>*,
                                     OptionalShareTarget, std::optional<std::uint64_t>*, Cooling*, ThermalPressure*,
                                     ProcessKind*, NumbersTarget, WordsTarget, RecordingPlace>;

template <class Target>
inline constexpr bool isWordTarget = std::is_pointer_v<Target>&& std::is_enum_v<std::remove_pointer_t<Target>>;

/// What should have stood there.
template <class Target>
std::string_view expectedValue(Target target) {
    if constexpr (std::is_same_v<Target, RecordingPlace>)
        return isRecordList(target) || isValueList(target) ? "a list" : "an object";
    else if constexpr (std::is_same_v<Target, std::string*> || std::is_same_v<Target, std::optional<std::string>*> ||
                       std::is_same_v<Target, WordsTarget> || isWordTarget<Target>)
        return "a string";
    else if constexpr (std::is_same_v<Target, bool*>)
        return "a truth value";
    else
        return "a number";
}

/// Gives a value to a target. Nothing when it is not of the target's type; else what is wrong with it, which is empty
/// when it was taken.
using Taken = std::optional<std::string>;

inline std::string wholeFault(const JsonNumber& number, std::string_view range) {
    const bool isFraction = !number.wholeMagnitude && std::trunc(number.value) != number.value;
    if (!std::isfinite(number.value))
        return "is not a finite number";
    if (isFraction)
        return fmt::format("is {}, not a whole number", numberText(number));
    return fmt::format("is {}, outside {}", numberText(number), range);
}

inline std::string takeFinite(double& target, const JsonNumber& number) {
    target = number.value;
    return std::isfinite(number.value) ? "" : "is not a finite number";
}

inline std::string takeShare(double& target, const JsonNumber& number) {
    std::string fault = takeFinite(target, number);
    if (fault.empty() && !(number.value >= 0 && number.value <= 100))
        fault = fmt::format("is {}, outside 0 to 100", numberText(number));
    return fault;
}

inline std::string takeWhole(std::uint64_t& target, const JsonNumber& number) {
    if (!number.wholeMagnitude || (number.isNegative && *number.wholeMagnitude != 0))
        return wholeFault(number, "0 to 18446744073709551615");
    target = *number.wholeMagnitude;
    return {};
}

inline std::string takeWhole(std::int32_t& target, const JsonNumber& number) {
    const std::uint64_t most = number.isNegative ? 2147483648U : 2147483647U;
    if (!number.wholeMagnitude || *number.wholeMagnitude > most)
        return wholeFault(number, "-2147483648 to 2147483647");
    const auto magnitude = static_cast<std::int64_t>(*number.wholeMagnitude);
    target = static_cast<std::int32_t>(number.isNegative ? -magnitude : magnitude);
    return {};
}

template <class Target>
Taken takeNumber(Target target, const JsonNumber& number) {
    if constexpr (std::is_same_v<Target, double*>)
        return takeFinite(*target, number);
    else if constexpr (std::is_same_v<Target, ShareTarget>)
        return takeShare(*target.percent, number);
    else if constexpr (std::is_same_v<Target, OptionalShareTarget>)
        return takeShare(target.percent->emplace(), number);
    else if constexpr (std::is_same_v<Target, std::optional<double>*>)
        return takeFinite(target->emplace(), number);
    else if constexpr (std::is_same_v<Target, std::uint64_t*> || std::is_same_v<Target, std::int32_t*>)
        return takeWhole(*target, number);
    else if constexpr (std::is_same_v<Target, std::optional<std::uint64_t>*>)
        return takeWhole(target->emplace(), number);
    else if constexpr (std::is_same_v<Target, NumbersTarget>) {
        double value = 0;
        std::string fault = takeFinite(value, number);
        if (target.list->size() < NumbersTarget::mostKept)
            target.list->push_back(value);
        return fault;
    } else {
        return std::nullopt;
    }
}

template <class Enum>
std::string takeWord(std::optional<Enum>& target, std::string_view text) {
    target = caseNamed<Enum>(text);
    return target ? "" : fmt::format("is {}, not {}", quoted(text), wordsFor<Enum>());
}

template <class Target>
Taken takeText(Target target, std::string_view text) {
    if constexpr (std::is_same_v<Target, std::string*>) {
        target->assign(text);
        return "";
    } else if constexpr (std::is_same_v<Target, std::optional<std::string>*>) {
        target->emplace(text);
        return "";
    } else if constexpr (isWordTarget<Target>) {
        std::optional<std::remove_pointer_t<Target>> word;
        std::string fault = takeWord(word, text);
        if (word)
            *target = *word;
        return fault;
    } else if constexpr (std::is_same_v<Target, WordsTarget>) {
        std::optional<ThrottleReason> word;
        std::string fault = takeWord(word, text);
        if (word && std::ranges::find(*target.list, *word) == target.list->end())
            target.list->push_back(*word);
        return fault;
    } else {
        return std::nullopt;
    }
}

template <class Target>
Taken takeTruth(Target target, bool truth) {
    if constexpr (std::is_same_v<Target, bool*>) {
        *target = truth;
        return "";
    } else {
        return std::nullopt;
    }
}

/// Only what may be absent can be null. A place that may be is its owner's to empty.
template <class Target>
Taken takeNull(Target target) {
    if constexpr (std::is_same_v<Target, std::optional<std::string>*> ||
                  std::is_same_v<Target, std::optional<double>*> ||
                  std::is_same_v<Target, std::optional<std::uint64_t>*>) {
        target->reset();
        return "";
    } else if constexpr (std::is_same_v<Target, OptionalShareTarget>) {
        target.percent->reset();
        return "";
    } else {
        return std::nullopt;
    }
}

} // namespace vantoro
