// Fans, temperatures and power rails from the system management controller: discovers its sensors once, reads only
// those, sums each family up in one figure, and falls back to the last good value where a reading is implausible.
#pragma once

#include "CSensors/smc.h"
#include "Model/Readers/SensorSources.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// One owner; not for concurrent use. Opens the connection when made and closes it when destroyed.
class SMCReader : public SensorReader {
public:
    struct Options {
        bool simulatesFanless = false;
        SensorTrust trust = SensorTrust::manyAndNoisy;
        /// Waits this long between tries of the fan count.
        std::function<void(int milliseconds)> pause;
        /// Keys "Ts…" are sensors of the cores rather than of the enclosure.
        bool measuresCoresUnderTs = false;
    };

    explicit SMCReader(Options options);
    ~SMCReader() override;
    SMCReader(const SMCReader&) = delete;
    SMCReader& operator=(const SMCReader&) = delete;

    bool isOpen() const override { return isAvailable_; }
    /// `passive` exactly when the controller states that the machine has no fans (or that is simulated).
    Cooling cooling() const override { return reportsNoFans_ ? Cooling::passive : Cooling::fans; }
    int fanCount() const override { return fanCount_; }
    int sensorCount() const override;
    bool hasGPUSensors() const override { return !gpuKeys_.empty(); }
    std::optional<std::size_t> dieSensorCount() const override { return socKeys_.size(); }
    std::optional<std::size_t> gpuSensorCount() const override { return gpuKeys_.size(); }

    bool isAvailable() const { return isAvailable_; }
    bool reportsNoFans() const { return reportsNoFans_; }
    const std::vector<std::string>& socKeys() const { return socKeys_; }
    const std::vector<std::string>& gpuKeys() const { return gpuKeys_; }
    const std::vector<std::string>& batteryKeys() const { return batteryKeys_; }
    const std::vector<std::string>& enclosureKeys() const { return enclosureKeys_; }

    std::vector<FanReading> readFans() override;
    Temperatures readTemperatures() override;
    PowerReading readPower() override;
    std::vector<double> readDieSensors() override { return measuringSensors(socKeys_); }
    std::vector<double> readGPUSensors() override { return measuringSensors(gpuKeys_); }
    std::vector<double> latestDieSensors() const override;
    std::vector<double> latestGPUSensors() const override;
    /// The values of those keys that measure at this moment, ascending, degrees Celsius.
    std::vector<double> measuringSensors(const std::vector<std::string>& keys);

private:
    void discoverSensors();
    void discoverFans();

    Options options_;
    bool isAvailable_ = false;
    int fanCount_ = 0;
    bool reportsNoFans_ = false;
    std::vector<std::string> socKeys_;
    std::vector<std::string> gpuKeys_;
    std::vector<std::string> batteryKeys_;
    std::vector<std::string> enclosureKeys_;
    Temperatures lastGood_;
    /// What every key of the family gave the last time.
    std::vector<double> socReadings_;
    std::vector<double> gpuReadings_;
};

} // namespace vantoro
