#include "Platform/Linux/Power/LinuxStrain.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

using enum ThrottleReason;

constexpr double sameMomentSeconds = 0.2;

LanedReading<std::int64_t> numberReading(const std::string& path, const std::shared_ptr<SlowLane>& lane) {
    const auto file = std::make_shared<SensorFile>(path);
    return {lane, [file] { return file->readNumber(); }};
}

/// A device that cools by slowing a processor or its graphics part down.
bool slowsDown(std::string_view type) {
    return type == "Processor" || type == "intel_powerclamp" || type.starts_with("thermal-cpufreq") ||
           type.starts_with("cpufreq-") || type.starts_with("thermal-devfreq") || type.starts_with("devfreq-") ||
           type.starts_with("idle-") || type.starts_with("thermal-idle");
}

/// get_throttled of a Raspberry Pi, hexadecimal: what holds now is in the lowest four bits.
ThrottleReasons piReasons(std::string_view text) {
    unsigned bits = 0;
    text = trimmedText(text);
    std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    ThrottleReasons reasons;
    reasons.set(bitOf(power), (bits & 1) != 0); // under-voltage
    reasons.set(bitOf(temperature), (bits & 8) != 0);
    reasons.set(bitOf(firmware), (bits & (2 | 4)) != 0 && (bits & (1 | 8)) == 0);
    return reasons;
}

/// What one reading of the cooling devices and of the firmware takes.
struct CoolingFiles {
    std::vector<SensorFile> states;
    std::optional<SensorFile> firmwareBits;

    ThrottleReasons read() {
        ThrottleReasons reasons;
        for (SensorFile& state : states)
            if (state.readNumber().value_or(0) > 0) {
                reasons.set(bitOf(temperature));
                break;
            }
        char room[32];
        if (const auto text = firmwareBits ? firmwareBits->readText(room, sizeof room) : std::nullopt)
            reasons |= piReasons(*text);
        return reasons;
    }
};

CoolingFiles findCooling(const std::string& root) {
    constexpr std::size_t most = 16;
    CoolingFiles files;
    const std::string folder = root + "/sys/class/thermal/";
    bool hasProcessor = false;
    for (const std::string& name : namesIn(folder)) {
        if (!name.starts_with("cooling_device") || files.states.size() == most)
            continue;
        const std::string type = readTrimmed(folder + name + "/type").value_or("");
        // One without steps, as in a guest of a hypervisor, cannot tell. The firmware's zones slow all processors down
        // together: one speaks for all.
        if (!slowsDown(type) || readWholeNumber(folder + name + "/max_state").value_or(1) <= 0 ||
            (type == "Processor" && std::exchange(hasProcessor, true)))
            continue;
        files.states.emplace_back(folder + name + "/cur_state");
    }
    const std::string bits = root + "/sys/devices/platform/soc/soc:firmware/get_throttled";
    if (::access(bits.c_str(), R_OK) == 0)
        files.firmwareBits.emplace(bits);
    return files;
}

} // namespace

ThrottleCounters::ThrottleCounters(std::string root, std::shared_ptr<SlowLane> lane)
    : root_(std::move(root)), lane_(std::move(lane)) {}

void ThrottleCounters::discover() {
    isDiscovered_ = true;
    const std::string processors = root_ + "/sys/devices/system/cpu/";
    std::set<std::pair<std::int64_t, std::int64_t>> seenCores;
    std::set<std::int64_t> seenPackages;
    for (const std::string& name : namesIn(processors)) {
        const std::string throttle = processors + name + "/thermal_throttle/";
        if (!name.starts_with("cpu") || ::access(throttle.c_str(), F_OK) != 0)
            continue;
        const auto package = readWholeNumber(processors + name + "/topology/physical_package_id").value_or(0);
        const auto core = readWholeNumber(processors + name + "/topology/core_id");
        if (!core || seenCores.emplace(package, *core).second)
            counts_.push_back({.reading = numberReading(throttle + "core_throttle_count", lane_), .last = {}});
        if (!seenPackages.insert(package).second)
            continue;
        counts_.push_back({.reading = numberReading(throttle + "package_throttle_count", lane_), .last = {}});
        if (const std::string time = throttle + "package_throttle_total_time_ms"; ::access(time.c_str(), R_OK) == 0)
            times_.push_back({.reading = numberReading(time, lane_), .last = {}});
    }
}

std::int64_t ThrottleCounters::Counter::growth() {
    const auto now = reading.read();
    const std::int64_t by = now && last ? std::max<std::int64_t>(*now - *last, 0) : 0;
    if (now)
        last = now;
    return by;
}

const ThrottleCounters::Look& ThrottleCounters::look() {
    const double now = lane_->now();
    if (lookedAt_ && now - *lookedAt_ < sameMomentSeconds)
        return last_;
    lookedAt_ = now;
    if (!isDiscovered_)
        discover();
    last_ = {.isKnown = !counts_.empty()};
    for (Counter& count : counts_)
        last_.grew = count.growth() > 0 || last_.grew;
    for (Counter& time : times_)
        last_.milliseconds = std::max(last_.milliseconds, static_cast<double>(time.growth()));
    return last_;
}

ThrottleReasons LastingReasons::add(ThrottleReasons seen, ThrottleReasons lasting, double seconds) {
    constexpr double longestGap = 60;
    if (addedAt_ && seconds - *addedAt_ > longestGap)
        before_ = {};
    addedAt_ = seconds;
    const ThrottleReasons twice = (seen & before_[0]) | (seen & before_[1]) | (before_[0] & before_[1]) | lasting;
    before_[1] = before_[0] | lasting;
    before_[0] = seen | lasting;
    return twice;
}

std::optional<double> parseStall(std::string_view text) {
    constexpr std::string_view label = "some avg10=";
    const std::size_t at = text.find(label);
    if (at == std::string_view::npos)
        return {};
    text = text.substr(at + label.size());
    text = text.substr(0, text.find_first_of(" \n"));
    const std::size_t point = text.find('.');
    const auto whole = parseWholeNumber(text.substr(0, point));
    const std::string_view digits = point == std::string_view::npos ? "0" : text.substr(point + 1, 6);
    const auto fraction = parseWholeNumber(digits);
    if (!whole || !fraction || *whole < 0 || *fraction < 0)
        return {};
    double scale = 1;
    for (std::size_t digit = 0; digit < digits.size(); ++digit)
        scale *= 10;
    return std::min(static_cast<double>(*whole) + static_cast<double>(*fraction) / scale, 100.0);
}

PowerProfile powerProfile(std::string_view word) {
    word = trimmedText(word);
    if (word == "low-power" || word == "cool" || word == "quiet")
        return PowerProfile::saving;
    if (word == "performance" || word == "max-power")
        return PowerProfile::performance;
    return word.starts_with("balanced") ? PowerProfile::balanced : PowerProfile::unknown;
}

LinuxStrain::LinuxStrain(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus,
                         std::shared_ptr<ThrottleCounters> counters)
    : root_(std::move(root)), lane_(std::move(lane)), gpus_(std::move(gpus)), counters_(std::move(counters)) {}

void LinuxStrain::discover() {
    isDiscovered_ = true;
    constexpr std::array<const char*, 3> names{"cpu", "memory", "io"};
    for (std::size_t place = 0; place < names.size(); ++place)
        if (const std::string path = root_ + "/proc/pressure/" + names[place]; ::access(path.c_str(), R_OK) == 0)
            stalls_[place] = SensorFile(path);
    processors_.emplace(root_, discoverHwmon(root_), lane_);
    graphics_.emplace(root_, lane_, gpus_);
    auto cooling = std::make_shared<CoolingFiles>(findCooling(root_));
    if (!cooling->states.empty() || cooling->firmwareBits)
        cooling_.emplace(lane_, [cooling] { return std::optional(cooling->read()); });
    const std::string profile = root_ + "/sys/firmware/acpi/platform_profile";
    if (::access(profile.c_str(), R_OK) == 0)
        profileReading_.emplace(lane_, [file = std::make_shared<SensorFile>(profile)]() -> std::optional<PowerProfile> {
            char room[64];
            const auto text = file->readText(room, sizeof room);
            return text ? std::optional(powerProfile(*text)) : std::nullopt;
        });
}

std::optional<std::vector<ThrottleReason>> LinuxStrain::throttle(const GraphicsReading& graphics, double now) {
    constexpr double leastShare = 0.05;
    const ThrottleCounters::Look& processors = counters_->look();
    const auto cooling = cooling_ ? cooling_->read() : std::nullopt;
    ThrottleReasons seen = graphics.reasons.value_or(ThrottleReasons()) | cooling.value_or(ThrottleReasons());
    ThrottleReasons lasting;
    if (processors.grew)
        seen.set(bitOf(temperature));
    if (readAt_ && processors.milliseconds >= leastShare * (now - *readAt_) * 1000)
        lasting.set(bitOf(temperature), processors.milliseconds > 0);
    ThrottleReasons told = lasting_.add(seen, lasting, now);
    const bool saves = last_.profile == PowerProfile::saving;
    told.set(bitOf(ThrottleReason::profile), saves);
    if (!processors.isKnown && !cooling && !graphics.reasons && !saves)
        return {};
    std::vector<ThrottleReason> reasons;
    for (const ThrottleReason reason : {temperature, power, current, firmware, ThrottleReason::profile})
        if (told.test(bitOf(reason)))
            reasons.push_back(reason);
    return reasons;
}

PowerProfile LinuxStrain::profile(double now) {
    // It is switched by hand, and some firmware takes its time to tell.
    constexpr double restSeconds = 10;
    if (!profileReading_ || (profileReadAt_ && now - *profileReadAt_ < restSeconds))
        return last_.profile;
    profileReadAt_ = now;
    return profileReading_->read().value_or(PowerProfile::unknown);
}

StrainReading LinuxStrain::read() {
    const double now = lane_->now();
    if (readAt_ && now - *readAt_ < sameMomentSeconds)
        return last_;
    if (!isDiscovered_)
        discover();
    const auto share = [this](std::size_t place) -> std::optional<double> {
        char room[256];
        const auto text = stalls_[place].readText(room, sizeof room);
        return text ? parseStall(*text) : std::nullopt;
    };
    last_.stalls = {.cpu = share(0), .memory = share(1), .io = share(2)};
    const GraphicsReading graphics = graphics_->read();
    last_.gpuPercent = graphics.busyPercent;
    last_.gpuAwakePercent = graphics.awakePercent;
    last_.cpuWatts = processors_->watts();
    last_.profile = profile(now);
    last_.throttle = throttle(graphics, now);
    readAt_ = now;
    return last_;
}

} // namespace vantoro
