// What the bits and files mean is in the kernel's sources: drivers/gpu/drm/amd/include/kgd_pp_interface.h and
// pm/swsmu/inc/amdgpu_smu.h, i915/gt/intel_gt_sysfs_pm.c, xe/xe_gt_throttle.c, v3d/v3d_sysfs.c; NVIDIA's in the NVML
// API reference guide.
#include "Platform/Linux/Power/GraphicsDevices.h"

#include "Platform/Linux/Reading/DeviceRest.h"
#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <array>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

using enum ThrottleReason;

struct NamedReason {
    const char* name;
    ThrottleReason reason;
};
constexpr std::array<NamedReason, 8> intelReasons{{{"pl1", power},
                                                   {"pl2", power},
                                                   {"pl4", power},
                                                   {"thermal", temperature},
                                                   {"ratl", temperature},
                                                   {"vr_thermalert", temperature},
                                                   {"vr_tdc", current},
                                                   {"prochot", firmware}}};

std::optional<SensorFile> fileAt(const std::string& path) {
    return ::access(path.c_str(), R_OK) == 0 ? std::optional<SensorFile>(path) : std::nullopt;
}

bool reads(SensorFile& file, std::string_view wanted) {
    char room[32];
    const auto text = file.readText(room, sizeof room);
    return text && trimmedText(*text) == wanted;
}

std::optional<double> credibleShare(std::optional<double> percent) {
    return percent && *percent >= 0 && *percent <= 100 ? percent : std::nullopt;
}

/// One part of an Intel device.
struct IntelLimits {
    SensorFile isLimited;
    /// 0 while the part sleeps, when the limits tell nothing.
    std::optional<SensorFile> frequency;
    std::vector<std::pair<SensorFile, ThrottleReason>> reasons;

    ThrottleReasons read() {
        ThrottleReasons found;
        if (isLimited.readNumber().value_or(0) == 0 || (frequency && frequency->readNumber() == 0))
            return found;
        for (auto& [file, reason] : reasons)
            if (file.readNumber().value_or(0) != 0)
                found.set(bitOf(reason));
        return found;
    }
};

/// For how long one part of an Intel device has slept, in milliseconds.
struct SleptTime {
    SensorFile file;
    std::optional<std::int64_t> last = {};
    double readAt = 0;

    std::optional<double> awakePercent(double now) {
        const auto slept = file.readNumber();
        const auto before = std::exchange(last, slept);
        const double milliseconds = (now - std::exchange(readAt, now)) * 1e3;
        if (!slept || !before || *slept < *before || !(milliseconds > 0))
            return {};
        return std::clamp(100 - static_cast<double>(*slept - *before) / milliseconds * 100, 0.0, 100.0);
    }
};

struct Card {
    std::shared_ptr<DeviceRest> rest;
    std::vector<SensorFile> connectors;
    std::optional<SensorFile> busy;
    std::optional<SensorFile> metrics;
    std::optional<SensorFile> queues;
    std::vector<IntelLimits> limits = {};
    std::vector<SleptTime> slept = {};
    SecondsClock clock;
    bool wasLookedAt = false;
    std::vector<QueueTimes> queueTimes;
    GraphicsReading last;

    bool tellsAnything() const { return busy || metrics || queues || !limits.empty() || !slept.empty(); }

    GraphicsReading look() {
        if (queues) { // it is not woken by it, and sleeps between two pictures
            readQueues();
            return last;
        }
        const double now = clock();
        if (std::ranges::any_of(connectors, [](SensorFile& connector) { return reads(connector, "enabled"); }))
            rest->note(true, now);
        const Look look = rest->at(now, !wasLookedAt);
        wasLookedAt = look == Look::read || (look == Look::hold && wasLookedAt);
        if (look == Look::leave) {
            if (busy)
                last.busyPercent = 0;
            if (last.reasons)
                last.reasons = ThrottleReasons();
            if (last.awakePercent)
                last.awakePercent = 0;
            for (SleptTime& part : slept)
                part.last.reset();
        } else if (look == Look::read) {
            readDevice(now);
            if (last.busyPercent)
                rest->note(*last.busyPercent > 0, now);
        }
        return last;
    }

    void readQueues() {
        char room[1024];
        const auto text = queues->readText(room, sizeof room);
        std::vector<QueueTimes> times = parseQueueTimes(text.value_or(""));
        last.busyPercent = busiestQueue(queueTimes, times);
        queueTimes = std::move(times);
    }

    void readDevice(double now) {
        last = {};
        for (SleptTime& part : slept)
            if (const auto percent = part.awakePercent(now))
                last.awakePercent = std::max(last.awakePercent.value_or(0), *percent);
        if (busy)
            if (const auto percent = busy->readNumber())
                last.busyPercent = credibleShare(static_cast<double>(*percent));
        char room[4096];
        if (const auto bytes = metrics ? metrics->readText(room, sizeof room) : std::nullopt)
            last.reasons = parseGpuMetrics(*bytes);
        for (IntelLimits& part : limits)
            last.reasons = last.reasons.value_or(ThrottleReasons()) | part.read();
    }
};

void addLimits(Card& card, const std::string& folder, const char* status, const char* prefix, const char* frequency) {
    auto isLimited = fileAt(folder + "/" + status);
    if (!isLimited)
        return;
    IntelLimits part{.isLimited = std::move(*isLimited), .frequency = fileAt(folder + "/" + frequency)};
    for (const auto& [name, reason] : intelReasons)
        part.reasons.emplace_back(folder + "/" + prefix + name, reason);
    card.limits.push_back(std::move(part));
}

void addSlept(Card& card, const std::string& path) {
    if (auto file = fileAt(path))
        card.slept.push_back({.file = std::move(*file)});
}

std::uint64_t wordAt(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint64_t word = 0;
    for (std::size_t place = size; place-- > 0;)
        word = word << 8 | static_cast<unsigned char>(bytes[at + place]);
    return word;
}

/// Whether any of the bits first to last is set.
bool hasAny(std::uint64_t bits, unsigned first, unsigned last) {
    return (bits >> first & ((std::uint64_t{1} << (last - first + 1)) - 1)) != 0;
}

} // namespace

void GraphicsReading::add(const GraphicsReading& other) {
    if (other.busyPercent)
        busyPercent = std::max(busyPercent.value_or(0), *other.busyPercent);
    if (other.reasons)
        reasons = reasons.value_or(ThrottleReasons()) | *other.reasons;
    if (other.awakePercent)
        awakePercent = std::max(awakePercent.value_or(0), *other.awakePercent);
}

std::optional<ThrottleReasons> parseGpuMetrics(std::string_view bytes) {
    constexpr std::uint64_t hotCelsius = 90;
    constexpr std::uint64_t noReading = 0xFFFF;
    if (bytes.size() < 4)
        return {};
    const std::uint64_t format = wordAt(bytes, 2, 1);
    const std::uint64_t content = wordAt(bytes, 3, 1);
    const bool isCard = format == 1 && content == 3;
    const bool isPartOfProcessor = format == 2 && content >= 2 && content <= 4;
    const std::size_t at = isCard ? 112 : 120;
    if ((!isCard && !isPartOfProcessor) || bytes.size() < at + 8)
        return {};
    // A card's edge, hottest spot and memory in degrees; graphics, chip and eight cores in hundredths.
    std::uint64_t hottest = 0;
    for (std::size_t place = 0; place < (isCard ? 3 : 10); ++place)
        if (const std::uint64_t value = wordAt(bytes, 4 + 2 * place, 2); value != noReading)
            hottest = std::max(hottest, value);
    const std::uint64_t limiters = wordAt(bytes, at, 8);
    if (limiters == ~std::uint64_t{0}) // a table that the firmware has not filled
        return {};
    ThrottleReasons reasons;
    reasons.set(bitOf(power), hasAny(limiters, 0, 7));
    reasons.set(bitOf(current), hasAny(limiters, 16, 23));
    reasons.set(bitOf(temperature), hasAny(limiters, 32, 45) && hottest >= hotCelsius * (isCard ? 1 : 100));
    reasons.set(bitOf(firmware), hasAny(limiters, 46, 47));
    return reasons;
}

ThrottleReasons nvidiaReasons(std::uint64_t events) {
    constexpr std::uint64_t powerCap = 0x4 | 0x80;
    constexpr std::uint64_t thermal = 0x20 | 0x40;
    constexpr std::uint64_t hardware = 0x8; // which also stands beside the hardware's own reasons
    ThrottleReasons reasons;
    reasons.set(bitOf(power), (events & powerCap) != 0);
    reasons.set(bitOf(temperature), (events & thermal) != 0);
    reasons.set(bitOf(firmware), (events & hardware) != 0 && (events & (0x40 | 0x80)) == 0);
    return reasons;
}

std::optional<double> parseBoardLoad(std::string_view text) {
    text = trimmedText(text);
    const std::size_t at = text.find('@');
    const auto load = parseWholeNumber(text.substr(0, at));
    if (!load)
        return {};
    return credibleShare(static_cast<double>(*load) / (at == std::string_view::npos ? 10 : 1));
}

std::vector<QueueTimes> parseQueueTimes(std::string_view text) {
    std::vector<QueueTimes> queues;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        // The name, the moment, how many jobs, the time worked.
        if (const std::vector<std::int64_t> fields = parseWholeNumbers(line); fields.size() == 3)
            queues.push_back({.now = fields[0], .worked = fields[2]});
    }
    return queues;
}

std::optional<double> busiestQueue(const std::vector<QueueTimes>& before, const std::vector<QueueTimes>& now) {
    std::optional<double> busiest;
    for (std::size_t place = 0; place < std::min(before.size(), now.size()); ++place) {
        const auto passed = static_cast<double>(now[place].now) - static_cast<double>(before[place].now);
        const auto worked = static_cast<double>(now[place].worked) - static_cast<double>(before[place].worked);
        if (passed > 0 && worked >= 0)
            busiest = std::max(busiest.value_or(0), std::min(worked / passed * 100, 100.0));
    }
    return busiest;
}

GraphicsDevices::GraphicsDevices(const std::string& root, const std::shared_ptr<SlowLane>& lane,
                                 std::shared_ptr<NvidiaGPUs> gpus)
    : gpus_(std::move(gpus)) {
    const std::string folder = root + "/sys/class/drm/";
    const std::vector<std::string> names = namesIn(folder);
    for (const std::string& name : names) {
        if (!name.starts_with("card") || name.find_first_not_of("0123456789", 4) != std::string::npos)
            continue;
        const std::string device = folder + name + "/device";
        const auto card = std::make_shared<Card>(Card{.rest = graphicsRest(device),
                                                      .busy = fileAt(device + "/gpu_busy_percent"),
                                                      .metrics = fileAt(device + "/gpu_metrics"),
                                                      .queues = fileAt(device + "/gpu_stats"),
                                                      .clock = lane->clock()});
        const std::string parts = folder + name + "/gt/";
        for (const std::string& part : namesIn(parts)) {
            addLimits(*card, parts + part, "throttle_reason_status", "throttle_reason_", "rps_act_freq_mhz");
            addSlept(*card, parts + part + "/rc6_residency_ms");
        }
        for (const std::string& tile : namesIn(device))
            if (tile.starts_with("tile"))
                for (const std::string& part : namesIn(device + "/" + tile))
                    if (const std::string place = device + "/" + tile + "/" + part; part.starts_with("gt")) {
                        addLimits(*card, place + "/freq0", "throttle/status", "throttle/reason_", "act_freq");
                        addSlept(*card, place + "/gtidle/idle_residency_ms");
                    }
        if (!card->tellsAnything())
            continue;
        for (const std::string& connector : names)
            if (connector.starts_with(name + "-"))
                card->connectors.emplace_back(folder + connector + "/enabled");
        cards_.emplace_back(lane, [card] { return std::optional(card->look()); });
    }
    addBoards(root, lane);
}

void GraphicsDevices::addBoards(const std::string& root, const std::shared_ptr<SlowLane>& lane) {
    constexpr std::array<std::string_view, 6> chips{"gpu", "mali", "gm20b", "gp10b", "gv11b", "ga10b"};
    const std::string folder = root + "/sys/class/devfreq/";
    for (const std::string& name : namesIn(folder)) {
        if (std::ranges::none_of(chips, [&](std::string_view chip) { return name.find(chip) != std::string::npos; }))
            continue;
        auto load = fileAt(folder + name + "/load");
        if (!load)
            load = fileAt(folder + name + "/device/load");
        if (!load)
            continue;
        cards_.emplace_back(lane, [file = std::make_shared<SensorFile>(std::move(*load))] {
            char room[64];
            const auto text = file->readText(room, sizeof room);
            return std::optional(GraphicsReading{.busyPercent = text ? parseBoardLoad(*text) : std::nullopt});
        });
    }
}

GraphicsReading GraphicsDevices::read() {
    GraphicsReading all;
    for (auto& card : cards_)
        if (const auto reading = card.read())
            all.add(*reading);
    if (gpus_)
        for (const auto& reading : gpus_->readings())
            if (reading)
                all.add({.busyPercent = credibleShare(reading->busyPercent),
                         .reasons = reading->clockEvents ? std::optional(nvidiaReasons(*reading->clockEvents))
                                                         : std::nullopt});
    return all;
}

} // namespace vantoro
