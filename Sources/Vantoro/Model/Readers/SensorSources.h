// The hardware sources that the hub reads, as it sees them. A machine without a source has a null one, and then reports
// nothing of that kind.
#pragma once

#include "Model/Records/Telemetry.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace vantoro {

/// Fans, temperatures and power rails.
class SensorReader {
public:
    virtual ~SensorReader() = default;

    /// Whether the sensors could be opened at all; only refresh() is asked of a reader that is not open.
    virtual bool isOpen() const = 0;
    /// To be called once per round, before anything is read: finds the sensors anew where devices came or went.
    virtual void refresh() {}
    /// What can be told of this machine's cooling, by what was read the last time.
    virtual Cooling cooling() const = 0;
    virtual int fanCount() const = 0;
    /// How many sensors were found in all families together.
    virtual int sensorCount() const = 0;
    /// Whether any sensor of the graphics processor was found, measuring or not.
    virtual bool hasGPUSensors() const { return true; }
    /// How many single sensors there are of each kind, measuring or not; none when that is not known.
    virtual std::optional<std::size_t> dieSensorCount() const { return std::nullopt; }
    virtual std::optional<std::size_t> gpuSensorCount() const { return std::nullopt; }

    virtual std::vector<FanReading> readFans() = 0;
    virtual Temperatures readTemperatures() = 0;
    /// System, adapter and battery power; gpuWatts is another source's.
    virtual PowerReading readPower() = 0;
    /// The single sensors' readings, degrees Celsius, of those that measure at this moment.
    virtual std::vector<double> readDieSensors() = 0;
    virtual std::vector<double> readGPUSensors() = 0;
    /// The same as readTemperatures() came upon them the last time: nothing is read anew.
    virtual std::vector<double> latestDieSensors() const { return {}; }
    virtual std::vector<double> latestGPUSensors() const { return {}; }
};

/// What each processor core is doing.
class CoreSource {
public:
    virtual ~CoreSource() = default;

    /// Measures the time since the call before.
    virtual void sample() = 0;
    /// Whether the samples to come measure frequencies too, where that takes readings of its own; at first they do.
    virtual void setReadsClocks(bool /*reads*/) {}
    virtual const std::vector<Core>& cores() const = 0;
    /// The highest frequency of each kind of core; 0 when not known.
    virtual double maxPerformanceMHz() const { return 0; }
    virtual double maxEfficiencyMHz() const { return 0; }
};

class GPUPowerSource {
public:
    virtual ~GPUPowerSource() = default;

    /// The graphics processor's mean power since the call before, in watts; 0 when it cannot be told.
    virtual double sampleWatts() = 0;
};

struct SensorSources {
    std::shared_ptr<SensorReader> sensors;
    std::shared_ptr<CoreSource> cores;
    std::shared_ptr<GPUPowerSource> gpu;
};

} // namespace vantoro
