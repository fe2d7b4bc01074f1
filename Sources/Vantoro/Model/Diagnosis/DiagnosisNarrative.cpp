// The words of a verdict: its headline, its paragraph, its advice and its short cause phrase.
#include "Model/Diagnosis/Diagnosis.h"

#include "Model/Text/Numbers.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace vantoro {

namespace {

using Causes = std::vector<ProcessGroup>;

/// CPU share from which a group is worth a word although the machine copes.
constexpr double notablyBusyCPU = 40.0;
/// Seconds from which the length of an episode is worth a word.
constexpr double notableDuration = 45;

/// Chip temperature in degrees Celsius from which a machine is not called cool.
constexpr double hotChip = 80;

bool isNotablyBusy(const Causes& causes) {
    return !causes.empty() && causes.front().totalCPU > notablyBusyCPU;
}

bool isMac(const Verdict& verdict) {
    return verdict.system == SystemKind::macos;
}

/// A Mac is taken to have a battery; others tell.
bool mayHaveBattery(const Verdict& verdict, const Snapshot& now) {
    return isMac(verdict) || now.power.batteryWatts != 0 || now.temps.battery > 0;
}

/// Hard at work although neither fan nor chip shows it yet.
bool worksUnfelt(const Verdict& verdict) {
    return verdict.cooling != Cooling::load && verdict.speaksOfWork();
}

std::string floorSentence(const Verdict& verdict, const Snapshot& now) {
    if (isMac(verdict))
        return fmt::format(" Fans are near their floor of {} rpm.",
                           truncated(now.fans.empty() ? 0.0 : now.fans.front().minRPM));
    std::string sentence;
    const auto known = std::ranges::find_if(now.fans, [](const FanReading& fan) { return fan.maxRPM > 0; });
    if (known != now.fans.end() && known->minRPM > 0)
        sentence = fmt::format(" Fans are near their floor of {} rpm.", truncated(known->minRPM));
    else if (known != now.fans.end())
        sentence = now.peakRPM() > 0 ? " Fans are barely turning." : " Fans stand still.";
    return sentence;
}

std::string quietDetail(const Verdict& verdict, const Snapshot& now, const Causes& causes, const Format& format) {
    if (isNotablyBusy(causes)) {
        const ProcessGroup& top = causes.front();
        const bool isHot = !isMac(verdict) && now.temps.soc > hotChip;
        const std::string_view ofFans =
            isHot ? "the fans are still near their floor" : "the machine is handling it without needing much airflow";
        const std::string_view ofHeat = verdict.awaitingReading ? "how warm that makes the chip is not known yet"
                                                                : "the chip is shedding the heat without strain";
        return fmt::format("{} is the busiest at {}{}, but {}.", friendlyName(top, verdict.system),
                           DiagnosisEngine::pct(top.totalCPU), DiagnosisEngine::countSuffix(top),
                           byCooling(verdict.cooling, ofFans, ofHeat, ofHeat, "the machine has plenty to spare"));
    }
    if (worksUnfelt(verdict))
        return fmt::format("The processors are {} busy, but no single program stands out.",
                           DiagnosisEngine::pct(std::clamp(DiagnosisEngine::busyPercent(now.cpu), 0.0, 100.0)));
    if (verdict.cooling == Cooling::load)
        return fmt::format("Nothing is working {} hard right now.", systemWords(verdict.system).thisMachine);
    std::string detail = "Nothing is working the machine hard right now.";
    if (verdict.cooling == Cooling::fans) {
        detail += floorSentence(verdict, now);
        if (!isMac(verdict) && now.temps.soc > hotChip)
            detail += fmt::format(" The chip is at {}, though.", format.temperature(now.temps.soc));
    } else if (now.temps.socMean > 0) {
        detail += fmt::format(" The chip is at {}.", format.temperature(now.temps.socMean));
    }
    return detail;
}

std::string pressedAtRestDetail(const Verdict& verdict, const Snapshot& now) {
    const std::string_view pressure = DiagnosisEngine::word(now.thermalPressure);
    const char* const sources = mayHaveBattery(verdict, now) ? "heat in the case, a warm battery or fast charging"
                                                             : "heat in the case or in the room";
    if (verdict.awaitingReading)
        return fmt::format("Thermal pressure is {}. The chip hasn't reported a temperature yet, but {} can raise it "
                           "too.",
                           pressure, sources);
    return fmt::format("Thermal pressure is {} even though {}. H{} can raise it too.", pressure,
                       verdict.cooling == Cooling::fans ? "the fans are barely turning"
                                                        : "the chip itself isn't running hot",
                       sources + 1);
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

std::string characterSentence(const Verdict& verdict, const ProcessGroup& top, const std::optional<ProcessNote>& note) {
    if (note)
        return " It's " + note->what;
    if (top.kind == ProcessKind::commandLine)
        return " This is command-line work running under your account — a build, a script or a job you started.";
    if (top.kind == ProcessKind::systemDaemon)
        return fmt::format(" This is {} rather than something you opened.",
                           systemWords(verdict.system).backgroundService);
    if (top.members.size() >= 2)
        return fmt::format(" No single one of those processes stands out — it is their combined load that is {}.",
                           verdict.cooling == Cooling::load ? "keeping the machine busy" : "heating the machine");
    return {};
}

std::string blameDetail(const Verdict& verdict, const ProcessGroup& top, const std::string& name,
                        const std::optional<ProcessNote>& note) {
    std::string detail = fmt::format("{} averaged {} CPU{}", name, DiagnosisEngine::pct(top.totalCPU),
                                     DiagnosisEngine::countSuffix(top));
    if (top.members.size() < 2 && 1.4 * top.totalCPU < top.peakCPU)
        detail += ", peaking at " + DiagnosisEngine::pct(top.peakCPU);
    if (verdict.cooling == Cooling::load)
        detail += fmt::format(" over the window that made {} busy", systemWords(verdict.system).thisMachine);
    else
        detail += " over the window that heated the machine";
    if (verdict.sustainedFor > notableDuration) {
        detail +=
            byCooling(verdict.cooling, ", and the fans have been up for ", ", and the chip has been running warm for ",
                      ", and the chip has been running warm for ", ", and it has been busy for ");
        detail += DiagnosisEngine::duration(verdict.sustainedFor);
    }
    return detail + "." + characterSentence(verdict, top, note);
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

/// What helps against heat; empty where nothing presses.
std::string coolingAdvice(const Verdict& verdict, const Snapshot& now) {
    const SystemWords& words = systemWords(verdict.system);
    if (verdict.cooling == Cooling::load)
        return {};
    if (DiagnosisEngine::isThrottling(now.thermalPressure) && DiagnosisEngine::isSlowedByHeat(now, verdict.system))
        return fmt::format("{} is actively throttling to shed heat, so everything will feel slower until this clears.",
                           words.systemFirst);
    if (!isJudgedByHeat(verdict.cooling) || Snapshot::heatLoad(now.chipHeat) < 0.48)
        return {};
    if (verdict.cooling == Cooling::heat)
        return fmt::format("Free vents and a cool room help {} shed its heat.", words.thisMachine);
    if (words.isMac())
        return "Without fans, this Mac sheds heat through the bottom of its case. A hard, cool surface helps; a lap or "
               "a blanket brings the slowdown sooner.";
    return "Without fans, this computer sheds heat through its case. A cool, airy place helps; a lap, a blanket or a "
           "closed cabinet traps it.";
}

std::string memoryAdvice(const MemoryLoad& memory) {
    if (!DiagnosisEngine::isMemoryShort(memory))
        return {};
    if (!memory.availableBytes)
        return "Memory pressure is high as well — compression and swapping are adding CPU load of their own.";
    return fmt::format("Memory is short as well: {} are taken.", DiagnosisEngine::memoryText(memory));
}

std::vector<Advice> adviceFor(const Verdict& verdict, const ProcessGroup& top, const std::optional<ProcessNote>& note,
                              const Snapshot& now) {
    std::vector<Advice> advice;
    if (note)
        adviseOnKnown(advice, top, *note);
    else
        adviseOnUnknown(advice, top);
    std::string power;
    if (now.favoursSpeed && (verdict.cooling == Cooling::fans || verdict.cooling == Cooling::heat))
        power = fmt::format("A balanced power profile makes {} quieter.", systemWords(verdict.system).thisMachine);
    for (std::string text : {coolingAdvice(verdict, now), std::move(power), memoryAdvice(now.memory)})
        if (!text.empty())
            advice.push_back({std::move(text), {}});
    return advice;
}

/// A card that draws power at rest, as many do, is no explanation.
bool isRendering(const Verdict& verdict, const Snapshot& now) {
    if (isMac(verdict))
        return now.power.gpuWatts > 8.0;
    return now.gpuPercent ? *now.gpuPercent >= 10 && now.power.gpuWatts > 0.2 : now.power.gpuWatts > 40;
}

std::string unaccountedWork() {
    return "No single program accounts for it. It may be interrupts, programs of other users that may not be read, "
           "programs that start and end all the time, or work of the machine that hosts this one.";
}

std::string heatWithoutLoadExplanation(const Verdict& verdict, const Snapshot& now, const Format& format) {
    if (verdict.cooling == Cooling::load)
        return unaccountedWork();
    if (!isMac(verdict) && verdict.work >= StressLevel::moderate)
        return fmt::format("The processors are {} busy. {}",
                           DiagnosisEngine::pct(std::clamp(DiagnosisEngine::busyPercent(now.cpu), 0.0, 100.0)),
                           unaccountedWork());
    if (isRendering(verdict, now))
        return fmt::format("CPU load is low but the GPU is drawing {:.1f} W, so something is rendering rather than "
                           "computing.",
                           now.power.gpuWatts);
    if (DiagnosisEngine::isChargingFast(now, verdict.system))
        return fmt::format("CPU load is low. The machine is pulling {} W from the charger, and fast charging alone "
                           "produces real heat.",
                           truncated(now.power.adapterWatts));
    if (verdict.cooling == Cooling::passive && now.temps.socMean > 0)
        return fmt::format("The chip is still at {} from earlier work. Without fans it cools through the case, which "
                           "takes a few minutes rather than seconds.",
                           format.temperature(now.temps.socMean));
    if (verdict.cooling == Cooling::heat && now.temps.socMean > 0)
        return fmt::format("The chip is at {} although little is running: it may still be shedding the heat of earlier "
                           "work, or be this warm at rest.",
                           format.temperature(now.temps.socMean));
    if (now.temps.soc > 70 && verdict.cooling != Cooling::heat)
        return fmt::format("The chip is still at {} from earlier work — the fans are clearing residual heat and should "
                           "wind down shortly.",
                           format.temperature(now.temps.soc));
    const bool mayCharge = mayHaveBattery(verdict, now);
    if (verdict.cooling == Cooling::fans)
        return fmt::format("No process stands out. This is usually the tail of a burst that has already finished{}.",
                           mayCharge ? ", or heat from charging" : "");
    return fmt::format("No process stands out. This is usually heat left over from work that has already finished{}.",
                       mayCharge ? ", or from charging" : "");
}

std::string persistenceAdvice(const Verdict& verdict, const Snapshot& now) {
    const bool mayCharge = mayHaveBattery(verdict, now);
    switch (verdict.cooling) {
    case Cooling::load:
        return "If this persists, look for a job that keeps starting short-lived programs.";
    case Cooling::passive:
        return fmt::format("If this persists with no load, check for a warm room{} something soft under the {}{}.",
                           mayCharge ? "," : " or", systemWords(verdict.system).machine,
                           mayCharge ? ", or heavy charging" : "");
    case Cooling::fans:
    case Cooling::heat:
        break;
    }
    return mayCharge ? "If this persists with no load, check for a blocked vent, high room temperature, or heavy "
                       "charging."
                     : "If this persists with no load, check for a blocked vent or high room temperature.";
}

/// Only a system's own word, or a reason that is known, tells that anything is slowed down.
std::string pressedHeadline(const Verdict& verdict, const Snapshot& now) {
    const SystemWords& words = systemWords(verdict.system);
    return DiagnosisEngine::isSlowedByHeat(now, verdict.system)
               ? fmt::format("{} is slowing the chip to shed heat", words.systemFirst)
               : fmt::format("Heat presses on {}", words.thisMachine);
}

bool isPressedByHeat(const Verdict& verdict, const Snapshot& now) {
    return verdict.cooling != Cooling::load && DiagnosisEngine::isThrottling(now.thermalPressure);
}

void narrateRest(Verdict& verdict, const Snapshot& now, const Causes& causes, const Format& format) {
    if (isPressedByHeat(verdict, now)) {
        verdict.headline = pressedHeadline(verdict, now);
        verdict.detail = pressedAtRestDetail(verdict, now);
    } else if (verdict.awaitingReading && !verdict.speaksOfWork()) {
        verdict.headline = "Waiting for the chip";
        verdict.detail = isMac(verdict) ? "The chip hasn't given a usable temperature yet. An idle Apple silicon chip "
                                          "parks its sensors, and they report again as soon as it does some work."
                                        : "The chip hasn't given a usable temperature yet.";
    } else {
        verdict.headline = restHeadline(verdict, now);
        verdict.detail = quietDetail(verdict, now, causes, format);
        if (worksUnfelt(verdict) && isNotablyBusy(causes)) {
            const ProcessGroup& top = causes.front();
            verdict.headline = blameHeadline(verdict, causes, friendlyName(top, verdict.system));
            verdict.advice = adviceFor(verdict, top, noteOn(top, verdict.system), now);
        }
    }
}

} // namespace

std::string restHeadline(const Verdict& verdict, const Snapshot& now) {
    if (verdict.speaksOfWork())
        return verdict.statePhrase();
    const bool idle = verdict.state == StressLevel::idle;
    if (verdict.cooling != Cooling::fans)
        return idle ? "All cool" : "Running comfortably";
    if (!isMac(verdict) && now.temps.soc > hotChip)
        return "Running quietly";
    return idle ? "All quiet" : "Running cool";
}

std::string slowdownSentences(const Verdict& verdict, const Snapshot& now, bool evenByChoice) {
    static constexpr std::array<std::string_view, 5> reasons{
        "a temperature limit has been reached", "a power limit has been reached",
        "a limit of electrical current has been reached", "its firmware is holding it back",
        "its power profile favours saving over speed"};
    const SystemWords& words = systemWords(verdict.system);
    std::string sentences;
    for (std::size_t reason = 0; reason < reasons.size(); ++reason)
        if (const auto each = static_cast<ThrottleReason>(reason); now.throttle &&
                                                                   std::ranges::count(*now.throttle, each) > 0 &&
                                                                   (evenByChoice || each != ThrottleReason::profile))
            sentences += fmt::format(" {} is slowed down: {}.", words.thisMachineFirst, reasons[reason]);
    if (now.favoursSpeed && !isAtRest(verdict.state))
        sentences +=
            byCooling(verdict.cooling, " Its power profile is set to performance, which makes the fans louder.",
                      " Its power profile is set to performance, which makes it warmer.",
                      " Its power profile is set to performance, which makes it warmer and louder.", "");
    return sentences;
}

void narrate(Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes, const Format& format) {
    if (isAtRest(verdict.state)) {
        narrateRest(verdict, now, causes, format);
    } else if (causes.empty()) {
        const bool isBusy =
            verdict.cooling == Cooling::load || (!isMac(verdict) && verdict.work >= StressLevel::moderate);
        verdict.headline =
            fmt::format("{}, but {}", verdict.statePhrase(), isBusy ? "no program stands out" : "nothing looks busy");
        verdict.detail = heatWithoutLoadExplanation(verdict, now, format);
        verdict.advice = {{persistenceAdvice(verdict, now), {}}};
    } else {
        const ProcessGroup& top = causes.front();
        const std::optional<ProcessNote> note = noteOn(top, verdict.system);
        const std::string name = note ? note->friendly : top.displayName;
        verdict.headline = blameHeadline(verdict, causes, name);
        verdict.detail = blameDetail(verdict, top, name, note);
        verdict.advice = adviceFor(verdict, top, note, now);
    }
    verdict.detail += slowdownSentences(verdict, now, !isAtRest(verdict.state));
}

std::string causePhrase(const Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes) {
    if (isAtRest(verdict.state)) {
        if (isPressedByHeat(verdict, now))
            return pressedHeadline(verdict, now);
        if (verdict.awaitingReading && !verdict.speaksOfWork())
            return "Waiting for the chip's first temperature reading";
        if (isNotablyBusy(causes))
            return friendlyName(causes.front(), verdict.system) + " is busiest, but the machine is coping";
        return worksUnfelt(verdict) ? "No process stands out" : "Nothing is working the machine hard";
    }
    if (causes.empty())
        return "No process stands out";
    const ProcessGroup& top = causes.front();
    std::string phrase = "because of " + friendlyName(top, verdict.system);
    if (top.members.size() >= 2)
        phrase += fmt::format(" × {}", top.members.size());
    if (verdict.sustainedFor > notableDuration)
        phrase += ", for " + DiagnosisEngine::duration(verdict.sustainedFor);
    return phrase;
}

} // namespace vantoro
