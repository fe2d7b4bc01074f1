#include "Platform/Linux/Hwmon/FanLimits.h"

#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr std::int64_t fullDuty = 255;
constexpr double settlingSeconds = 6;
constexpr int fewestLevels = 4;
constexpr double leastDutySpan = 64;
constexpr double leastRise = 1.2;
constexpr double tolerance = 0.08;

constexpr double steadySeconds = 20;
constexpr double longestGapSeconds = 60;
constexpr double daySeconds = 86'400;
constexpr double leastSpanRPM = 300;
constexpr double leastSpanShare = 0.25;

constexpr double writingSeconds = 1800;
constexpr double worthWritingSeconds = 300;
constexpr std::size_t mostRanges = 128;
constexpr std::size_t mostBytes = 65'536;
constexpr std::int64_t mostRPM = 100'000;
constexpr std::int64_t mostSeconds = 4'000'000'000;

/// Takes the next number of a line off its front.
std::optional<std::int64_t> takeNumber(std::string_view& line, std::int64_t most) {
    const std::size_t end = line.find(' ');
    const auto number = end == std::string_view::npos ? std::nullopt : parseWholeNumber(line.substr(0, end));
    if (!number || *number < 0 || *number > most)
        return {};
    line.remove_prefix(end + 1);
    return number;
}

void makeFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        ::mkdir(path.substr(0, slash).c_str(), S_IRWXU);
}

} // namespace

void DutyEvidence::note(std::int64_t duty, double rpm, double now) {
    if (duty < 1 || duty > fullDuty || rpm <= 0) {
        duty_.reset();
        return;
    }
    if (!duty_ || std::abs(*duty_ - duty) > 2) {
        duty_ = duty;
        since_ = now;
    }
    if (now - since_ < settlingSeconds)
        return;
    auto& level = levels_.at(static_cast<std::size_t>(duty) * levelCount / (fullDuty + 1));
    const double share = level ? 0.2 : 1;
    const Level before = level.value_or(Level());
    level = Level{.duty = before.duty + share * (static_cast<double>(duty) - before.duty),
                  .rpm = before.rpm + share * (rpm - before.rpm)};
}

std::optional<double> DutyEvidence::fullSpeed() const {
    int count = 0;
    Level first;
    Level last;
    Level sum;
    double squares = 0;
    double products = 0;
    for (const auto& level : levels_) {
        if (!level)
            continue;
        if (count > 0 && level->rpm < last.rpm * (1 - tolerance / 2))
            return {};
        if (count++ == 0)
            first = *level;
        last = *level;
        sum = {sum.duty + last.duty, sum.rpm + last.rpm};
        squares += last.duty * last.duty;
        products += last.duty * last.rpm;
    }
    if (count < fewestLevels || last.duty - first.duty < leastDutySpan || last.rpm < first.rpm * leastRise)
        return {};
    const double slope = (count * products - sum.duty * sum.rpm) / (count * squares - sum.duty * sum.duty);
    const double base = (sum.rpm - slope * sum.duty) / count;
    for (const auto& level : levels_)
        if (level && std::abs(base + slope * level->duty - level->rpm) > tolerance * last.rpm)
            return {};
    return std::clamp(base + slope * fullDuty, last.rpm, last.rpm * fullDuty / last.duty);
}

bool FanRange::isLearned() const {
    return watchedSeconds >= daySeconds && lowestRPM > 0 &&
           highestRPM - lowestRPM >= std::max(leastSpanRPM, leastSpanShare * highestRPM);
}

bool FanRange::isBeingLearned() const {
    return watchedSeconds < daySeconds;
}

FanRanges parseFanRanges(std::string_view text) {
    FanRanges ranges;
    for (text = text.substr(0, mostBytes); !text.empty() && ranges.size() < mostRanges;) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const auto lowest = takeNumber(line, mostRPM);
        const auto highest = lowest ? takeNumber(line, mostRPM) : std::nullopt;
        const auto seconds = highest ? takeNumber(line, mostSeconds) : std::nullopt;
        if (seconds && *lowest <= *highest && !line.empty())
            ranges[std::string(line)] = {.lowestRPM = static_cast<double>(*lowest),
                                         .highestRPM = static_cast<double>(*highest),
                                         .watchedSeconds = static_cast<double>(*seconds)};
    }
    return ranges;
}

std::string printFanRanges(const FanRanges& ranges) {
    std::string text;
    for (const auto& [fan, range] : ranges)
        text += fmt::format("{:.0f} {:.0f} {:.0f} {}\n", range.lowestRPM, range.highestRPM, range.watchedSeconds, fan);
    return text;
}

void FanWatch::note(FanRange& range, double rpm, double now) {
    const double gap = lastAt_ ? now - *lastAt_ : longestGapSeconds;
    lastAt_ = now;
    if (gap >= 0 && gap < longestGapSeconds)
        range.watchedSeconds += gap;
    constexpr double trembling = 0.04;
    constexpr double leastTremblingRPM = 40;
    if (gap < 0 || gap >= longestGapSeconds || rpm <= 0 ||
        std::abs(rpm - reference_) > std::max(leastTremblingRPM, trembling * reference_)) {
        reference_ = rpm;
        since_ = now;
        sum_ = 0;
        count_ = 0;
    }
    sum_ += rpm;
    ++count_;
    if (now - since_ < steadySeconds || rpm <= 0)
        return;
    const double mean = sum_ / count_;
    range.lowestRPM = range.lowestRPM > 0 ? std::min(range.lowestRPM, mean) : mean;
    range.highestRPM = std::max(range.highestRPM, mean);
}

FanMemory::FanMemory(std::string path, SecondsClock clock)
    : path_(std::move(path)), clock_(std::move(clock)), writtenAt_(clock_()) {
    if (!path_.empty())
        ranges_ = parseFanRanges(readFileAt(AT_FDCWD, path_.c_str(), mostBytes).value_or(""));
    written_ = ranges_;
}

FanMemory::~FanMemory() {
    write();
}

void FanMemory::keep() {
    if (clock_() - writtenAt_ >= writingSeconds)
        write();
}

void FanMemory::write() {
    writtenAt_ = clock_();
    const bool isWorthIt = std::ranges::any_of(ranges_, [this](const auto& each) {
        const auto found = written_.find(each.first);
        const FanRange before = found != written_.end() ? found->second : FanRange();
        const FanRange& range = each.second;
        constexpr double leastChangeRPM = 10;
        return before.isLearned() ? std::abs(range.lowestRPM - before.lowestRPM) >= leastChangeRPM ||
                                        std::abs(range.highestRPM - before.highestRPM) >= leastChangeRPM
                                  : range.watchedSeconds - before.watchedSeconds >= worthWritingSeconds;
    });
    if (path_.empty() || !isWorthIt)
        return;
    written_ = ranges_;
    while (written_.size() > mostRanges)
        written_.erase(
            std::ranges::min_element(written_, {}, [](const auto& each) { return each.second.watchedSeconds; }));
    makeFolders(path_);
    const std::string fresh = fmt::format("{}.{}", path_, ::getpid());
    ::unlink(fresh.c_str());
    Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    const bool isWritten = file && file.write(printFanRanges(written_)) && file.close();
    if (!isWritten || ::rename(fresh.c_str(), path_.c_str()) != 0)
        ::unlink(fresh.c_str());
}

std::string fanMemoryPath(const char* stateHome, const char* home) {
    if (stateHome != nullptr && *stateHome == '/')
        return std::string(stateHome) + "/vantoro/fans";
    return home != nullptr && *home == '/' ? std::string(home) + "/.local/state/vantoro/fans" : "";
}

} // namespace vantoro
