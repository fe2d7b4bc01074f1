// Sensors, cores and graphics power as a test sets them, in the readers' place.
#pragma once

#include "Model/Readers/SensorSources.h"

#include "Support/Testing.h"

namespace vantoro::testing {

class ScriptedReaders : public SensorReader, public CoreSource, public GPUPowerSource {
public:
    explicit ScriptedReaders(Cooling cooling = Cooling::fans) : cools(cooling) {}

    bool isOpen() const override { return openable; }
    Cooling cooling() const override { return cools; }
    int fanCount() const override { return fans; }
    int sensorCount() const override { return sensors; }
    bool hasGPUSensors() const override { return hasGPU; }
    double maxPerformanceMHz() const override { return performanceMHz; }
    double maxEfficiencyMHz() const override { return efficiencyMHz; }
    std::vector<FanReading> readFans() override { return fanList; }
    Temperatures readTemperatures() override { return temperatures; }
    PowerReading readPower() override { return power; }
    std::optional<std::size_t> dieSensorCount() const override { return dieCount; }
    std::vector<double> readDieSensors() override { return ++dieReads, dieSensors; }
    std::vector<double> latestDieSensors() const override { return dieSensors; }
    std::vector<double> readGPUSensors() override { return gpuSensors; }
    void sample() override {}
    void setReadsClocks(bool reads) override { readsClocks = reads; }
    const std::vector<Core>& cores() const override { return coreList; }
    double sampleWatts() override { return ++gpuLooks, gpuWatts; }

    bool openable = true;
    Cooling cools;
    int fans = 2;
    int sensors = 148;
    std::vector<FanReading> fanList;
    Temperatures temperatures;
    PowerReading power;
    std::vector<double> dieSensors;
    std::vector<double> gpuSensors;
    std::vector<Core> coreList;
    bool hasGPU = true;
    std::optional<std::size_t> dieCount;
    double performanceMHz = 4056;
    double efficiencyMHz = 2748;
    double gpuWatts = 3.5;
    // What was asked for.
    int dieReads = 0;
    int gpuLooks = 0;
    bool readsClocks = true;
};

} // namespace vantoro::testing
