#include "Model/Diagnosis/ProcessKnowledge.h"

#include "Model/Diagnosis/LinuxNotes.h"

#include <algorithm>
#include <span>

namespace vantoro {

namespace {

/// Linux notes by the names, and by the beginnings of names, that they stand for.
class LinuxIndex {
public:
    explicit LinuxIndex(std::span<const LinuxNote> notes) {
        for (const LinuxNote& note : notes) {
            std::string_view names = note.names;
            while (!names.empty()) {
                const std::size_t end = std::min(names.find(' '), names.size());
                std::string name(names.substr(0, end));
                names.remove_prefix(std::min(end + 1, names.size()));
                std::ranges::replace(name, '~', ' ');
                const bool isBeginning = name.ends_with('*');
                if (isBeginning)
                    name.pop_back();
                (isBeginning ? beginnings_ : names_).emplace(std::move(name), &note);
            }
        }
    }

    const LinuxNote* find(std::string_view name) const {
        if (const auto exact = names_.find(name); exact != names_.end())
            return exact->second;
        for (; !name.empty(); name.remove_suffix(1))
            if (const auto found = beginnings_.find(name); found != beginnings_.end())
                return found->second;
        return nullptr;
    }

private:
    std::map<std::string, const LinuxNote*, std::less<>> names_;
    std::map<std::string, const LinuxNote*, std::less<>> beginnings_;
};

std::optional<ProcessNote> linuxNote(std::string_view name, ProcessKind kind) {
    static const LinuxIndex kernel(linuxKernelNotes());
    static const LinuxIndex programs(linuxProgramNotes());
    const LinuxNote* note = (kind == ProcessKind::kernel ? kernel : programs).find(name);
    if (note == nullptr)
        return std::nullopt;
    using enum LinuxNote::Nature;
    return ProcessNote{.friendly = note->friendly != nullptr ? std::string(note->friendly) : std::string(name),
                       .what = note->what,
                       .advice = note->advice != nullptr ? std::optional<std::string>(note->advice) : std::nullopt,
                       .selfResolving = note->nature == task || note->nature == work || note->nature == errand,
                       .quittable = note->nature == work || note->nature == app || note->nature == problem,
                       .ordinary = note->nature != task && note->nature != problem};
}

} // namespace

const ProcessKnowledge::Notes& ProcessKnowledge::notes() {
    static const Notes notes{
        {"wifip2pd",
         {.friendly = "Wi-Fi Direct helper",
          .what = "the daemon behind AirDrop, AirPlay and Sidecar. It has a long-standing habit of getting stuck in a "
                  "loop and burning a whole core indefinitely.",
          .advice = "Toggling Wi-Fi off and on almost always clears it.",
          .quittable = true}},
        {"AirPlayXPCHelper",
         {.friendly = "AirPlay helper",
          .what = "the AirPlay receiver/sender service. It often spins alongside a stuck Wi-Fi Direct daemon.",
          .advice = "Turning off AirPlay Receiver in System Settings › General › AirDrop & Handoff usually settles it.",
          .quittable = true}},
        {"WindowServer",
         {.friendly = "WindowServer",
          .what = "the part of macOS that draws every window. High usage usually means an external display, a lot of "
                  "open windows, or an app redrawing constantly.",
          .advice = "Look for an app with busy animation or video, and try disconnecting external displays to "
                    "confirm."}},
        {"kernel_task",
         {.friendly = "kernel_task",
          .what = "not really a culprit. macOS deliberately parks work in kernel_task to keep the CPU busy-but-cool "
                  "when the machine is already hot, so high usage here is a symptom of heat, not its cause.",
          .advice = "Look at what was running just before this climbed — that's the real cause.",
          .selfResolving = true}},
        {"mds_stores",
         {.friendly = "Spotlight indexing",
          .what = "Spotlight building its search index. It runs hard after big file changes, a migration or an OS "
                  "update.",
          .advice = "It finishes on its own — usually minutes, occasionally an hour after a major update.",
          .selfResolving = true}},
        {"mdworker_shared",
         {.friendly = "Spotlight worker",
          .what = "Spotlight reading the contents of individual files to index them.",
          .advice = "Harmless and temporary.",
          .selfResolving = true}},
        {"backupd",
         {.friendly = "Time Machine",
          .what = "a Time Machine backup running right now.",
          .advice = "It will stop when the backup completes.",
          .selfResolving = true}},
        {"photoanalysisd",
         {.friendly = "Photos analysis",
          .what = "Photos scanning your library for faces, pets and objects. It only runs when the Mac looks idle, but "
                  "it is genuinely heavy.",
          .advice = "Opening Photos pauses it. Otherwise it works through the library over a few sessions.",
          .selfResolving = true}},
        {"corespotlightd",
         {.friendly = "Spotlight index service",
          .what = "the system-wide search index service.",
          .advice = "Settles on its own.",
          .selfResolving = true}},
        {"softwareupdated",
         {.friendly = "Software Update",
          .what = "macOS downloading or preparing a system update in the background.",
          .advice = "It will finish, then likely ask you to restart.",
          .selfResolving = true}},
        {"syspolicyd",
         {.friendly = "Gatekeeper",
          .what = "macOS verifying the signature of an app you just launched or downloaded.",
          .advice = "Brief — it ends once verification completes.",
          .selfResolving = true}},
        {"cloudd",
         {.friendly = "iCloud sync",
          .what = "iCloud syncing files in the background.",
          .advice = "Usually settles once the current sync finishes.",
          .selfResolving = true}},
        {"bird",
         {.friendly = "iCloud Drive",
          .what = "the iCloud Drive file provider, uploading or downloading.",
          .advice = "Settles when the transfer finishes.",
          .selfResolving = true}},
        {"configd",
         {.friendly = "Network configuration",
          .what = "the system network configuration daemon. Sustained load here usually points at a network service "
                  "misbehaving nearby.",
          .advice = "Often paired with a stuck Wi-Fi daemon — toggling Wi-Fi helps."}},
        {"coreaudiod",
         {.friendly = "Core Audio",
          .what = "the system audio server. It shows up whenever something is playing or recording."}},
        {"installd",
         {.friendly = "Installer",
          .what = "macOS installing or updating an app.",
          .advice = "It will finish on its own.",
          .selfResolving = true}},
        {"XProtectService",
         {.friendly = "XProtect malware scan",
          .what = "Apple's built-in malware scanner doing a sweep.",
          .advice = "Temporary and worth letting finish.",
          .selfResolving = true}},
    };
    return notes;
}

const ProcessNote* ProcessKnowledge::note(std::string_view processName) {
    const Notes& known = notes();
    if (const auto exact = known.find(processName); exact != known.end())
        return &exact->second;
    const std::size_t start = processName.find_first_not_of(' ');
    if (start == std::string_view::npos)
        return nullptr;
    std::string_view word = processName.substr(start);
    word = word.substr(0, word.find(' '));
    const auto found = known.find(word);
    return found != known.end() ? &found->second : nullptr;
}

std::optional<ProcessNote> ProcessKnowledge::note(std::string_view processName, ProcessKind kind, SystemKind system) {
    if (system == SystemKind::gnuLinux)
        return linuxNote(processName, kind);
    const ProcessNote* known = note(processName);
    return known != nullptr ? std::optional(*known) : std::nullopt;
}

std::optional<ProcessNote> noteOn(const ProcessGroup& group, SystemKind system) {
    auto note = ProcessKnowledge::note(group.displayName, group.kind, system);
    if (note || system != SystemKind::gnuLinux || group.kind != ProcessKind::systemDaemon || group.members.empty())
        return note;
    const std::string& program = group.members.front().displayName;
    const bool isOneProgram = std::ranges::all_of(
        group.members, [&program](const ProcessAggregate& member) { return member.displayName == program; });
    return isOneProgram ? ProcessKnowledge::note(program, group.kind, system) : std::nullopt;
}

std::string friendlyName(const ProcessGroup& group, SystemKind system) {
    const auto note = noteOn(group, system);
    return note ? note->friendly : group.displayName;
}

} // namespace vantoro
