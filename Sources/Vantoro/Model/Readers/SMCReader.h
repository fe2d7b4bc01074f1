// Fans, temperatures and power rails from the system management controller: discovers its sensors once, reads only
// those, sums each family up in one figure, and falls back to the last good value where a reading is implausible.
#pragma once

#include "CSensors/smc.h"
#include "Model/Readers/SensorSources.h"

#include <array>
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
    bool hasGPUSensors() const override { return !keys(SensorFamily::graphics).empty(); }
    std::optional<std::size_t> dieSensorCount() const override { return keys(SensorFamily::chip).size(); }
    std::optional<std::size_t> gpuSensorCount() const override { return keys(SensorFamily::graphics).size(); }

    bool isAvailable() const { return isAvailable_; }
    bool reportsNoFans() const { return reportsNoFans_; }
    const std::vector<std::string>& keys(SensorFamily family) const { return families_.at(placeOf(family)).keys; }

    std::vector<FanReading> readFans() override;
    Temperatures readTemperatures() override;
    PowerReading readPower() override;
    std::vector<double> readDieSensors() override { return measuringSensors(keys(SensorFamily::chip)); }
    std::vector<double> readGPUSensors() override { return measuringSensors(keys(SensorFamily::graphics)); }
    std::vector<double> latestDieSensors() const override { return latest(SensorFamily::chip); }
    std::vector<double> latestGPUSensors() const override { return latest(SensorFamily::graphics); }
    /// The values of those keys that measure at this moment, ascending, degrees Celsius.
    std::vector<double> measuringSensors(const std::vector<std::string>& keys);

private:
    struct Family {
        std::vector<std::string> keys;
        /// What they gave the last time.
        std::vector<double> readings;
    };

    std::vector<double> latest(SensorFamily family) const;
    void discoverSensors();
    void discoverFans();

    Options options_;
    bool isAvailable_ = false;
    int fanCount_ = 0;
    bool reportsNoFans_ = false;
    std::array<Family, sensorFamilies.size()> families_;
    Temperatures lastGood_;
};

} // namespace vantoro
