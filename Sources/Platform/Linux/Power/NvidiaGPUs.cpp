// The library's functions and constants are those of its public interface (NVML API reference guide).
#include "Platform/Linux/Power/NvidiaGPUs.h"

#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <dlfcn.h>
#include <map>
#include <utility>

namespace vantoro {

namespace {

using NvmlDevice = void*;
constexpr int nvmlSuccess = 0;
/// NVML_INIT_FLAG_NO_ATTACH: initialising touches no device.
constexpr unsigned initNoAttach = 2;
/// NVML_TEMPERATURE_GPU.
constexpr int temperatureOfDie = 0;

/// nvmlUtilization_t, per cent.
struct Utilization {
    unsigned gpu = 0;
    unsigned memory = 0;
};

/// nvmlProcessUtilizationSample_t.
struct ProcessSampleRecord {
    unsigned pid = 0;
    unsigned long long timeStamp = 0;
    unsigned cores = 0;
    unsigned memory = 0;
    unsigned encoder = 0;
    unsigned decoder = 0;
};
static_assert(sizeof(ProcessSampleRecord) == 32);
constexpr int nvmlNotFound = 6;
constexpr int nvmlInsufficientSize = 7;

struct CloseLibrary {
    void operator()(void* library) const { ::dlclose(library); }
};

template <typename Function>
void look(void* library, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(::dlsym(library, name));
}

class SystemNvml : public Nvml {
public:
    ~SystemNvml() override { close(); }

    bool open() override {
        if (!isOpen_ && load())
            isOpen_ = initialise_(initNoAttach) == nvmlSuccess;
        return isOpen_;
    }

    void close() override {
        if (isOpen_)
            shutdown_();
        isOpen_ = false;
    }

    std::optional<NvmlReading> read(const std::string& address) override {
        NvmlDevice device = nullptr;
        if (!isOpen_ || deviceByAddress_(address.c_str(), &device) != nvmlSuccess)
            return {};
        NvmlReading reading;
        if (unsigned celsius = 0; temperature_ != nullptr && temperature_(device, temperatureOfDie, &celsius) == 0)
            reading.celsius = celsius;
        if (unsigned long long used = 0; totalEnergy_ != nullptr && totalEnergy_(device, &used) == nvmlSuccess)
            reading.totalMillijoules = static_cast<std::int64_t>(used);
        if (unsigned power = 0; power_ != nullptr && power_(device, &power) == nvmlSuccess)
            reading.milliwatts = power;
        if (Utilization use; utilization_ != nullptr && utilization_(device, &use) == nvmlSuccess)
            reading.busyPercent = use.gpu;
        if (unsigned long long events = 0; clockEvents_ != nullptr && clockEvents_(device, &events) == nvmlSuccess)
            reading.clockEvents = events;
        return reading;
    }

    std::optional<std::vector<NvmlSample>> samples(const std::string& address, std::uint64_t after) override {
        constexpr unsigned most = 4096;
        NvmlDevice device = nullptr;
        if (!isOpen_ || processes_ == nullptr || deviceByAddress_(address.c_str(), &device) != nvmlSuccess)
            return {};
        unsigned count = 0;
        int status = processes_(device, nullptr, &count, after);
        std::vector<ProcessSampleRecord> records(std::min(count, most));
        if (status == nvmlInsufficientSize && !records.empty()) {
            count = static_cast<unsigned>(records.size());
            status = processes_(device, records.data(), &count, after);
            records.resize(std::min<std::size_t>(count, records.size()));
        }
        if (status == nvmlNotFound) // nothing was done
            return std::vector<NvmlSample>();
        if (status != nvmlSuccess)
            return {};
        std::vector<NvmlSample> found;
        for (const ProcessSampleRecord& each : records)
            if (each.timeStamp > after)
                found.push_back({each.pid, each.timeStamp, each.cores, each.encoder, each.decoder});
        return found;
    }

private:
    bool load() {
        if (wasTried_)
            return initialise_ != nullptr && shutdown_ != nullptr && deviceByAddress_ != nullptr;
        wasTried_ = true;
        library_.reset(::dlopen("libnvidia-ml.so.1", RTLD_NOW | RTLD_LOCAL));
        if (!library_)
            return false;
        look(library_.get(), "nvmlInitWithFlags", initialise_);
        look(library_.get(), "nvmlShutdown", shutdown_);
        look(library_.get(), "nvmlDeviceGetHandleByPciBusId_v2", deviceByAddress_);
        look(library_.get(), "nvmlDeviceGetTemperature", temperature_);
        look(library_.get(), "nvmlDeviceGetTotalEnergyConsumption", totalEnergy_);
        look(library_.get(), "nvmlDeviceGetPowerUsage", power_);
        look(library_.get(), "nvmlDeviceGetUtilizationRates", utilization_);
        look(library_.get(), "nvmlDeviceGetCurrentClocksEventReasons", clockEvents_);
        look(library_.get(), "nvmlDeviceGetProcessUtilization", processes_);
        if (clockEvents_ == nullptr) // its name before
            look(library_.get(), "nvmlDeviceGetCurrentClocksThrottleReasons", clockEvents_);
        return load();
    }

    std::unique_ptr<void, CloseLibrary> library_;
    int (*initialise_)(unsigned) = nullptr;
    int (*shutdown_)() = nullptr;
    int (*deviceByAddress_)(const char*, NvmlDevice*) = nullptr;
    int (*temperature_)(NvmlDevice, int, unsigned*) = nullptr;
    int (*totalEnergy_)(NvmlDevice, unsigned long long*) = nullptr;
    int (*power_)(NvmlDevice, unsigned*) = nullptr;
    int (*utilization_)(NvmlDevice, Utilization*) = nullptr;
    int (*clockEvents_)(NvmlDevice, unsigned long long*) = nullptr;
    int (*processes_)(NvmlDevice, ProcessSampleRecord*, unsigned*, unsigned long long) = nullptr;
    bool wasTried_ = false;
    bool isOpen_ = false;
};

} // namespace

std::vector<GraphicsShares::Program> programsOf(const std::vector<NvmlSample>& samples) {
    constexpr std::uint32_t whole = 100;
    struct Sum {
        std::array<double, 3> engines{};
        double count = 0;
    };
    std::map<std::uint32_t, Sum> sums;
    double rounds = 0;
    for (const NvmlSample& sample : samples) {
        if (sample.pid == 0 || sample.pid > INT32_MAX ||
            std::max({sample.cores, sample.encoder, sample.decoder}) > whole)
            continue;
        Sum& sum = sums[sample.pid];
        sum.engines[0] += sample.cores;
        sum.engines[1] += sample.encoder;
        sum.engines[2] += sample.decoder;
        rounds = std::max(rounds, ++sum.count);
    }
    std::vector<GraphicsShares::Program> programs;
    for (const auto& [pid, sum] : sums)
        programs.push_back(
            {.pid = static_cast<std::int32_t>(pid), .percent = *std::ranges::max_element(sum.engines) / rounds});
    return programs;
}

std::optional<GraphicsShares> withPrograms(std::optional<GraphicsShares> shares,
                                           const std::vector<GraphicsShares::Program>& programs) {
    if (!shares)
        shares.emplace();
    double all = 0;
    for (const GraphicsShares::Program& program : programs)
        all += program.percent;
    const double scale = all > 100 ? 100 / all : 1;
    for (const GraphicsShares::Program& program : programs) {
        const auto place = std::ranges::lower_bound(shares->programs, program.pid, {}, &GraphicsShares::Program::pid);
        if (place == shares->programs.end() || place->pid != program.pid)
            shares->programs.insert(place, {.pid = program.pid, .percent = program.percent * scale});
        else
            place->percent = std::max(place->percent, program.percent * scale);
    }
    shares->leastBusyPercent = std::max(shares->leastBusyPercent, all * scale);
    return shares;
}

std::shared_ptr<Nvml> systemNvml() {
    return std::make_shared<SystemNvml>();
}

namespace {

constexpr double sameMomentSeconds = 0.2;

struct Device {
    std::string address;
    SleepCheck sleep;
    SensorFile control;
    std::optional<NvmlReading> last;
    std::optional<double> lookedAt;
    /// Of the newest sample of its processes.
    std::uint64_t sampledAt = 0;

    bool mayFallAsleep() {
        char room[16];
        const auto text = control.readText(room, sizeof room);
        return text && trimmedText(*text) == "auto";
    }
    /// Its work keeps it awake, whoever looks.
    bool isBusy() const { return last && last->busyPercent.value_or(0) > 0; }
};

/// Everything one look needs; owned by the reading, so that a look that hangs harms nobody.
struct Devices {
    std::shared_ptr<Nvml> nvml;
    SecondsClock clock;
    std::shared_ptr<std::atomic<bool>> tellsPrograms;
    std::vector<Device> list;

    void addPrograms(Device& device) const {
        constexpr std::uint64_t firstMicroseconds = 2'000'000;
        auto samples = nvml->samples(device.address, device.sampledAt);
        if (!samples)
            return;
        std::uint64_t newest = device.sampledAt;
        for (const NvmlSample& sample : *samples)
            newest = std::max(newest, sample.microseconds);
        // The first list may go back for minutes.
        if (std::exchange(device.sampledAt, newest) == 0)
            std::erase_if(*samples, [newest](const NvmlSample& sample) {
                return newest - sample.microseconds > firstMicroseconds;
            });
        device.last->programs = programsOf(*samples);
    }

    std::vector<std::optional<NvmlReading>> look() {
        bool isNeeded = false;
        std::vector<std::optional<NvmlReading>> readings;
        for (Device& device : list) {
            const double now = clock();
            const bool mayFallAsleep = device.mayFallAsleep();
            const bool isBusy = device.isBusy();
            if (device.last)
                device.last->programs.reset();
            if (device.sleep.isAsleep()) {
                device.last.reset();
            } else if (!mayFallAsleep || isBusy || !device.lookedAt || now - *device.lookedAt >= nvidiaRestSeconds) {
                device.last = nvml->open() ? nvml->read(device.address) : std::nullopt;
                device.lookedAt = now;
                if (device.last && *tellsPrograms)
                    addPrograms(device);
                if (mayFallAsleep && device.last) // a total seen rarely would come in bursts; the power does not
                    device.last->totalMillijoules.reset();
            }
            isNeeded = isNeeded || (device.last && (!mayFallAsleep || device.isBusy()));
            readings.push_back(device.last);
        }
        if (!isNeeded)
            nvml->close();
        return readings;
    }
};

bool isGraphics(const std::string& device) {
    // Class 0x03: display controllers. The same card's sound and USB parts have other drivers, but may share this one.
    return readTrimmed(device + "/class").value_or("").starts_with("0x03");
}

} // namespace

NvidiaGPUs::NvidiaGPUs(const std::string& root, std::shared_ptr<Nvml> nvml, const std::shared_ptr<SlowLane>& lane)
    : lane_(lane) {
    const std::string folder = root + "/sys/bus/pci/drivers/nvidia/";
    const auto devices = std::make_shared<Devices>();
    for (const std::string& name : namesIn(folder))
        if (const std::string place = folder + name; name.find(':') != std::string::npos && isGraphics(place)) {
            addresses_.push_back(name);
            devices->list.push_back({.address = name,
                                     .sleep = SleepCheck(place + "/power/runtime_status"),
                                     .control = SensorFile(place + "/power/control"),
                                     .last = {},
                                     .lookedAt = {}});
        }
    last_.resize(addresses_.size());
    if (!nvml || addresses_.empty())
        return;
    devices->nvml = std::move(nvml);
    devices->clock = lane_->clock();
    devices->tellsPrograms = tellsPrograms_;
    reading_.emplace(lane_, [devices] { return std::optional(devices->look()); });
}

const std::vector<std::optional<NvmlReading>>& NvidiaGPUs::readings() {
    const double now = lane_->now();
    if (!reading_ || (readAt_ && now - *readAt_ < sameMomentSeconds))
        return last_;
    readAt_ = now;
    if (auto readings = reading_->read())
        last_ = std::move(*readings);
    else
        last_.assign(addresses_.size(), std::nullopt);
    return last_;
}

} // namespace vantoro
