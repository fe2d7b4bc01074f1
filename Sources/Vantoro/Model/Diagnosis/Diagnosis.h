// Turns the rolling history into one verdict. Pure functions: the same history gives the same verdict.
#pragma once

#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Model/History/History.h"
#include "Model/Records/SystemWords.h"
#include "Model/Records/Verdict.h"
#include "Model/Text/Format.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

struct DiagnosisEngine {
    DiagnosisEngine() = delete;

    /// How hard the machine works, how much that matters, which application is the likely cause and what to do. The
    /// format supplies the unit in which temperatures are worded, the history whose words are spoken. An empty history
    /// gives the empty verdict.
    static Verdict evaluate(const History& history, const Format& format);
    /// What may be said before anything is known but how the machine is cooled and how warm its chip is.
    static Verdict atStart(const Snapshot& snapshot, SystemKind system);

    /// The stretch that led up to now: where the cause of the present state is looked for.
    static SnapshotRun causeWindow(const History& history);
    /// The application groups of that stretch whose CPU share is at least this many per cent of one core, or whose
    /// share of the graphics processor is at least 10 %, most responsible first.
    static std::vector<ProcessGroup> causes(const History& history, double leastCPU);

    /// The band that a load of 0 to 1 falls in.
    static StressLevel stressLevel(double load);
    /// The share of processor time that is not idle, in per cent; as measured, so possibly outside 0 to 100.
    static double busyPercent(const CPULoad& cpu);
    /// The share of all memory that could not be had without swapping, where that is known. Else wired and compressed
    /// memory as a share of all, plus a surcharge once anything was swapped out; may exceed 1. 0 when the machine's
    /// memory is unknown.
    static double memoryPressure(const MemoryLoad& memory);
    /// Memory pressure at which compression and swapping cost noticeable CPU time of their own.
    static bool isMemoryShort(const MemoryLoad& memory);
    /// "6.5 of 16 GB": what could not be had without swapping, of all; empty where either is unknown.
    static std::string memoryText(const MemoryLoad& memory);
    /// "11.2 of 16 GB": what a group holds, of all; empty where it is more than could be, as of memory that its
    /// processes share.
    static std::string heldText(const ProcessGroup& group, const MemoryLoad& memory);
    /// Whether the system slows the chip to shed heat: serious or critical pressure. On other systems than a Mac's the
    /// pressure only says how warm it is: what slows the machine down is in the snapshot's throttle list.
    static bool isThrottling(ThermalPressure pressure);
    /// Whether it is known that heat slows the machine down.
    static bool isSlowedByHeat(const Snapshot& snapshot, SystemKind system);
    /// Whether a battery takes or gives so much that it warms the machine.
    static bool isChargingFast(const Snapshot& snapshot, SystemKind system);

    /// What work waited for: "memory", "the disk" or "the processors", and the share of the time in per cent.
    struct Stall {
        std::string_view waitedFor;
        double percent = 0;
        /// So much that it is felt.
        bool isFelt = false;
    };
    /// Those that the kernel tells, the largest first.
    static std::vector<Stall> stallsOf(const StallShares& shares);

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

/// The one of four texts that suits a machine cooled this way.
constexpr std::string_view byCooling(Cooling cooling, std::string_view fans, std::string_view passive,
                                     std::string_view heat, std::string_view load) {
    switch (cooling) {
    case Cooling::fans:
        return fans;
    case Cooling::passive:
        return passive;
    case Cooling::heat:
        return heat;
    case Cooling::load:
        break;
    }
    return load;
}

/// Why nobody is blamed for what goes on.
inline constexpr std::string_view ranTheSameSentence =
    "Nothing here explains it: all of this ran just the same while the machine was quiet.";

/// Whether a machine cooled this way is judged by its chip's temperature.
constexpr bool isJudgedByHeat(Cooling cooling) {
    return cooling == Cooling::passive || cooling == Cooling::heat;
}

/// The groups to blame for the verdict's state, most responsible first, and in the verdict on what ground: the work of
/// the processors, that of graphics, the memory that somebody holds; nobody for what ran just the same while the
/// machine was quiet, nor when graphics lead and nobody is known to use them. State, system and work of the verdict are
/// read.
std::vector<ProcessGroup> blamed(const History& history, Verdict& verdict);

/// What to do about the group that is blamed, what is most likely to help first.
std::vector<Advice> adviceFor(const Verdict& verdict, const ProcessGroup& top, const Snapshot& now);

/// What to look for when nobody is to blame and it goes on.
std::string persistenceAdvice(const Verdict& verdict, const Snapshot& now);

/// Whether heat may come of charging. A Mac is taken to have a battery; others tell.
inline bool mayHaveBattery(const Verdict& verdict, const Snapshot& now) {
    return verdict.system == SystemKind::macos || now.power.batteryWatts != 0 || now.temps.battery > 0;
}

/// Sets the verdict's headline and detail and, where the machine is working, its advice. State, cooling, system, work,
/// awaitingReading and sustainedFor are read; `now` is the newest snapshot, `causes` the groups to blame, most
/// responsible first.
void narrate(Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes, const Format& format);

/// The headline of a verdict at rest, "All quiet", when nothing presses and no reading is awaited.
std::string restHeadline(const Verdict& verdict, const Snapshot& now);

/// The cause of the verdict's state in a few words.
std::string causePhrase(const Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes);

/// What slows the machine down, a sentence for each reason, and what its power profile costs: each with a blank before
/// it. Nothing where nothing does or nobody can tell. `evenByChoice`: also that its power profile saves power.
std::string slowdownSentences(const Verdict& verdict, const Snapshot& now, bool evenByChoice);

} // namespace vantoro
