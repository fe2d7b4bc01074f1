// Fans, temperatures and power rails from the system management controller, or from what stands in its place: discovers
// its sensors, reads only those, sums each family up in one figure, and falls back to the last good value where a
// reading of a controller's is implausible.
#pragma once

#include "CSensors/smc.h"
#include "Model/Readers/SensorSources.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// Those keys of the controller whose name is a text of four characters and whose type is a floating-point number, in
/// the controller's order. `count` is how many keys it says it holds.
std::vector<std::string> floatKeys(std::uint32_t count);

/// The value of a key; none when it cannot be read or is no finite number.
std::optional<double> readKey(const std::string& key);

/// A fan's key: "F", its number as one character (in base 62, though no controller has more than ten) and the suffix.
std::string fanKey(int fan, std::string_view suffix);

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
        /// What stands in a controller's place: what it does not tell is not known, and what it no longer tells is
        /// gone. Null for a controller.
        std::shared_ptr<SMCService> standIn = {};

        /// As this service, which may be null, is to be read.
        static Options of(const std::shared_ptr<SMCService>& service, std::function<void(int milliseconds)> pause);
    };

    explicit SMCReader(Options options);
    ~SMCReader() override;
    SMCReader(const SMCReader&) = delete;
    SMCReader& operator=(const SMCReader&) = delete;

    bool isOpen() const override { return isOpen_; }
    /// Of a controller: `passive` exactly when it states that the machine has no fans (or that is simulated). Else by
    /// what could be read: fans whose limits are known, a chip's temperature, or neither; a few readings that fail do
    /// not change it.
    Cooling cooling() const override;
    void refresh() override;
    int fanCount() const override { return fanCount_; }
    int sensorCount() const override;
    bool hasGPUSensors() const override { return !keys(SensorFamily::graphics).empty(); }
    std::optional<std::size_t> dieSensorCount() const override { return keys(SensorFamily::chip).size(); }
    std::optional<std::size_t> gpuSensorCount() const override { return keys(SensorFamily::graphics).size(); }

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

    /// Whether something was read, now or a moment ago.
    class Sight {
    public:
        void note(bool isSeen) { missed_ = isSeen ? 0 : missed_ + (missed_ < patience ? 1 : 0); }
        bool isFresh() const { return missed_ < patience; }

    private:
        static constexpr int patience = 5;
        int missed_ = patience;
    };

    std::vector<double> latest(SensorFamily family) const;
    FanReading readFan(int fan, double rpm) const;
    bool takeFamily(const SensorFamilyKind& kind);
    void discover();
    void discoverSensors();
    void discoverFans();

    Options options_;
    bool isOpen_ = false;
    int fanCount_ = 0;
    bool reportsNoFans_ = false;
    std::array<Family, sensorFamilies.size()> families_;
    Temperatures lastGood_;
    std::uint64_t generation_ = 0;
    Sight fanLimits_;
    Sight chip_;
};

} // namespace vantoro
