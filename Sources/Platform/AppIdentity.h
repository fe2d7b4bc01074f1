// Which application a process belongs to, where the system knows applications by other means than bundle paths.
#pragma once

#include "Model/Records/ProcessIdentity.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

/// Whether a listed path is no path but a platform's mark for a process that has none: "[name]" for a thread of the
/// kernel's, "(name)" for a process whose executable is not to be seen. Such a process's executable path is empty.
constexpr bool isPathMark(std::string_view listedPath) {
    return listedPath.size() >= 2 && ((listedPath.front() == '[' && listedPath.back() == ']') ||
                                      (listedPath.front() == '(' && listedPath.back() == ')'));
}

/// What a process tells of where it comes from, at the moment it is seen: it may be gone a moment later.
struct ProcessOrigin {
    /// The executable's full path, empty, or a mark.
    std::string path;
    /// What it runs, where its program only runs others: a script, a virtual machine, a program for Windows.
    std::string subject;
    /// Where the service manager placed it; empty when unknown.
    std::string controlGroup;
    /// The name of the container it runs in, where that is to be had.
    std::string container;
    /// Whether a shell of its control group that takes commands started it: the one that the group began with or
    /// another; or only such as run a script.
    enum class Shell : std::uint8_t { none, first, inner, script };
    Shell shell = Shell::none;
    /// What the work was started as that it is part of ("make"); empty for no such work.
    std::string job;

    bool operator==(const ProcessOrigin&) const = default;
};

/// What the platform knows of a process beyond its path. An absent field leaves the portable rule's answer in place.
struct AppMembership {
    std::optional<ProcessKind> kind;
    std::optional<std::string> displayName;
    std::optional<std::string> owningAppName;
    std::optional<std::string> owningAppPath;

    bool operator==(const AppMembership&) const = default;
};

/// Used from one thread at a time.
class AppIdentity {
public:
    virtual ~AppIdentity() = default;

    /// `isOwn`: it runs under the account of whoever asks. Nothing is known: an empty AppMembership. Asked for each row
    /// of every sample, so that an answer that took work is kept for a while.
    virtual AppMembership membership(std::int32_t pid, const ProcessOrigin& origin, bool isOwn) = 0;
};

} // namespace vantoro
