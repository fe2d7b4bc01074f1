#include "Platform/Linux/Processor/CpuClocks.h"

#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <unistd.h>

namespace vantoro {

namespace {

/// More processors than any kernel is built for.
constexpr std::int64_t mostProcessors = 65536;
/// More than any processor runs at, in kHz: a driver that says so has no reading.
constexpr double mostKHz = 20e6;

/// A boost is a state of its own with other drivers; this one's states are those of the firmware's table.
bool statesLeaveBoostOut(const std::string& folder) {
    return readTrimmed(folder + "/scaling_driver") == "acpi-cpufreq";
}

std::string frequencyPath(const std::string& folder) {
    std::string mean = folder + "/cpuinfo_avg_freq";
    return ::access(mean.c_str(), R_OK) == 0 ? mean : folder + "/scaling_cur_freq";
}

} // namespace

TimeInState parseTimeInState(std::string_view text) {
    TimeInState states;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::vector<std::int64_t> fields = parseWholeNumbers(line);
        if (fields.size() == 2 && fields[0] > 0 && fields[1] >= 0)
            states.emplace_back(fields[0], static_cast<std::uint64_t>(fields[1]));
    }
    return states;
}

std::optional<double> meanFrequency(const TimeInState& before, const TimeInState& now) {
    double weighted = 0;
    double total = 0;
    for (std::size_t place = 0; place < std::min(before.size(), now.size()); ++place) {
        const auto& [frequency, time] = now[place];
        if (before[place].first != frequency || time < before[place].second)
            return {}; // another table, or counters that were reset
        const auto spent = static_cast<double>(time - before[place].second);
        weighted += spent * static_cast<double>(frequency);
        total += spent;
    }
    return total > 0 ? std::optional(weighted / total) : std::nullopt;
}

struct CpuClocks::Policy {
    SensorFile file;
    bool countsTime = false;
    TimeInState times;
    /// 0 until known.
    double kilohertz = 0;
    double readAt = 0;

    void update(double now) {
        // What was before nobody looked is not of late.
        constexpr double longestGap = 60;
        if (now - readAt > longestGap) {
            times.clear();
            kilohertz = 0;
        }
        readAt = now;
        char room[4096]; // the kernel gives at most one page of it
        const auto text = file.readText(room, sizeof room);
        if (!text) {
            kilohertz = 0;
        } else if (countsTime) {
            TimeInState states = parseTimeInState(*text);
            kilohertz = meanFrequency(times, states).value_or(kilohertz);
            times = std::move(states);
        } else {
            const auto present = static_cast<double>(parseWholeNumber(*text).value_or(0));
            kilohertz = present > 0 && present <= mostKHz ? present : 0;
        }
    }
};

CpuClocks::CpuClocks(const std::string& root, const std::shared_ptr<SlowLane>& lane) {
    const std::string folder = root + "/sys/devices/system/cpu/cpufreq/";
    const auto found = std::make_shared<std::vector<Policy>>();
    for (const std::string& name : namesIn(folder)) {
        if (!name.starts_with("policy"))
            continue;
        const std::string place = folder + name;
        const std::string times = place + "/stats/time_in_state";
        const TimeInState states = parseTimeInState(readTrimmed(times).value_or(""));
        const bool countsTime = !states.empty() && !statesLeaveBoostOut(place);
        std::int64_t ceiling = readWholeNumber(place + "/cpuinfo_max_freq").value_or(0);
        for (const auto& [frequency, time] : states)
            ceiling = std::max(ceiling, frequency);
        for (const std::int64_t processor : parseWholeNumbers(readTrimmed(place + "/related_cpus").value_or(""))) {
            if (processor < 0 || processor >= mostProcessors)
                continue;
            policies_.resize(std::max(policies_.size(), static_cast<std::size_t>(processor) + 1), -1);
            policies_[static_cast<std::size_t>(processor)] = static_cast<int>(found->size());
        }
        found->push_back({.file = SensorFile(countsTime ? times : frequencyPath(place)), .countsTime = countsTime});
        ceilingsKHz_.push_back(ceiling);
    }
    if (!policies_.empty())
        reading_.emplace(lane, [found, clock = lane->clock()]() -> std::optional<std::vector<double>> {
            const double now = clock();
            std::vector<double> kilohertz;
            kilohertz.reserve(found->size());
            for (Policy& policy : *found) {
                policy.update(now);
                kilohertz.push_back(policy.kilohertz);
            }
            return kilohertz;
        });
}

double CpuClocks::ceilingMHz(const std::vector<int>& processors) const {
    std::int64_t highest = 0;
    for (const int processor : processors)
        if (const auto place = static_cast<std::size_t>(processor); place < policies_.size() && policies_[place] >= 0)
            highest = std::max(highest, ceilingsKHz_[static_cast<std::size_t>(policies_[place])]);
    return static_cast<double>(highest) / 1000;
}

void CpuClocks::read(const std::vector<int>& processors, std::vector<double>& megahertz) {
    const auto kilohertz = reading_ ? reading_->read() : std::nullopt;
    megahertz.assign(processors.size(), 0);
    for (std::size_t at = 0; kilohertz && at < processors.size(); ++at)
        if (const auto place = static_cast<std::size_t>(processors[at]);
            place < policies_.size() && policies_[place] >= 0)
            megahertz[at] = (*kilohertz)[static_cast<std::size_t>(policies_[place])] / 1000;
}

} // namespace vantoro
