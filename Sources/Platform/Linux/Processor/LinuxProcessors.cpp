#include "Platform/Linux/Processor/LinuxProcessors.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <cerrno>

namespace vantoro {

std::map<int, HostTicks> parseProcessorTicks(std::string_view text) {
    std::map<int, HostTicks> all;
    while (text.starts_with("cpu")) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const auto processor = parseWholeNumber(line.substr(3, line.find(' ') - 3));
        const std::vector<std::int64_t> fields = parseWholeNumbers(line.substr(std::min(line.size(), line.find(' '))));
        if (!processor || fields.size() < 4) // the first line is the sum of all and has no number
            continue;
        const auto field = [&fields](std::size_t place) {
            return place < fields.size() ? static_cast<std::uint32_t>(fields[place]) : 0;
        };
        all[static_cast<int>(*processor)] = {
            .user = field(0), .system = field(2) + field(5) + field(6), .idle = field(3) + field(4), .nice = field(1)};
    }
    return all;
}

LinuxProcessors::LinuxProcessors(const std::string& root) : root_(root), stat_(root + "/proc/stat") {}

ProcessorCounts LinuxProcessors::counts() {
    const CpuTopology topology = readCpuTopology(root_);
    order_ = topology.efficiency;
    order_.insert(order_.end(), topology.performance.begin(), topology.performance.end());
    return {.performance = static_cast<int>(topology.performance.size()),
            .efficiency = static_cast<int>(topology.efficiency.size()),
            .all = static_cast<int>(order_.size())};
}

int LinuxProcessors::readTicks(std::vector<HostTicks>& ticks) {
    if (order_.empty())
        counts();
    const auto text = stat_.read();
    if (!text)
        return EIO;
    for (const auto& [processor, counted] : parseProcessorTicks(*text))
        last_[processor] = counted;
    if (last_.empty())
        return EIO;
    ticks.clear();
    for (const int processor : order_)
        ticks.push_back(last_[processor]);
    return 0;
}

} // namespace vantoro
