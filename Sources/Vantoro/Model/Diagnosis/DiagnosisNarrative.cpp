// The words of a verdict: its headline, its paragraph, its advice and its short cause phrase.
#include "Model/Diagnosis/Diagnosis.h"

#include "Model/Text/Numbers.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace vantoro {

namespace {

using Causes = std::vector<ProcessGroup>;

/// Share of a core, or of the graphics processor, from which a group is worth a word although the machine copes.
constexpr double notablyBusyCPU = 40.0;
/// Seconds from which the length of an episode is worth a word.
constexpr double notableDuration = 45;

/// Chip temperature in degrees Celsius from which a machine is not called cool.
constexpr double hotChip = 80;

bool isNotablyBusy(const Verdict& verdict, const Causes& causes) {
    if (causes.empty())
        return false;
    return (verdict.isOfGraphics ? causes.front().gpuPercent.value_or(0) : causes.front().totalCPU) > notablyBusyCPU;
}

bool isMac(const Verdict& verdict) {
    return verdict.system == SystemKind::macos;
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
    if (isNotablyBusy(verdict, causes)) {
        const ProcessGroup& top = causes.front();
        const bool isHot = !isMac(verdict) && now.temps.soc > hotChip;
        const std::string_view ofFans =
            isHot ? "the fans are still near their floor" : "the machine is handling it without needing much airflow";
        const std::string_view ofHeat = verdict.awaitingReading ? "how warm that makes the chip is not known yet"
                                                                : "the chip is shedding the heat without strain";
        const std::string_view atEase =
            byCooling(verdict.cooling, ofFans, ofHeat, ofHeat, "the machine has plenty to spare");
        if (verdict.isOfGraphics)
            return fmt::format("{} keeps the graphics processor {} busy, but {}.", friendlyName(top, verdict.system),
                               DiagnosisEngine::pct(*top.gpuPercent), atEase);
        return fmt::format("{} is the busiest at {}{}, but {}.", friendlyName(top, verdict.system),
                           DiagnosisEngine::pct(top.totalCPU), DiagnosisEngine::countSuffix(top), atEase);
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

/// "which holds 11.2 of 16 GB"
std::string holding(const ProcessGroup& group, const Snapshot& now) {
    const std::string held = DiagnosisEngine::heldText(group, now.memory);
    return held.empty() ? "which holds the most memory" : "which holds " + held;
}

std::string blameHeadline(const Verdict& verdict, const Snapshot& now, const Causes& causes, const std::string& name) {
    if (verdict.isOfMemory)
        return fmt::format("{} because of {}, {}", verdict.statePhrase(), name, holding(causes.front(), now));
    const auto share = [&verdict](const ProcessGroup& cause) {
        return verdict.isOfGraphics ? cause.gpuPercent.value_or(0) : cause.totalCPU;
    };
    double total = 0;
    for (const ProcessGroup& cause : causes)
        total += share(cause);
    const bool dominates = total > 0 && share(causes.front()) / total > 0.45;
    if (!dominates && causes.size() >= 3)
        return fmt::format("{} — {} leads, but the load is spread out", verdict.statePhrase(), name);
    return fmt::format("{} because of {}", verdict.statePhrase(), name);
}

std::string characterSentence(const Verdict& verdict, const ProcessGroup& top, const std::optional<ProcessNote>& note,
                              bool isBeyondCPU) {
    if (note)
        return " It's " + note->what;
    if (top.kind == ProcessKind::commandLine)
        return " This is command-line work running under your account — a build, a script or a job you started.";
    if (top.kind == ProcessKind::systemDaemon)
        return fmt::format(" This is {} rather than something you opened.",
                           systemWords(verdict.system).backgroundService);
    if (top.members.size() >= 2 && !isBeyondCPU)
        return fmt::format(" No single one of those processes stands out — it is their combined load that is {}.",
                           verdict.cooling == Cooling::load ? "keeping the machine busy" : "heating the machine");
    return {};
}

/// Only while both are known and still tell what the verdict says.
std::string graphicsPowerSentence(const PowerReading& power) {
    if (!(power.gpuWatts >= 8) || !(power.cpuWatts.value_or(0) > 0) || power.gpuWatts < *power.cpuWatts)
        return {};
    return fmt::format(" The graphics processor draws {:.0f} of the {:.0f} W that both processors use.", power.gpuWatts,
                       power.gpuWatts + *power.cpuWatts);
}

std::string blameDetail(const Verdict& verdict, const Snapshot& now, const ProcessGroup& top, const std::string& name,
                        const std::optional<ProcessNote>& note) {
    // What is a cause for its graphics work alone is told by that.
    const bool isOfGraphics = verdict.isOfGraphics || top.totalCPU < 4;
    std::string detail;
    if (verdict.isOfMemory) {
        const std::string held = DiagnosisEngine::heldText(top, now.memory);
        const double waits = now.stalls.memory.value_or(0);
        detail = fmt::format("{} holds {}{}. Memory is short: {}", name, held.empty() ? "the most memory" : held,
                             DiagnosisEngine::countSuffix(top),
                             waits >= 1 ? fmt::format("work waits for it {} of the time", DiagnosisEngine::pct(waits))
                                        : "the kernel keeps making room in it");
    } else {
        detail =
            isOfGraphics && top.gpuPercent
                ? fmt::format("{} kept the graphics processor {} busy", name, DiagnosisEngine::pct(*top.gpuPercent))
                : fmt::format("{} averaged {} CPU{}", name, DiagnosisEngine::pct(top.totalCPU),
                              DiagnosisEngine::countSuffix(top));
        if (!isOfGraphics && top.members.size() < 2 && 1.4 * top.totalCPU < top.peakCPU)
            detail += ", peaking at " + DiagnosisEngine::pct(top.peakCPU);
        if (verdict.cooling == Cooling::load)
            detail += fmt::format(" over the window that made {} busy", systemWords(verdict.system).thisMachine);
        else
            detail += " over the window that heated the machine";
    }
    if (verdict.sustainedFor > notableDuration) {
        detail +=
            byCooling(verdict.cooling, ", and the fans have been up for ", ", and the chip has been running warm for ",
                      ", and the chip has been running warm for ", ", and it has been busy for ");
        detail += DiagnosisEngine::duration(verdict.sustainedFor);
    }
    detail += ".";
    if (verdict.isOfGraphics)
        detail += graphicsPowerSentence(now.power);
    return detail + characterSentence(verdict, top, note, isOfGraphics || verdict.isOfMemory);
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

std::string chargingSentence(const Snapshot& now) {
    return fmt::format(
        "CPU load is low. The machine is pulling {} W from the charger, and fast charging alone produces "
        "real heat.",
        truncated(now.power.adapterWatts));
}

/// Graphics lead, but who uses them is not known.
std::string renderingExplanation(const Verdict& verdict, const Snapshot& now) {
    const bool isDrawing = now.power.gpuWatts > 0.2;
    const std::string graphics = isDrawing        ? fmt::format("is drawing {:.1f} W", now.power.gpuWatts)
                                 : now.gpuPercent ? fmt::format("is {} busy", DiagnosisEngine::pct(*now.gpuPercent))
                                                  : "is at work";
    if (verdict.work >= StressLevel::moderate)
        return fmt::format("The GPU {}, but which program it works for cannot be told.", graphics);
    return fmt::format("CPU load is low but the GPU {}, so something is rendering rather than computing.", graphics);
}

std::string heatWithoutLoadExplanation(const Verdict& verdict, const Snapshot& now, const Format& format) {
    if (verdict.isOfGraphics)
        return renderingExplanation(verdict, now);
    if (verdict.ranWhileQuiet && !isMac(verdict))
        return verdict.cooling != Cooling::load && DiagnosisEngine::isChargingFast(now, verdict.system)
                   ? chargingSentence(now)
                   : std::string(ranTheSameSentence);
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
        return chargingSentence(now);
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
        if (worksUnfelt(verdict) && isNotablyBusy(verdict, causes)) {
            const ProcessGroup& top = causes.front();
            verdict.headline = blameHeadline(verdict, now, causes, friendlyName(top, verdict.system));
            verdict.advice = adviceFor(verdict, top, now);
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
    double pausePercent = 0;
    double parkedPercent = 0;
    for (const ProcessSample& row : now.processes) {
        double& percent = row.identity->isCoolingPause() ? pausePercent : parkedPercent;
        if (row.identity->isSlowing(DiagnosisEngine::isThrottling(now.thermalPressure)))
            percent = std::max(percent, row.cpuPercent);
    }
    constexpr double leastTold = 4;
    if (pausePercent >= leastTold)
        sentences += fmt::format(" {} makes its processors pause {} of the time{}; no program does that.",
                                 words.systemFirst, DiagnosisEngine::pct(std::min(pausePercent, 100.0)),
                                 verdict.cooling == Cooling::load ? "" : " so that they cool down");
    if (parkedPercent >= leastTold && words.isMac())
        sentences +=
            fmt::format(" kernel_task is at {}: that is {} slowing the chip to shed heat, not the cause of it.",
                        DiagnosisEngine::pct(parkedPercent), words.system);
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
        const bool isBusy = verdict.cooling == Cooling::load ||
                            (!isMac(verdict) && !verdict.ranWhileQuiet && verdict.work >= StressLevel::moderate);
        verdict.headline =
            fmt::format("{}, but {}", verdict.statePhrase(), isBusy ? "no program stands out" : "nothing looks busy");
        verdict.detail = heatWithoutLoadExplanation(verdict, now, format);
        verdict.advice = {{persistenceAdvice(verdict, now), {}}};
    } else {
        const ProcessGroup& top = causes.front();
        const std::optional<ProcessNote> note = noteOn(top, verdict.system);
        const std::string name = note ? note->friendly : top.displayName;
        verdict.headline = blameHeadline(verdict, now, causes, name);
        verdict.detail = blameDetail(verdict, now, top, name, note);
        verdict.advice = adviceFor(verdict, top, now);
    }
    verdict.detail += slowdownSentences(verdict, now, !isAtRest(verdict.state));
}

std::string causePhrase(const Verdict& verdict, const Snapshot& now, const std::vector<ProcessGroup>& causes) {
    if (isAtRest(verdict.state)) {
        if (isPressedByHeat(verdict, now))
            return pressedHeadline(verdict, now);
        if (verdict.awaitingReading && !verdict.speaksOfWork())
            return "Waiting for the chip's first temperature reading";
        if (isNotablyBusy(verdict, causes))
            return friendlyName(causes.front(), verdict.system) + " is busiest, but the machine is coping";
        return worksUnfelt(verdict) ? "No process stands out" : "Nothing is working the machine hard";
    }
    if (causes.empty())
        return "No process stands out";
    const ProcessGroup& top = causes.front();
    std::string phrase = "because of " + friendlyName(top, verdict.system);
    if (verdict.isOfMemory)
        phrase += ", " + holding(top, now);
    else if (top.members.size() >= 2)
        phrase += fmt::format(" × {}", top.members.size());
    if (verdict.sustainedFor > notableDuration)
        phrase += ", for " + DiagnosisEngine::duration(verdict.sustainedFor);
    return phrase;
}

} // namespace vantoro
