#include "Platform/Linux/Processor/CpufreqPolicies.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>

namespace vantoro {

namespace {

CpufreqPolicy readPolicy(const std::string& folder) {
    CpufreqPolicy policy{.folder = folder};
    for (const std::int64_t processor : parseWholeNumbers(readTrimmed(folder + "/related_cpus").value_or("")))
        policy.processors.push_back(static_cast<int>(processor));
    policy.minimumKHz = readWholeNumber(folder + "/cpuinfo_min_freq").value_or(0);
    policy.maximumKHz = readWholeNumber(folder + "/cpuinfo_max_freq").value_or(0);
    for (const auto& [frequency, time] : parseTimeInState(readTrimmed(folder + "/stats/time_in_state").value_or("")))
        policy.frequencies.push_back(frequency);
    policy.countsTime = !policy.frequencies.empty();
    if (!policy.countsTime)
        policy.frequencies = parseWholeNumbers(readTrimmed(folder + "/scaling_available_frequencies").value_or(""));
    std::erase_if(policy.frequencies, [](std::int64_t frequency) { return frequency <= 0; });
    std::ranges::sort(policy.frequencies);
    return policy;
}

std::vector<std::int64_t> makeTable(const std::vector<CpufreqPolicy>& policies, bool isEfficiency) {
    std::vector<std::int64_t> all;
    std::int64_t lowest = 0;
    std::int64_t highest = 0;
    bool hasSteps = true;
    for (const CpufreqPolicy& policy : policies) {
        if (policy.isEfficiency != isEfficiency)
            continue;
        hasSteps = hasSteps && !policy.frequencies.empty();
        all.insert(all.end(), policy.frequencies.begin(), policy.frequencies.end());
        // A policy's limits count also where its steps leave them out, as for boost.
        for (const std::int64_t limit : {policy.minimumKHz, policy.maximumKHz})
            if (limit > 0)
                all.push_back(limit);
    }
    std::ranges::sort(all);
    all.erase(std::unique(all.begin(), all.end()), all.end());
    if (all.empty())
        return all;
    lowest = all.front();
    highest = all.back();
    return hasSteps ? thinned(std::move(all), mostTableFrequencies)
                    : evenlySpaced(lowest, highest, mostTableFrequencies);
}

} // namespace

std::vector<std::pair<std::int64_t, std::uint64_t>> parseTimeInState(std::string_view text) {
    std::vector<std::pair<std::int64_t, std::uint64_t>> states;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::vector<std::int64_t> fields = parseWholeNumbers(line);
        if (fields.size() == 2 && fields[0] > 0 && fields[1] >= 0)
            states.emplace_back(fields[0], static_cast<std::uint64_t>(fields[1]));
    }
    return states;
}

std::vector<std::int64_t> thinned(std::vector<std::int64_t> values, std::size_t most) {
    if (values.size() <= most)
        return values;
    std::vector<std::int64_t> kept;
    for (std::size_t place = 0; place < most; ++place)
        kept.push_back(values[place * (values.size() - 1) / (most - 1)]);
    return kept;
}

std::vector<std::int64_t> evenlySpaced(std::int64_t lowest, std::int64_t highest, std::size_t count) {
    if (lowest >= highest)
        return {lowest};
    std::vector<std::int64_t> values;
    const auto gaps = static_cast<std::int64_t>(count) - 1;
    for (std::int64_t place = 0; place <= gaps; ++place)
        values.push_back(lowest + (highest - lowest) * place / gaps);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

FrequencyMixture mixtureOf(const std::vector<std::int64_t>& table, double frequency) {
    if (frequency <= static_cast<double>(table.front()))
        return {};
    if (frequency >= static_cast<double>(table.back()))
        return {.lower = table.size() - 1, .upper = table.size() - 1};
    const auto above = static_cast<std::size_t>(
        std::ranges::find_if(table, [=](std::int64_t entry) { return static_cast<double>(entry) > frequency; }) -
        table.begin());
    const auto lower = static_cast<double>(table[above - 1]);
    return {.lower = above - 1,
            .upper = above,
            .upperShare = (frequency - lower) / (static_cast<double>(table[above]) - lower)};
}

CpufreqPolicies readCpufreqPolicies(const std::string& root) {
    CpufreqPolicies all;
    all.topology = readCpuTopology(root);
    const std::string folder = root + "/sys/devices/system/cpu/cpufreq/";
    for (const std::string& name : namesIn(folder)) {
        if (!name.starts_with("policy"))
            continue;
        CpufreqPolicy policy = readPolicy(folder + name);
        if (policy.processors.empty() || (policy.frequencies.empty() && policy.maximumKHz <= 0))
            continue;
        policy.isEfficiency =
            std::ranges::find(all.topology.efficiency, policy.processors.front()) != all.topology.efficiency.end();
        all.policies.push_back(std::move(policy));
    }
    all.efficiencyTable = makeTable(all.policies, true);
    all.performanceTable = makeTable(all.policies, false);
    return all;
}

} // namespace vantoro
