// What a verdict advises.
#include "Model/Diagnosis/Diagnosis.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <utility>

namespace vantoro {

namespace {

Advice quitting(const ProcessGroup& group, const std::string& name) {
    return {"Quit " + name, group.members.empty() ? 0 : group.members.front().pid};
}

bool belongsToUser(const ProcessGroup& group) {
    return group.kind == ProcessKind::userApp || group.kind == ProcessKind::helper ||
           group.kind == ProcessKind::commandLine;
}

void adviseOnKnown(std::vector<Advice>& advice, const ProcessGroup& top, const ProcessNote& note) {
    if (note.advice)
        advice.push_back({*note.advice, {}});
    if (note.selfResolving)
        advice.push_back({"This one ends by itself — worth waiting out before changing anything.", {}});
    if (note.quittable && belongsToUser(top))
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

/// Where games are installed, whoever sells them; a note on a program's name does not say what it is used for.
bool isGame(const ProcessGroup& group) {
    static constexpr std::array<std::string_view, 6> folders{"/steamapps/common/", "/usr/games/", "/usr/share/games/",
                                                             "/usr/local/games/",  "/Games/",     "/GOG Games/"};
    return std::ranges::any_of(group.members, [](const ProcessAggregate& member) {
        return std::ranges::any_of(folders, [&member](std::string_view folder) {
            return member.executablePath.find(folder) != std::string::npos;
        });
    });
}

/// What a person can close, and what a job or the system does by itself.
bool hasWindows(const ProcessGroup& top, const std::optional<ProcessNote>& note) {
    return top.kind == ProcessKind::userApp || top.kind == ProcessKind::helper ? !note || note->quittable : false;
}

void adviseOnGraphics(std::vector<Advice>& advice, const Verdict& verdict, const ProcessGroup& top,
                      const std::optional<ProcessNote>& note) {
    std::string text = fmt::format("The graphics processor {}, not the processor.",
                                   verdict.cooling == Cooling::load ? "does the work" : "makes the heat");
    const bool isAGame = isGame(top);
    const bool canClose = isAGame || hasWindows(top, note);
    if (isAGame)
        text += " Closing the game's window or lowering its frame rate, resolution or effects lets it rest.";
    else if (canClose)
        text += " Closing its window or showing fewer effects lets it rest.";
    advice.push_back({std::move(text), {}});
    if (note)
        adviseOnKnown(advice, top, *note);
    else if (canClose)
        advice.push_back(quitting(top, top.displayName));
    else
        adviseOnUnknown(advice, top);
}

void adviseOnMemory(std::vector<Advice>& advice, const ProcessGroup& top, const std::optional<ProcessNote>& note) {
    const bool canEnd = belongsToUser(top) && (!note || note->quittable);
    advice.push_back({canEnd ? "Closing some of what it has open, or ending it, makes room in memory again."
                             : "Closing other large programs makes room in memory again.",
                      {}});
    if (canEnd)
        advice.push_back(quitting(top, note ? note->friendly : top.displayName));
}

} // namespace

std::vector<Advice> adviceFor(const Verdict& verdict, const ProcessGroup& top, const Snapshot& now) {
    const std::optional<ProcessNote> note = noteOn(top, verdict.system);
    std::vector<Advice> advice;
    if (verdict.isOfMemory)
        adviseOnMemory(advice, top, note);
    else if (verdict.isOfGraphics)
        adviseOnGraphics(advice, verdict, top, note);
    else if (note)
        adviseOnKnown(advice, top, *note);
    else
        adviseOnUnknown(advice, top);
    std::string power;
    if (now.favoursSpeed && (verdict.cooling == Cooling::fans || verdict.cooling == Cooling::heat))
        power = fmt::format("A balanced power profile makes {} quieter.", systemWords(verdict.system).thisMachine);
    for (std::string text :
         {coolingAdvice(verdict, now), std::move(power), verdict.isOfMemory ? "" : memoryAdvice(now.memory)})
        if (!text.empty())
            advice.push_back({std::move(text), {}});
    return advice;
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

} // namespace vantoro
