// The words of a verdict: its headline, its paragraph, its advice and its short cause phrase.
#include "Model/Diagnosis/Diagnosis.h"

#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Model/Text/Numbers.h"

#include <fmt/format.h>

namespace vantoro {

namespace {

using Causes = std::vector<ProcessGroup>;

/// CPU share from which a group is worth a word although the machine copes.
constexpr double notablyBusyCPU = 40.0;
/// Seconds from which the length of an episode is worth a word.
constexpr double notableDuration = 45;

bool isFanless(const Snapshot& now) {
    return now.cooling == Cooling::passive;
}

bool isNotablyBusy(const Causes& causes) {
    return !causes.empty() && causes.front().totalCPU > notablyBusyCPU;
}

std::string quietHeadline(const Verdict& verdict) {
    const bool idle = verdict.state == StressLevel::idle;
    if (verdict.cooling == Cooling::passive)
        return idle ? "All cool" : "Running comfortably";
    return idle ? "All quiet" : "Running cool";
}

std::string quietDetail(const Snapshot& now, const Causes& causes, const Format& format) {
    if (isNotablyBusy(causes)) {
        const ProcessGroup& top = causes.front();
        return fmt::format("{} is the busiest at {}{}{}", friendlyName(top.displayName),
                           DiagnosisEngine::pct(top.totalCPU), DiagnosisEngine::countSuffix(top),
                           isFanless(now) ? ", but the chip is shedding the heat without strain."
                                          : ", but the machine is handling it without needing much airflow.");
    }
    std::string detail = "Nothing is working the machine hard right now.";
    if (!isFanless(now))
        detail += fmt::format(" Fans are near their floor of {} rpm.",
                              truncated(now.fans.empty() ? 0.0 : now.fans.front().minRPM));
    else if (now.temps.socMean > 0)
        detail += fmt::format(" The chip is at {}.", format.temperature(now.temps.socMean));
    return detail;
}

std::string throttlingAtRestDetail(const Verdict& verdict, const Snapshot& now) {
    const std::string_view pressure = DiagnosisEngine::word(now.thermalPressure);
    if (verdict.awaitingReading)
        return fmt::format("Thermal pressure is {}. The chip hasn't reported a temperature yet, but heat in the case, "
                           "a warm battery or fast charging can raise it too.",
                           pressure);
    return fmt::format("Thermal pressure is {} even though {}. Heat in the case, a warm battery or fast charging can "
                       "raise it too.",
                       pressure, isFanless(now) ? "the chip itself isn't running hot" : "the fans are barely turning");
}

std::string blameHeadline(const Verdict& verdict, const Causes& causes, const std::string& name) {
    double total = 0;
    for (const ProcessGroup& cause : causes)
        total += cause.totalCPU;
    const bool dominates = total > 0 && causes.front().totalCPU / total > 0.45;
    if (!dominates && causes.size() >= 3)
        return fmt::format("{} — {} leads, but the load is spread out", verdict.statePhrase(), name);
    return fmt::format("{} because of {}", verdict.statePhrase(), name);
}

std::string characterSentence(const ProcessGroup& top, const ProcessNote* note) {
    if (note != nullptr)
        return " It's " + note->what;
    if (top.kind == ProcessKind::commandLine)
        return " This is command-line work running under your account — a build, a script or a job you started.";
    if (top.kind == ProcessKind::systemDaemon)
        return " This is a macOS background service rather than something you opened.";
    if (top.members.size() >= 2)
        return " No single one of those processes stands out — it is their combined load that is heating the machine.";
    return {};
}

std::string blameDetail(const Verdict& verdict, const ProcessGroup& top, const std::string& name,
                        const ProcessNote* note) {
    std::string detail = fmt::format("{} averaged {} CPU{}", name, DiagnosisEngine::pct(top.totalCPU),
                                     DiagnosisEngine::countSuffix(top));
    if (top.members.size() < 2 && 1.4 * top.totalCPU < top.peakCPU)
        detail += ", peaking at " + DiagnosisEngine::pct(top.peakCPU);
    detail += " over the window that heated the machine";
    if (verdict.sustainedFor > notableDuration) {
        detail += verdict.cooling == Cooling::passive ? ", and the chip has been running warm for "
                                                      : ", and the fans have been up for ";
        detail += DiagnosisEngine::duration(verdict.sustainedFor);
    }
    return detail + "." + characterSentence(top, note);
}

Advice quitting(const ProcessGroup& group, const std::string& name) {
    return {"Quit " + name, group.members.empty() ? 0 : group.members.front().pid};
}

void adviseOnKnown(std::vector<Advice>& advice, const ProcessGroup& top, const ProcessNote& note) {
    if (note.advice)
        advice.push_back({*note.advice, {}});
    if (note.selfResolving)
        advice.push_back({"This one ends by itself — worth waiting out before changing anything.", {}});
    const bool belongsToUser =
        top.kind == ProcessKind::userApp || top.kind == ProcessKind::helper || top.kind == ProcessKind::commandLine;
    if (note.quittable && belongsToUser)
        advice.push_back(quitting(top, note.friendly));
}

void adviseOnUnknown(std::vector<Advice>& advice, const ProcessGroup& top) {
    switch (top.kind) {
    case ProcessKind::userApp:
    case ProcessKind::helper:
        advice.push_back({top.displayName + " is doing the work. Closing the tab, document or project it's busy with "
                                            "is usually enough.",
                          {}});
        advice.push_back(quitting(top, top.displayName));
        break;
    case ProcessKind::commandLine:
        advice.push_back({"This will stop when the job finishes. If you did not expect it to be running, check your "
                          "terminal sessions.",
                          {}});
        advice.push_back(quitting(top, top.displayName));
        break;
    case ProcessKind::systemDaemon:
    case ProcessKind::kernel:
        advice.push_back({"This is a system process. If it stays pinned for more than a few minutes, a restart is the "
                          "reliable fix.",
                          {}});
        break;
    }
}

std::vector<Advice> adviceFor(const ProcessGroup& top, const ProcessNote* note, const Snapshot& now) {
    std::vector<Advice> advice;
    if (note != nullptr)
        adviseOnKnown(advice, top, *note);
    else
        adviseOnUnknown(advice, top);
    if (DiagnosisEngine::isThrottling(now.thermalPressure))
        advice.push_back({"macOS is actively throttling to shed heat, so everything will feel slower until this "
                          "clears.",
                          {}});
    else if (isFanless(now) && Snapshot::heatLoad(now.chipHeat) >= 0.48)
        advice.push_back({"Without fans, this Mac sheds heat through the bottom of its case. A hard, cool surface "
                          "helps; a lap or a blanket brings the slowdown sooner.",
                          {}});
    if (DiagnosisEngine::isMemoryShort(now.memory))
        advice.push_back({"Memory pressure is high as well — compression and swapping are adding CPU load of their "
                          "own.",
                          {}});
    return advice;
}

std::string heatWithoutLoadExplanation(const Snapshot& now, const Format& format) {
    if (now.power.gpuWatts > 8.0)
        return fmt::format("CPU load is low but the GPU is drawing {:.1f} W, so something is rendering rather than "
                           "computing.",
                           now.power.gpuWatts);
    if (now.power.adapterWatts > 60.0)
        return fmt::format("CPU load is low. The machine is pulling {} W from the charger, and fast charging alone "
                           "produces real heat.",
                           truncated(now.power.adapterWatts));
    if (isFanless(now) && now.temps.socMean > 0)
        return fmt::format("The chip is still at {} from earlier work. Without fans it cools through the case, which "
                           "takes a few minutes rather than seconds.",
                           format.temperature(now.temps.socMean));
    if (now.temps.soc > 70)
        return fmt::format("The chip is still at {} from earlier work — the fans are clearing residual heat and should "
                           "wind down shortly.",
                           format.temperature(now.temps.soc));
    if (isFanless(now))
        return "No process stands out. This is usually heat left over from work that has already finished, or from "
               "charging.";
    return "No process stands out. This is usually the tail of a burst that has already finished, or heat from "
           "charging.";
}

void narrateRest(Verdict& verdict, const Snapshot& now, const Causes& causes, const Format& format) {
    if (DiagnosisEngine::isThrottling(now.thermalPressure)) {
        verdict.headline = "macOS is slowing the chip to shed heat";
        verdict.detail = throttlingAtRestDetail(verdict, now);
    } else if (verdict.awaitingReading) {
        verdict.headline = "Waiting for the chip";
        verdict.detail = "The chip hasn't given a usable temperature yet. An idle Apple silicon chip parks its "
                         "sensors, and they report again as soon as it does some work.";
    } else {
        verdict.headline = quietHeadline(verdict);
        verdict.detail = quietDetail(now, causes, format);
    }
}

void narrateUnexplainedHeat(Verdict& verdict, const Snapshot& now, const Format& format) {
    verdict.headline = fmt::format("{}, but nothing looks busy", verdict.statePhrase());
    verdict.detail = heatWithoutLoadExplanation(now, format);
    verdict.advice = {{isFanless(now) ? "If this persists with no load, check for a warm room, something soft under "
                                        "the Mac, or heavy charging."
                                      : "If this persists with no load, check for a blocked vent, high room "
                                        "temperature, or heavy charging.",
                       {}}};
}

} // namespace

void narrate(Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes, const Format& format) {
    if (isAtRest(verdict.state)) {
        narrateRest(verdict, now, causes, format);
        return;
    }
    if (causes.empty()) {
        narrateUnexplainedHeat(verdict, now, format);
        return;
    }
    const ProcessGroup& top = causes.front();
    const ProcessNote* note = ProcessKnowledge::note(top.displayName);
    const std::string name = note != nullptr ? note->friendly : top.displayName;
    verdict.headline = blameHeadline(verdict, causes, name);
    verdict.detail = blameDetail(verdict, top, name, note);
    verdict.advice = adviceFor(top, note, now);
}

std::string causePhrase(const Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes) {
    if (isAtRest(verdict.state)) {
        if (DiagnosisEngine::isThrottling(now.thermalPressure))
            return "macOS is slowing the chip to shed heat";
        if (verdict.awaitingReading)
            return "Waiting for the chip's first temperature reading";
        if (isNotablyBusy(causes))
            return friendlyName(causes.front().displayName) + " is busiest, but the machine is coping";
        return "Nothing is working the machine hard";
    }
    if (causes.empty())
        return "No process stands out";
    const ProcessGroup& top = causes.front();
    std::string phrase = "because of " + friendlyName(top.displayName);
    if (top.members.size() >= 2)
        phrase += fmt::format(" × {}", top.members.size());
    if (verdict.sustainedFor > notableDuration)
        phrase += ", for " + DiagnosisEngine::duration(verdict.sustainedFor);
    return phrase;
}

} // namespace vantoro
