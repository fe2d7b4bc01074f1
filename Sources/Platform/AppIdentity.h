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

    /// The path as the path list gives it: an executable's full path, empty, or the platform's own mark for a process
    /// that has none. Nothing is known: an empty AppMembership. Asked for each row of every sample, so that an answer
    /// that took work is kept for a while.
    virtual AppMembership membership(std::int32_t pid, std::string_view listedPath) = 0;
};

} // namespace vantoro
