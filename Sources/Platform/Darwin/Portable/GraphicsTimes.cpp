#include "Platform/Darwin/Portable/GraphicsTimes.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

namespace vantoro {

std::optional<std::int32_t> creatorPid(std::string_view creator) {
    constexpr std::string_view label = "pid ";
    if (!creator.starts_with(label))
        return {};
    creator.remove_prefix(label.size());
    const char* const last = creator.data() + creator.size();
    std::int32_t pid = 0;
    const auto [end, fault] = std::from_chars(creator.data(), last, pid);
    return fault == std::errc() && pid > 0 && (end == last || *end == ',') ? std::optional(pid) : std::nullopt;
}

std::optional<GraphicsShares> GraphicsTimes::shares(const std::vector<GraphicsClientTime>& clients, double seconds) {
    const auto lastAt = std::exchange(readAt_, seconds);
    const double passed = (seconds - lastAt.value_or(seconds)) * 1e9;
    std::unordered_map<std::uint64_t, std::uint64_t> now;
    std::map<std::int32_t, double> percents;
    double all = 0;
    for (const GraphicsClientTime& client : clients) {
        const auto known = before_.find(client.entry);
        const std::uint64_t before = known != before_.end() ? known->second : 0;
        now[client.entry] = std::max(client.nanoseconds, before);
        const double spent =
            client.nanoseconds > before && passed > 0 ? static_cast<double>(client.nanoseconds - before) : 0;
        percents[client.pid] += spent / std::max(passed, 1.0) * 100;
        all += spent / std::max(passed, 1.0) * 100;
    }
    before_ = std::move(now);
    if (!(passed > 0))
        return {};
    const double scale = all > 100 ? 100 / all : 1;
    GraphicsShares shares{.leastBusyPercent = 0};
    for (const auto& [pid, percent] : percents)
        shares.programs.push_back({.pid = pid, .percent = percent * scale});
    return shares;
}

} // namespace vantoro
