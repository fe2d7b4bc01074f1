// The functions and constants are those of the library's public interface (NVML API reference guide).
#include "Platform/Linux/Power/Nvml.h"

#include <dlfcn.h>

namespace vantoro {

namespace {

using NvmlDevice = void*;
constexpr int nvmlSuccess = 0;
/// NVML_INIT_FLAG_NO_ATTACH: initialising touches no device.
constexpr unsigned initNoAttach = 2;
/// NVML_TEMPERATURE_GPU.
constexpr int temperatureOfDie = 0;

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
        return reading;
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
        return load();
    }

    std::unique_ptr<void, CloseLibrary> library_;
    int (*initialise_)(unsigned) = nullptr;
    int (*shutdown_)() = nullptr;
    int (*deviceByAddress_)(const char*, NvmlDevice*) = nullptr;
    int (*temperature_)(NvmlDevice, int, unsigned*) = nullptr;
    int (*totalEnergy_)(NvmlDevice, unsigned long long*) = nullptr;
    int (*power_)(NvmlDevice, unsigned*) = nullptr;
    bool wasTried_ = false;
    bool isOpen_ = false;
};

} // namespace

std::shared_ptr<Nvml> systemNvml() {
    return std::make_shared<SystemNvml>();
}

} // namespace vantoro
