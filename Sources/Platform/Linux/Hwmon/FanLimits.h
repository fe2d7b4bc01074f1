// What a fan can reach where its driver does not say: found by watching it, and kept from one run to the next.
#pragma once

#include "Platform/Linux/Reading/SlowLane.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

/// Whether a duty cycle (0 to 255) is the motor's own. Some drivers repeat the level that was asked for last, and some
/// chips keep a stale one while they drive the fan themselves: those do not move when the speed does.
class DutyEvidence {
public:
    /// To be told of both at each reading. Counts what has settled: a motor needs seconds to follow.
    void note(std::int64_t duty, double rpm, double now);
    /// The speed at full duty, once the two were seen to move together over enough levels far enough apart.
    std::optional<double> fullSpeed() const;

private:
    static constexpr std::size_t levelCount = 16;
    struct Level {
        double duty = 0;
        double rpm = 0;
    };

    std::array<std::optional<Level>, levelCount> levels_;
    std::optional<std::int64_t> duty_;
    double since_ = 0;
};

/// The ends of a fan's steady speeds, standing still aside, and for how long it was watched. Speeds of 0: none yet.
struct FanRange {
    double lowestRPM = 0;
    double highestRPM = 0;
    double watchedSeconds = 0;

    /// Watched for a day or longer, and wide enough to be a fan's whole range rather than its trembling.
    bool isLearned() const;
    /// Not watched for a day yet.
    bool isBeingLearned() const;

    bool operator==(const FanRange&) const = default;
};

/// By what tells one fan from another through restarts: see HwmonFan.
using FanRanges = std::map<std::string, FanRange>;

/// One line per fan: lowest and highest speed, seconds watched, and the fan. Lines that are not such are left out, the
/// rest counts.
FanRanges parseFanRanges(std::string_view text);
std::string printFanRanges(const FanRanges& ranges);

/// Takes a fan's speeds and widens its range by those that it holds for a while.
class FanWatch {
public:
    void note(FanRange& range, double rpm, double now);

private:
    std::optional<double> lastAt_;
    double reference_ = 0;
    double since_ = 0;
    double sum_ = 0;
    int count_ = 0;
};

/// All fans' ranges, in a small file of the user's. Written at most twice an hour and at the end, as a whole or not at
/// all; a file that cannot be read or written is done without.
class FanMemory {
public:
    /// An empty path keeps nothing beyond this run.
    FanMemory(std::string path, SecondsClock clock);
    FanMemory(const FanMemory&) = delete;
    FanMemory& operator=(const FanMemory&) = delete;
    ~FanMemory();

    /// Stays valid as long as the memory.
    FanRange& of(const std::string& fan) { return ranges_[fan]; }
    /// To be called now and then: writes when it is time.
    void keep();

private:
    void write();

    std::string path_;
    SecondsClock clock_;
    FanRanges ranges_;
    FanRanges written_;
    double writtenAt_ = 0;
};

/// $XDG_STATE_HOME/vantoro/fans, else ~/.local/state/vantoro/fans; empty when neither is an absolute path.
std::string fanMemoryPath(const char* stateHome, const char* home);

} // namespace vantoro
