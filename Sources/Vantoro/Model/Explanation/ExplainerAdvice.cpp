// The sections of an explanation that judge and advise.
#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Explanation/Explanation.h"
#include "Model/Text/Numbers.h"

#include <fmt/format.h>
#include <string>
#include <vector>

namespace vantoro {

namespace {

/// Chip temperature in degrees Celsius above which it is close to its limit.
constexpr double nearLimit = 95;

bool isMac(const Verdict& verdict) {
    return verdict.system == SystemKind::macos;
}

/// Nothing is known to hold the machine back. A Mac says so by its thermal pressure.
bool isKnownToBeFree(const Verdict& verdict, const Snapshot& now) {
    return isMac(verdict) || (now.throttle && now.throttle->empty());
}

bool isHardAtWork(const Verdict& verdict) {
    return verdict.state >= StressLevel::heavy;
}

/// What presses on the machine: thermal pressure, where heat is spoken of.
bool isPressed(const Verdict& verdict, const Snapshot& now) {
    return verdict.cooling != Cooling::load && DiagnosisEngine::isThrottling(now.thermalPressure);
}

/// Nothing to explain: little load, and the system holds nothing back.
bool isCalm(const Verdict& verdict, const Snapshot& now) {
    return isAtRest(verdict.state) && !isPressed(verdict, now);
}

std::string calmOpening(const Verdict& verdict) {
    const bool isLight = verdict.state == StressLevel::light;
    if (verdict.cooling == Cooling::load)
        return isLight ? "Yes. The machine has little to do." : "Yes. The machine is idling.";
    if (verdict.awaitingReading)
        return "Nothing looks wrong, though the chip hasn't reported a temperature yet.";
    if (verdict.speaksOfWork())
        return fmt::format("Yes. The machine is hard at work, and {}.", verdict.cooling == Cooling::fans
                                                                            ? "the fans are at or near their floor"
                                                                            : "the chip is no more than mildly warm");
    if (verdict.cooling == Cooling::fans)
        return "Yes. The machine is idling and the fans are at or near their floor.";
    return isLight ? "Yes. The chip as a whole is only mildly warm."
                   : "Yes. The machine is idling and the chip is cool.";
}

std::string heatFromElsewhereOpening(const Verdict& verdict, const Snapshot& now) {
    const bool mayCharge = isMac(verdict) || now.power.batteryWatts != 0 || now.temps.battery > 0;
    const char* const sources = mayCharge ? "the case, the battery or a charger" : "the case or the room";
    if (verdict.awaitingReading)
        return fmt::format("The chip hasn't reported a temperature yet, so the heat may be coming from {}.", sources);
    return fmt::format("{}, so the heat is coming from somewhere else — {}.",
                       verdict.cooling == Cooling::fans ? "The fans are barely turning"
                                                        : "The chip itself isn't running hot",
                       sources);
}

/// A Mac's suspect goes by its own name here.
const std::string& friendlyOrDisplayed(const Verdict& verdict, const std::optional<ProcessNote>& note) {
    return note && !isMac(verdict) ? note->friendly : verdict.suspect->displayName;
}

std::string suspectOpening(const Verdict& verdict) {
    const bool isSystem = !verdict.suspect || verdict.suspect->kind == ProcessKind::systemDaemon ||
                          verdict.suspect->kind == ProcessKind::kernel;
    const std::optional<ProcessNote> note = verdict.suspect ? noteOn(*verdict.suspect, verdict.system) : std::nullopt;
    if (verdict.isOfMemory && verdict.suspect)
        return fmt::format("Not quite. Memory is short, and {} holds the most of it.",
                           friendlyName(*verdict.suspect, verdict.system));
    if (note && note->selfResolving)
        return isMac(verdict) || isSystem
                   ? fmt::format("Yes, and it is temporary. {} is a task {} runs on its own schedule and finishes "
                                 "without help.",
                                 note->friendly, systemWords(verdict.system).system)
                   : fmt::format("Yes, and it is temporary. {} ends by itself when its work is done.", note->friendly);
    if (note && !note->ordinary)
        return fmt::format("Not quite. {} is a known problem case rather than ordinary background work.",
                           note->friendly);
    if (note && isSystem)
        return fmt::format("That depends on what asks for it: {} works this hard only for somebody else.",
                           note->friendly);
    if (isSystem)
        return "Hard to say from load alone — no process here is a known problem case.";
    const std::string_view usual = byCooling(verdict.cooling, "when fans are supposed to run",
                                             "what warms a {} without fans", "what warms a {}", "what keeps a {} busy");
    return fmt::format("Yes, if you expected {} to be working hard. Sustained load from an app or a job you started is "
                       "exactly {}.",
                       friendlyOrDisplayed(verdict, note),
                       fmt::format(fmt::runtime(usual), systemWords(verdict.system).machine));
}

std::string opening(const Verdict& verdict, const Snapshot& now) {
    if (isCalm(verdict, now))
        return calmOpening(verdict);
    if (isAtRest(verdict.state))
        return heatFromElsewhereOpening(verdict, now);
    return suspectOpening(verdict);
}

std::string nearLimitSentence(const Verdict& verdict, const std::string& temperature) {
    if (isMac(verdict) && verdict.cooling == Cooling::fans)
        return fmt::format("At {} the chip is close to its limit, though Apple Silicon is designed to run here under "
                           "sustained load without harm.",
                           temperature);
    if (verdict.cooling == Cooling::fans)
        return fmt::format("At {} the chip is close to its limit.", temperature);
    if (isAtRest(verdict.state))
        return verdict.cooling == Cooling::passive
                   ? fmt::format(
                         "One core is at {}, which is ordinary for a single busy thread: on a {} without fans it "
                         "is the chip as a whole that sets the limit.",
                         temperature, systemWords(verdict.system).machine)
                   : fmt::format("One core is at {}, which is ordinary for a single busy thread.", temperature);
    return fmt::format(
        "Its hottest core is at {}, close to its limit{}.", temperature,
        isMac(verdict) ? ", though Apple silicon is designed to run there under sustained load without harm" : "");
}

/// What the chip's temperature means; empty when it needs no word.
std::string temperatureSentence(const Verdict& verdict, const Snapshot& now, const Format& format) {
    const double soc = now.temps.soc;
    if (verdict.cooling == Cooling::load)
        return {};
    if (soc > nearLimit)
        return nearLimitSentence(verdict, format.temperature(soc));
    if (!isHardAtWork(verdict))
        return {};
    if (verdict.cooling == Cooling::heat)
        return "Once the chip reaches its limit it slows itself down.";
    if (verdict.cooling == Cooling::passive)
        return fmt::format("{} to run this hot under sustained work. What changes is speed: once the chip reaches its "
                           "limit it slows itself down, which is the price of silence.",
                           isMac(verdict) ? "Fanless MacBooks are built" : "Computers without fans are built");
    if (soc > 0 && soc < 90)
        return "Temperatures are still within a comfortable range, so the fans are keeping ahead of the heat rather "
               "than losing to it.";
    return {};
}

std::string leaveAloneDetail(const Verdict& verdict, const Snapshot& now) {
    constexpr double coolChip = 68;
    const std::string_view free = isKnownToBeFree(verdict, now) ? " and nothing is holding it back" : "";
    const bool isLight = verdict.state == StressLevel::light;
    switch (verdict.cooling) {
    case Cooling::fans:
        return isMac(verdict) || (now.temps.soc > 0 && now.temps.soc <= coolChip && !verdict.speaksOfWork())
                   ? "Fans are at their floor and the machine is cool."
                   : "Fans are at or near their floor.";
    case Cooling::load:
        return "The machine has plenty to spare.";
    case Cooling::passive:
    case Cooling::heat:
        break;
    }
    if (verdict.awaitingReading)
        return free.empty() ? "Nothing asks for help." : "Nothing is holding the chip back.";
    return fmt::format("The chip is {}{}.", isLight ? "only mildly warm" : "cool", free);
}

void addSuspectRows(std::vector<Explanation::Row>& rows, const Verdict& verdict) {
    const ProcessGroup& suspect = *verdict.suspect;
    const std::optional<ProcessNote> note = noteOn(suspect, verdict.system);
    if ((verdict.isOfGraphics || verdict.isOfMemory) && !verdict.advice.empty())
        rows.push_back({.label = verdict.advice.front().text, .emphasised = true});
    else if (note && note->advice)
        rows.push_back({.label = *note->advice, .emphasised = true});
    if (note && note->selfResolving)
        rows.push_back(
            {.label = "Wait it out", .detail = "This finishes on its own; changing things now just adds work."});
    // The desktop's own parts run under the user's account too: to quit one may take everything with it.
    const bool isLeftAlone = note && !note->quittable && !isMac(verdict);
    if (suspect.kind == ProcessKind::systemDaemon || suspect.kind == ProcessKind::kernel || isLeftAlone)
        return;
    const std::size_t count = suspect.members.size();
    rows.push_back({.label = "Quit or pause " + friendlyOrDisplayed(verdict, note),
                    .detail = count < 2 ? fmt::format("pid {}", count == 0 ? 0 : suspect.members.front().pid)
                                        : fmt::format("{} processes are involved", count)});
}

void addHeatRow(std::vector<Explanation::Row>& rows, const Verdict& verdict, const Snapshot& now) {
    const SystemWords& words = systemWords(verdict.system);
    const bool isPressedNow = isPressed(verdict, now);
    const bool isSlowed = isPressedNow && DiagnosisEngine::isSlowedByHeat(now, verdict.system);
    if (!isPressedNow && !(isJudgedByHeat(verdict.cooling) && isHardAtWork(verdict)))
        return;
    if (verdict.cooling == Cooling::fans)
        rows.push_back({.label = "Improve airflow",
                        .detail = isSlowed ? fmt::format("Lift the machine off soft surfaces; {} is throttling to shed "
                                                         "heat.",
                                                         words.system)
                                           : "Lift the machine off soft surfaces and keep its vents free."});
    else if (verdict.cooling == Cooling::heat)
        rows.push_back({.label = "Improve airflow",
                        .detail = fmt::format("Keep its vents free and the air around it cool{}.",
                                              isSlowed ? "; the system is throttling to shed heat" : "")});
    else if (words.isMac())
        rows.push_back({.label = "Give it a hard, cool surface",
                        .detail = isSlowed
                                      ? "It sheds heat through the bottom of the case, and macOS is already "
                                        "slowing the chip to shed more. A lap, a blanket or a sleeve traps it."
                                      : "It sheds heat through the bottom of the case. A lap, a blanket or a sleeve "
                                        "traps it and brings the slowdown sooner."});
    else
        rows.push_back(
            {.label = "Give it a cool, airy place",
             .detail = fmt::format("It sheds heat through its case{}. A lap, a blanket or a closed cabinet "
                                   "traps it.",
                                   isSlowed ? ", and the system is already slowing the chip to shed more" : "")});
}

void addChargerRow(std::vector<Explanation::Row>& rows, const Verdict& verdict, const Snapshot& now) {
    if (verdict.cooling != Cooling::load && !verdict.isOfGraphics &&
        DiagnosisEngine::isChargingFast(now, verdict.system) && DiagnosisEngine::busyPercent(now.cpu) < 30)
        rows.push_back({.label = "Consider the charger",
                        .detail = fmt::format("{} W is going in while the CPU is mostly idle — fast charging makes "
                                              "real heat.",
                                              truncated(now.power.adapterWatts))});
}

std::string pressureSentence(const Verdict& verdict, const Snapshot& now) {
    const std::string_view pressure = DiagnosisEngine::word(now.thermalPressure);
    if (isMac(verdict))
        return fmt::format("macOS has raised thermal pressure to {}, which means it is actively slowing things down to "
                           "shed heat. That part is not normal for routine work.",
                           pressure);
    return fmt::format("Thermal pressure is {}{}. That part is not normal for routine work.", pressure,
                       DiagnosisEngine::isSlowedByHeat(now, verdict.system)
                           ? ", and the system is slowing things down to shed heat"
                           : "");
}

std::string memorySentence(const MemoryLoad& memory) {
    if (!DiagnosisEngine::isMemoryShort(memory))
        return {};
    if (!memory.availableBytes)
        return "Memory pressure is also high, and compression work shows up as CPU load in its own right.";
    return fmt::format("Memory is also short: {} are taken.", DiagnosisEngine::memoryText(memory));
}

} // namespace

Explanation::Section normalitySection(const Verdict& verdict, const Snapshot& now, const Format& format) {
    std::string body = opening(verdict, now);
    for (const std::string& sentence :
         {isPressed(verdict, now) ? pressureSentence(verdict, now) : temperatureSentence(verdict, now, format),
          verdict.isOfMemory ? std::string() : memorySentence(now.memory)})
        if (!sentence.empty())
            body += " " + sentence;
    return {.symbol = "checkmark.seal", .title = "Is this normal?", .body = std::move(body)};
}

Explanation::Section actionSection(const Verdict& verdict, const Snapshot& now) {
    Explanation::Section section{.symbol = "wrench.and.screwdriver", .title = "What you can do"};
    if (isCalm(verdict, now)) {
        const bool isAtWork = verdict.cooling != Cooling::load && verdict.speaksOfWork();
        section.body = isAtWork ? "Nothing, unless it is not meant to work this hard." : "Nothing needs doing.";
        if (isAtWork && verdict.suspect)
            addSuspectRows(section.rows, verdict);
        section.rows.push_back({.label = "Leave it alone", .detail = leaveAloneDetail(verdict, now)});
        return section;
    }
    if (verdict.suspect)
        addSuspectRows(section.rows, verdict);
    addHeatRow(section.rows, verdict, now);
    addChargerRow(section.rows, verdict, now);
    if (section.rows.empty())
        section.rows.push_back({.label = "Watch the timeline",
                                .detail = fmt::format("No clear single cause. The Timeline tab shows what preceded the "
                                                      "{}.",
                                                      verdict.cooling == Cooling::fans ? "ramp" : "rise")});
    section.body = verdict.suspect ? fmt::format("Ordered by what is most likely to help, given {} is leading.",
                                                 friendlyName(*verdict.suspect, verdict.system))
                                   : "General options, since no single process stands out.";
    return section;
}

} // namespace vantoro
