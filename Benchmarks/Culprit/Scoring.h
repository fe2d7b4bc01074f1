// What Vantoro and the simplest answers say about a recording, beside who it was.
#pragma once

#include "Families.h"
#include "Figures.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace culprit {

/// What somebody answers with: names, the likeliest first.
using Names = std::vector<std::string>;

enum class Baseline : std::uint8_t { busiestRow, busiestApplication, busiestOfMinute, largestInMemory };
inline constexpr std::array<std::string_view, 4> baselineNames{"`top` now", "application sum now",
                                                               "application mean over 60 s", "largest in memory"};
Names answer(Baseline baseline, const Seen& seen);

/// One recording's marks.
struct Marks {
    bool isRightFirst = false;
    bool isAmongThree = false;
    /// Somebody is named who it was not, and nobody could be.
    bool isFalseBlame = false;
    std::array<bool, 4> baselineFirst{};
    std::array<bool, 4> baselineAmongThree{};
    /// Of the machine, in points, where the culprit is named by its processor time.
    std::optional<double> shareError;
    std::optional<double> secondsUntilRight;
    int reports = 0;
    std::vector<ImpossibleFigure> impossible;
    std::string headline;
    std::string detail;
    std::string named;
};

/// Replays the recording as a user would who asks at its end.
Marks score(const std::vector<std::string>& lines, const Truth& truth, int cores);

} // namespace culprit
