// Names and order of the fields of every record in a recording and in the machine-readable report, for reading and for
// writing. `visit` is called with each name and the field it stands for; the record may be const.
#pragma once

#include "Model/Records/Telemetry.h"

#include <concepts>
#include <type_traits>

namespace vantoro {

template <class Record, class Plain>
concept MaybeConst = std::same_as<std::remove_const_t<Record>, Plain>;

/// A share of all processor time, which is from 0 to 100 in a recording.
template <class Number>
struct ProcessorShare {
    Number& percent;
};

template <class Number>
ProcessorShare<Number> shareOf(Number& percent) {
    return {percent};
}

/// A share that came later: held to 0 to 100 as it is written. `Number` may be optional.
template <class Number>
struct HeldShare {
    Number& percent;
};

template <class Number>
HeldShare<Number> heldShare(Number& percent) {
    return {percent};
}

/// A figure that came later, of which 0 is none.
template <class Number>
struct LaterFigure {
    Number& number;
};

template <class Number>
LaterFigure<Number> laterFigure(Number& number) {
    return {number};
}

template <MaybeConst<FanReading> Record, class Visit>
void visitFields(Record& fan, Visit&& visit) {
    visit("index", fan.index);
    visit("rpm", fan.rpm);
    visit("minRPM", fan.minRPM);
    visit("maxRPM", fan.maxRPM);
    visit("targetRPM", fan.targetRPM);
}

template <MaybeConst<Temperatures> Record, class Visit>
void visitFields(Record& temps, Visit&& visit) {
    for (const TemperatureFigure& figure : temperatureFigures) {
        auto& celsius = temps.*figure.celsius;
        if (figure.cameLater)
            visit(figure.name, laterFigure(celsius));
        else
            visit(figure.name, celsius);
    }
}

template <MaybeConst<PowerReading> Record, class Visit>
void visitFields(Record& power, Visit&& visit) {
    visit("systemWatts", power.systemWatts);
    visit("adapterWatts", power.adapterWatts);
    visit("batteryWatts", power.batteryWatts);
    visit("gpuWatts", power.gpuWatts);
    visit("cpuWatts", power.cpuWatts);
}

template <MaybeConst<CPULoad> Record, class Visit>
void visitFields(Record& cpu, Visit&& visit) {
    visit("userPercent", shareOf(cpu.userPercent));
    visit("systemPercent", shareOf(cpu.systemPercent));
    visit("idlePercent", shareOf(cpu.idlePercent));
    visit("loadAverage", cpu.loadAverage);
}

template <MaybeConst<MemoryLoad> Record, class Visit>
void visitFields(Record& memory, Visit&& visit) {
    visit("usedBytes", memory.usedBytes);
    visit("totalBytes", memory.totalBytes);
    visit("wiredBytes", memory.wiredBytes);
    visit("compressedBytes", memory.compressedBytes);
    visit("swapOutEvents", memory.swapOutEvents);
    visit("availableBytes", memory.availableBytes);
}

template <MaybeConst<StallShares> Record, class Visit>
void visitFields(Record& stalls, Visit&& visit) {
    visit("cpu", heldShare(stalls.cpu));
    visit("memory", heldShare(stalls.memory));
    visit("io", heldShare(stalls.io));
}

template <MaybeConst<CoreReading> Record, class Visit>
void visitFields(Record& core, Visit&& visit) {
    visit("isPerformance", core.isPerformance);
    visit("busyPercent", heldShare(core.busyPercent));
    visit("megahertz", core.megahertz);
}

/// One process row: who it is, and what it did (whose own identity is not looked at).
template <MaybeConst<ProcessIdentity> Identity, MaybeConst<ProcessSample> Sample, class Visit>
void visitRowFields(Identity& identity, Sample& sample, Visit&& visit) {
    visit("pid", identity.pid);
    visit("rawName", identity.rawName);
    visit("displayName", identity.displayName);
    visit("executablePath", identity.executablePath);
    visit("owningAppName", identity.owningAppName);
    visit("owningAppPath", identity.owningAppPath);
    visit("cpuPercent", sample.cpuPercent);
    visit("memoryBytes", sample.memoryBytes);
    visit("energyImpact", sample.energyImpact);
    visit("user", identity.user);
    visit("kind", identity.kind);
    visit("gpuPercent", heldShare(sample.gpuPercent));
}

template <MaybeConst<Snapshot> Record, class Visit>
void visitFields(Record& snapshot, Visit&& visit) {
    visit("timestamp", snapshot.timestamp);
    visit("cooling", snapshot.cooling);
    visit("chipHeat", snapshot.chipHeat);
    visit("thermalPressure", snapshot.thermalPressure);
    visit("fans", snapshot.fans);
    visit("temps", snapshot.temps);
    visit("power", snapshot.power);
    visit("cpu", snapshot.cpu);
    visit("memory", snapshot.memory);
    visit("processes", snapshot.processes);
    visit("stalls", snapshot.stalls);
    visit("throttle", snapshot.throttle);
    visit("gpuPercent", heldShare(snapshot.gpuPercent));
    visit("cores", snapshot.cores);
    visit("dieSensors", snapshot.dieSensors);
    visit("gpuSensors", snapshot.gpuSensors);
}

} // namespace vantoro
