// Turns the rolling history into one verdict. Pure functions: the same history gives the same verdict.
#pragma once

#include "Model/History/History.h"
#include "Model/Records/Verdict.h"
#include "Model/Text/Format.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

struct DiagnosisEngine {
    DiagnosisEngine() = delete;

    /// How hard the machine works, how much that matters, which application is the likely cause and what to do. The
    /// format supplies the unit in which temperatures are worded. An empty history gives the empty verdict.
    static Verdict evaluate(const History& history, const Format& format);

    /// The application groups of the stretch that led up to now whose CPU share is at least this many per cent of one
    /// core, most responsible first.
    static std::vector<ProcessGroup> causes(const History& history, double leastCPU);

    /// How hard a machine cooled this way works, 0 to 1: its fan load, or the heat load of its smoothed chip
    /// temperature.
    static double load(const Snapshot& snapshot, Cooling cooling);
    /// The band that a load of 0 to 1 falls in.
    static StressLevel stressLevel(double load);
    /// The share of processor time that is not idle, in per cent; as measured, so possibly outside 0 to 100.
    static double busyPercent(const CPULoad& cpu);
    /// Wired and compressed memory as a share of all, plus a surcharge once anything was swapped out; may exceed 1. 0
    /// when the machine's memory is unknown.
    static double memoryPressure(const MemoryLoad& memory);
    /// Memory pressure at which compression and swapping cost noticeable CPU time of their own.
    static bool isMemoryShort(const MemoryLoad& memory);
    /// Whether the system slows the chip to shed heat: serious or critical pressure.
    static bool isThrottling(ThermalPressure pressure);

    /// "Nominal", "Fair", "Serious" or "Critical".
    static std::string_view title(ThermalPressure pressure);
    /// The same within a sentence, in lower case.
    static std::string_view word(ThermalPressure pressure);
    /// A length of time in words: "89 seconds", "2 minutes", "an hour", "2 hours".
    static std::string duration(double seconds);
    /// A percentage as a rounded whole number with its sign, "37%".
    static std::string pct(double percent);
    /// " across 3 processes"; empty for a single process.
    static std::string countSuffix(const ProcessGroup& group);
};

/// Sets the verdict's headline and detail and, where the machine is working, its advice. State, cooling,
/// awaitingReading and sustainedFor are read; `now` is the newest snapshot, `causes` the groups to blame, most
/// responsible first.
void narrate(Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes, const Format& format);

/// The cause of the verdict's state in a few words.
std::string causePhrase(const Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes);

} // namespace vantoro
