// The well-known background processes that routinely show up as the busiest thing on a machine, and what to say of
// them.
#pragma once

#include "Model/Records/ProcessAggregate.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

struct ProcessNote {
    /// The name shown in place of the process name.
    std::string friendly;
    /// What follows "It's ": begins in lower case and ends with a full stop.
    std::string what;
    /// What to do about it, a whole sentence.
    std::optional<std::string> advice;
    /// The load ends by itself: indexing, backups, updates, scans.
    bool selfResolving = false;
    /// A quit button may be offered.
    bool quittable = false;
    /// It works when somebody gives it work: neither a task of the system's own schedule nor a problem case.
    bool ordinary = false;

    bool operator==(const ProcessNote&) const = default;
};

struct ProcessKnowledge {
    ProcessKnowledge() = delete;

    using Notes = std::map<std::string, ProcessNote, std::less<>>;

    /// Every note of macOS by exact process name; built on first use, the same for all callers.
    static const Notes& notes();

    /// The note for a process name of macOS, else for its first word; null when neither is known. Case matters. The
    /// note lives as long as the program.
    static const ProcessNote* note(std::string_view processName);

    /// The note that the table of this system has. On Linux a thread of the kernel's and a program of the same name are
    /// two things, and where a name begins as several entries do, the longest of those counts.
    static std::optional<ProcessNote> note(std::string_view processName, ProcessKind kind, SystemKind system);
};

/// The note on a group, of the table of this system. A Linux service that is not known by its own name is what its
/// program is, when it runs but one.
std::optional<ProcessNote> noteOn(const ProcessGroup& group, SystemKind system);

/// What a group is called in every sentence: its note's friendly name, else its display name.
std::string friendlyName(const ProcessGroup& group, SystemKind system);

} // namespace vantoro
