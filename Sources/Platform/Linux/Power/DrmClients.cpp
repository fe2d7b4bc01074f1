#include "Platform/Linux/Power/DrmClients.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace vantoro {

namespace {

constexpr std::size_t mostEngines = 64;

std::optional<std::uint64_t> leadingNumber(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    return fault == std::errc() ? std::optional(number) : std::nullopt;
}

std::optional<std::uint64_t> hertz(std::string_view text) {
    const auto number = leadingNumber(text);
    const std::uint64_t unit = text.ends_with("MHz") ? 1'000'000 : text.ends_with("KHz") ? 1000 : 1;
    return number && *number > 0 && *number < ~std::uint64_t{0} / unit ? std::optional(*number * unit) : std::nullopt;
}

bool takePrefix(std::string_view& key, std::string_view prefix) {
    const bool has = key.size() > prefix.size() && key.starts_with(prefix);
    if (has)
        key.remove_prefix(prefix.size());
    return has;
}

void takeEngineLine(std::vector<DrmEngine>& engines, std::string_view key, std::string_view value) {
    const auto engine = [&]() -> DrmEngine& {
        const auto known = std::ranges::find(engines, key, &DrmEngine::name);
        return known != engines.end() ? *known : engines.emplace_back(DrmEngine{.name = key});
    };
    if (engines.size() == mostEngines)
        return;
    const auto number = leadingNumber(value);
    // What is said of a group only, without its work, makes no engine of it; the order of the lines is the driver's.
    if (takePrefix(key, "drm-engine-capacity-")) {
        if (number && *number > 0)
            engine().capacity = *number;
    } else if (takePrefix(key, "drm-engine-")) {
        if (number)
            engine().nanoseconds = number;
    } else if (takePrefix(key, "drm-total-cycles-")) {
        if (number)
            engine().totalCycles = number;
    } else if (takePrefix(key, "drm-cycles-")) {
        if (number)
            engine().cycles = number;
    } else if (takePrefix(key, "drm-maxfreq-")) {
        if (const auto most = hertz(value))
            engine().mostHertz = most;
    }
}

bool tells(const DrmEngine& engine) {
    return engine.nanoseconds || (engine.cycles && (engine.totalCycles || engine.mostHertz));
}

} // namespace

std::string_view graphicsNode(std::string_view openFile) {
    constexpr std::string_view folder = "/dri/";
    const std::size_t at = openFile.rfind(folder);
    if (at == std::string_view::npos)
        return {};
    const std::string_view node = openFile.substr(at + folder.size());
    for (const std::string_view kind : {"renderD", "card"})
        if (node.size() > kind.size() && node.starts_with(kind) &&
            node.find_first_not_of("0123456789", kind.size()) == std::string_view::npos)
            return node;
    return {};
}

bool DrmUsage::tellsWork() const {
    return namesWorkersOnly() || std::ranges::any_of(engines, tells);
}

std::optional<DrmUsage> parseDrmUsage(std::string_view text) {
    DrmUsage usage;
    std::optional<std::uint64_t> client;
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        const std::string_view line = text.substr(0, end);
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos || !line.starts_with("drm-"))
            continue;
        const std::string_view key = line.substr(0, colon);
        const std::string_view value = trimmedText(line.substr(colon + 1));
        if (key == "drm-driver")
            usage.driver = value;
        else if (key == "drm-pdev")
            usage.address = value;
        else if (key == "drm-client-id")
            client = leadingNumber(value);
        else
            takeEngineLine(usage.engines, key, value);
    }
    if (!client || usage.driver.empty())
        return {};
    usage.client = *client;
    return usage;
}

std::optional<double> DrmMeter::share(Engine& engine, const DrmEngine& now, double seconds) {
    constexpr int mostReadingsBehind = 3;
    const std::uint64_t worked = now.nanoseconds ? *now.nanoseconds : now.cycles.value_or(0);
    const std::uint64_t before = std::exchange(engine.total, now.totalCycles.value_or(0));
    if (worked < engine.worked) {
        if (++engine.readingsBehind == mostReadingsBehind)
            engine = {.name = std::move(engine.name), .worked = worked, .total = engine.total};
        return 0;
    }
    engine.readingsBehind = 0;
    const auto spent = static_cast<double>(worked - std::exchange(engine.worked, worked));
    double whole = 0;
    if (now.nanoseconds)
        whole = seconds * 1e9;
    else if (now.totalCycles)
        whole = engine.total > before ? static_cast<double>(engine.total - before) : 0;
    else if (now.mostHertz)
        whole = seconds * static_cast<double>(*now.mostHertz);
    if (!(whole > 0))
        return {};
    return std::min(spent / (whole * static_cast<double>(now.capacity)) * 100, 100.0);
}

void DrmMeter::take(const DrmUsage& usage, double seconds) {
    shares_.clear();
    const bool isFirst = !takenAt_;
    const double passed = seconds - takenAt_.value_or(seconds);
    takenAt_ = seconds;
    isKnown_ = !isFirst && usage.tellsWork();
    for (const DrmEngine& now : usage.engines) {
        if (!tells(now))
            continue;
        auto known = std::ranges::find(engines_, now.name, &Engine::name);
        const bool isNew = known == engines_.end();
        if (isNew)
            known = engines_.insert(engines_.end(), Engine{.name = std::string(now.name)});
        const bool hasBefore = !isFirst && (!isNew || usage.namesWorkersOnly());
        const auto percent = share(*known, now, passed);
        if (hasBefore && percent && *percent > 0)
            shares_.push_back({.engine = known->name, .percent = *percent});
    }
}

} // namespace vantoro
