// The sections of an explanation that judge and advise.
#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Model/Explanation/Explanation.h"
#include "Model/Text/Numbers.h"

#include <fmt/format.h>
#include <string>
#include <vector>

namespace vantoro {

namespace {

/// Chip temperature in degrees Celsius above which it is close to its limit.
constexpr double nearLimit = 95;

bool isFanless(const Snapshot& now) {
    return now.cooling == Cooling::passive;
}

bool isHardAtWork(const Verdict& verdict) {
    return verdict.state >= StressLevel::heavy;
}

/// Nothing to explain: little load, and the system holds nothing back.
bool isCalm(const Verdict& verdict, const Snapshot& now) {
    return isAtRest(verdict.state) && !DiagnosisEngine::isThrottling(now.thermalPressure);
}

const ProcessNote* noteOf(const ProcessGroup& group) {
    return ProcessKnowledge::note(group.displayName);
}

std::string calmOpening(const Verdict& verdict, const Snapshot& now) {
    if (verdict.awaitingReading)
        return "Nothing looks wrong, though the chip hasn't reported a temperature yet.";
    if (!isFanless(now))
        return "Yes. The machine is idling and the fans are at or near their floor.";
    return verdict.state == StressLevel::light ? "Yes. The chip as a whole is only mildly warm."
                                               : "Yes. The machine is idling and the chip is cool.";
}

std::string heatFromElsewhereOpening(const Verdict& verdict, const Snapshot& now) {
    if (verdict.awaitingReading)
        return "The chip hasn't reported a temperature yet, so the heat may be coming from the case, the battery or a "
               "charger.";
    return fmt::format("{}, so the heat is coming from somewhere else — the case, the battery or a charger.",
                       isFanless(now) ? "The chip itself isn't running hot" : "The fans are barely turning");
}

std::string suspectOpening(const Verdict& verdict, const Snapshot& now) {
    const bool isSystem = !verdict.suspect || verdict.suspect->kind == ProcessKind::systemDaemon ||
                          verdict.suspect->kind == ProcessKind::kernel;
    if (const ProcessNote* note = verdict.suspect ? noteOf(*verdict.suspect) : nullptr) {
        if (note->selfResolving)
            return fmt::format("Yes, and it is temporary. {} is a task macOS runs on its own schedule and finishes "
                               "without help.",
                               note->friendly);
        return fmt::format("Not quite. {} is a known problem case rather than ordinary background work.",
                           note->friendly);
    }
    if (isSystem)
        return "Hard to say from load alone — no process here is a known problem case.";
    return fmt::format("Yes, if you expected {} to be working hard. Sustained load from an app or a job you started is "
                       "exactly {}",
                       verdict.suspect->displayName,
                       isFanless(now) ? "what warms a Mac without fans." : "when fans are supposed to run.");
}

std::string opening(const Verdict& verdict, const Snapshot& now) {
    if (isCalm(verdict, now))
        return calmOpening(verdict, now);
    if (isAtRest(verdict.state))
        return heatFromElsewhereOpening(verdict, now);
    return suspectOpening(verdict, now);
}

/// What the chip's temperature means; empty when it needs no word.
std::string temperatureSentence(const Verdict& verdict, const Snapshot& now, const Format& format) {
    const double soc = now.temps.soc;
    if (soc > nearLimit) {
        const std::string temperature = format.temperature(soc);
        if (!isFanless(now))
            return fmt::format("At {} the chip is close to its limit, though Apple Silicon is designed to run here "
                               "under sustained load without harm.",
                               temperature);
        if (isAtRest(verdict.state))
            return fmt::format("One core is at {}, which is ordinary for a single busy thread: on a Mac without fans "
                               "it is the chip as a whole that sets the limit.",
                               temperature);
        return fmt::format("Its hottest core is at {}, close to its limit, though Apple silicon is designed to run "
                           "there under sustained load without harm.",
                           temperature);
    }
    if (!isHardAtWork(verdict))
        return {};
    if (isFanless(now))
        return "Fanless MacBooks are built to run this hot under sustained work. What changes is speed: once the chip "
               "reaches its limit it slows itself down, which is the price of silence.";
    if (soc > 0 && soc < 90)
        return "Temperatures are still within a comfortable range, so the fans are keeping ahead of the heat rather "
               "than losing to it.";
    return {};
}

const char* leaveAloneDetail(const Verdict& verdict, const Snapshot& now) {
    if (!isFanless(now))
        return "Fans are at their floor and the machine is cool.";
    if (verdict.awaitingReading)
        return "Nothing is holding the chip back.";
    return verdict.state == StressLevel::light ? "The chip is only mildly warm and nothing is holding it back."
                                               : "The chip is cool and nothing is holding it back.";
}

void addSuspectRows(std::vector<Explanation::Row>& rows, const ProcessGroup& suspect) {
    if (const ProcessNote* note = noteOf(suspect)) {
        if (note->advice)
            rows.push_back({.label = *note->advice, .emphasised = true});
        if (note->selfResolving)
            rows.push_back(
                {.label = "Wait it out", .detail = "This finishes on its own; changing things now just adds work."});
    }
    if (suspect.kind == ProcessKind::systemDaemon || suspect.kind == ProcessKind::kernel)
        return;
    const std::size_t count = suspect.members.size();
    rows.push_back({.label = "Quit or pause " + suspect.displayName,
                    .detail = count < 2 ? fmt::format("pid {}", count == 0 ? 0 : suspect.members.front().pid)
                                        : fmt::format("{} processes are involved", count)});
}

void addHeatRow(std::vector<Explanation::Row>& rows, const Verdict& verdict, const Snapshot& now) {
    const bool throttling = DiagnosisEngine::isThrottling(now.thermalPressure);
    if (!isFanless(now)) {
        if (throttling)
            rows.push_back({.label = "Improve airflow",
                            .detail = "Lift the machine off soft surfaces; macOS is throttling to shed heat."});
    } else if (throttling) {
        rows.push_back({.label = "Give it a hard, cool surface",
                        .detail = "It sheds heat through the bottom of the case, and macOS is already slowing the chip "
                                  "to shed more. A lap, a blanket or a sleeve traps it."});
    } else if (isHardAtWork(verdict)) {
        rows.push_back({.label = "Give it a hard, cool surface",
                        .detail = "It sheds heat through the bottom of the case. A lap, a blanket or a sleeve traps it "
                                  "and brings the slowdown sooner."});
    }
}

void addChargerRow(std::vector<Explanation::Row>& rows, const Snapshot& now) {
    if (now.power.adapterWatts > 60 && DiagnosisEngine::busyPercent(now.cpu) < 30)
        rows.push_back({.label = "Consider the charger",
                        .detail = fmt::format("{} W is going in while the CPU is mostly idle — fast charging makes "
                                              "real heat.",
                                              truncated(now.power.adapterWatts))});
}

} // namespace

Explanation::Section normalitySection(const Verdict& verdict, const Snapshot& now, const Format& format) {
    std::string body = opening(verdict, now);
    const auto add = [&body](const std::string& sentence) {
        if (!sentence.empty())
            body += " " + sentence;
    };
    if (DiagnosisEngine::isThrottling(now.thermalPressure))
        add(fmt::format("macOS has raised thermal pressure to {}, which means it is actively slowing things down to "
                        "shed heat. That part is not normal for routine work.",
                        DiagnosisEngine::word(now.thermalPressure)));
    else
        add(temperatureSentence(verdict, now, format));
    if (DiagnosisEngine::isMemoryShort(now.memory))
        add("Memory pressure is also high, and compression work shows up as CPU load in its own right.");
    return {.symbol = "checkmark.seal", .title = "Is this normal?", .body = std::move(body)};
}

Explanation::Section actionSection(const Verdict& verdict, const Snapshot& now) {
    Explanation::Section section{.symbol = "wrench.and.screwdriver", .title = "What you can do"};
    if (isCalm(verdict, now)) {
        section.body = "Nothing needs doing.";
        section.rows = {{.label = "Leave it alone", .detail = leaveAloneDetail(verdict, now)}};
        return section;
    }
    if (verdict.suspect)
        addSuspectRows(section.rows, *verdict.suspect);
    addHeatRow(section.rows, verdict, now);
    addChargerRow(section.rows, now);
    if (section.rows.empty())
        section.rows.push_back({.label = "Watch the timeline",
                                .detail = fmt::format("No clear single cause. The Timeline tab shows what preceded the "
                                                      "{}.",
                                                      isFanless(now) ? "rise" : "ramp")});
    section.body = verdict.suspect ? fmt::format("Ordered by what is most likely to help, given {} is leading.",
                                                 friendlyName(verdict.suspect->displayName))
                                   : "General options, since no single process stands out.";
    return section;
}

} // namespace vantoro
