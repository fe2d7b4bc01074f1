#include "CSensors/cpufreq.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

constexpr int mostEntries = 32;
constexpr std::size_t mostCores = 32;
constexpr int mostStates = 32;
constexpr std::size_t longestName = 31;

struct FrequencyTable {
    /// MHz, in the registry's order: the last is the highest.
    std::array<double, mostEntries> megahertz{};
    int count = 0;

    double last() const { return count > 0 ? megahertz[static_cast<std::size_t>(count - 1)] : 0; }
};

struct CoreResidency {
    std::string name;
    bool isEfficiency = false;
    std::array<std::uint64_t, mostStates> previous{};
    /// A call before has stored the counters, so that differences mean something.
    bool primed = false;
};

struct State {
    std::shared_ptr<FrequencyTables> tables;
    std::shared_ptr<StateReport> report;
    bool ready = false;
    FrequencyTable efficiency;
    FrequencyTable performance;
    /// In order of first appearance.
    std::vector<CoreResidency> cores;
};

State state;

FrequencyTable tableNamed(const RegistryEntry& entry, const std::string& property) {
    FrequencyTable table;
    table.count = load_states(entry, property.c_str(), table.megahertz.data());
    return table;
}

/// The numbers that a property lists, as little-endian words.
std::vector<std::uint32_t> wordsOf(const RegistryEntry& entry, const char* property) {
    std::vector<std::uint32_t> words;
    const std::vector<std::uint8_t> bytes = entry.data(property).value_or(std::vector<std::uint8_t>());
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4)
        words.push_back(bytes[at] | std::uint32_t{bytes[at + 1]} << 8 | std::uint32_t{bytes[at + 2]} << 16 |
                        std::uint32_t{bytes[at + 3]} << 24);
    return words;
}

/// The table of the middle tier: one of those that the list of clusters names, else of those where chips are known to
/// have it. Empty when it is in none of them.
FrequencyTable middleTable(const RegistryEntry& entry, const FrequencyTable& performance) {
    constexpr std::uint32_t mostTables = 64; // what lists clusters may hold other numbers, such as addresses
    std::vector<std::uint32_t> candidates = wordsOf(entry, "acc-clusters");
    candidates.insert(candidates.end(), {22, 23});
    for (const std::uint32_t number : candidates) {
        if (number >= mostTables || number == 1 || number == 5)
            continue;
        FrequencyTable table = tableNamed(entry, "voltage-states" + std::to_string(number) + "-sram");
        // Tables of graphics and fabric end far below those of processors.
        if (table.count > 0 && table.last() >= performance.last() / 2)
            return table;
    }
    return {};
}

bool loadTables(const RegistryEntry& entry) {
    state.performance = tableNamed(entry, "voltage-states5-sram");
    state.efficiency = state.tables->hasMiddleTier() ? middleTable(entry, state.performance)
                                                     : tableNamed(entry, "voltage-states1-sram");
    return state.efficiency.count > 0 || state.performance.count > 0;
}

bool findTables() {
    if (!state.tables)
        return false;
    const std::unique_ptr<RegistryEntry> entry = state.tables->entryAtPath("IODeviceTree:/arm-io/pmgr");
    if (entry && loadTables(*entry))
        return true;
    const auto entries = state.tables->entriesNamed("pmgr");
    return entries && std::ranges::any_of(*entries, [](const auto& each) { return each && loadTables(*each); });
}

/// Whether a channel is a core of the slower kind; none when it is no core.
std::optional<bool> isEfficiencyChannel(std::string_view name) {
    if (name.starts_with("MCPU"))
        return state.tables->hasMiddleTier();
    if (name.starts_with("ECPU"))
        return true;
    return name.starts_with("PCPU") ? std::optional(false) : std::nullopt;
}

/// The position in the table that a state's name gives; -1 for a state without a frequency.
int tablePosition(std::optional<std::string_view> name, int count) {
    if (!name || name->size() < 2 || name->front() != 'V' || name->at(1) == '-')
        return -1;
    int position = -1;
    const auto [rest, error] = std::from_chars(name->data() + 1, name->data() + name->size(), position);
    return error == std::errc{} && position < count ? position : -1;
}

/// The core's position among those known, which it joins when it is new; none when there is no room for it.
std::optional<std::size_t> coreNamed(std::string_view name, bool isEfficiency) {
    const auto found = std::ranges::find(state.cores, name, &CoreResidency::name);
    if (found != state.cores.end())
        return static_cast<std::size_t>(found - state.cores.begin());
    if (state.cores.size() >= mostCores)
        return std::nullopt;
    state.cores.push_back({.name = std::string(name), .isEfficiency = isEfficiency});
    return state.cores.size() - 1;
}

/// The mean of the table's frequencies by the time spent at each since the call before; the lowest when that is none.
double meanFrequency(CoreResidency& core, const FrequencyTable& table, const StateSample& sample, int channel) {
    const int states = std::min(sample.stateCount(channel), mostStates);
    double weighted = 0;
    double total = 0;
    for (int each = 0; each < states; ++each) {
        std::uint64_t& previous = core.previous[static_cast<std::size_t>(each)];
        const std::uint64_t residency = sample.residency(channel, each);
        // A counter that went back gives a negative difference.
        const auto delta = static_cast<std::int64_t>(residency - std::exchange(previous, residency));
        if (!core.primed || delta < 1)
            continue;
        const int position = tablePosition(sample.stateName(channel, each), table.count);
        if (position < 0)
            continue;
        weighted += static_cast<double>(delta) * table.megahertz[static_cast<std::size_t>(position)];
        total += static_cast<double>(delta);
    }
    core.primed = true;
    return total > 0 ? weighted / total : table.megahertz[0];
}

} // namespace

void cpufreq_use(std::shared_ptr<FrequencyTables> tables, std::shared_ptr<StateReport> report) {
    state = {.tables = std::move(tables), .report = std::move(report)};
}

int cpufreq_init() {
    if (!state.ready)
        state.ready = state.report && state.report->load() && findTables() && state.report->subscribe();
    return state.ready ? 1 : 0;
}

double cpufreq_max_performance() {
    return state.performance.last();
}

double cpufreq_max_efficiency() {
    return state.efficiency.last();
}

std::int32_t cpufreq_sample(double* mhz_out, std::uint8_t* is_efficiency_out, std::int32_t capacity) {
    if (cpufreq_init() == 0)
        return 0;
    const std::unique_ptr<StateSample> sample = state.report->sample();
    if (!sample)
        return 0;
    const auto room = static_cast<std::size_t>(std::max(capacity, 0));
    const auto put = [&](std::size_t position, double megahertz) {
        if (position < room) {
            mhz_out[position] = megahertz;
            is_efficiency_out[position] = state.cores[position].isEfficiency ? 1 : 0;
        }
    };
    // A core that this sample leaves out still holds its place, so that those after it keep theirs.
    for (std::size_t i = 0; i < state.cores.size(); ++i)
        put(i, 0);

    for (int channel = 0; channel < sample->channelCount(); ++channel) {
        const std::optional<std::string_view> name = sample->channelName(channel);
        if (!name || name->size() > longestName)
            continue;
        const std::optional<bool> isEfficiency = isEfficiencyChannel(*name);
        if (!isEfficiency)
            continue;
        const std::optional<std::size_t> position = coreNamed(*name, *isEfficiency);
        if (!position)
            continue;
        const FrequencyTable& table = *isEfficiency ? state.efficiency : state.performance;
        put(*position, table.count > 0 ? meanFrequency(state.cores[*position], table, *sample, channel) : 0);
    }
    return static_cast<std::int32_t>(std::min(state.cores.size(), room));
}

int load_states(const RegistryEntry& entry, const char* property_name, double table_out[32]) {
    constexpr std::size_t recordBytes = 8;
    const std::optional<std::vector<std::uint8_t>> data = entry.data(property_name);
    if (!data)
        return 0;
    int count = 0;
    for (std::size_t at = 0; at + recordBytes <= data->size() && count < mostEntries; at += recordBytes) {
        std::uint32_t kilohertz = 0;
        for (std::size_t i = 4; i-- > 0;)
            kilohertz = kilohertz << 8 | (*data)[at + i];
        if (kilohertz != 0)
            table_out[count++] = kilohertz / 1000.0;
    }
    return count;
}

} // namespace vantoro
