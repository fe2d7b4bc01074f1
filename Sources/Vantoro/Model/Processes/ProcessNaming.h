// What a process is called and what kind of process it is, from its executable's path and its owner.
#pragma once

#include "Model/Records/ProcessIdentity.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vantoro {

/// The components of a path that name application bundles ("Editor.app"), outermost first.
std::vector<std::string_view> appComponents(std::string_view path);

/// The kind, by where the executable lies and who runs it. An empty path is a system daemon's.
ProcessKind classify(std::string_view path, std::size_t appComponentCount, std::string_view user,
                     std::string_view currentUser);

/// The full identity of a process that its source calls `rawName`: inside application bundles it is named for the
/// innermost and belongs to the outermost, elsewhere it is named for its executable. Pid 0 is the kernel.
ProcessIdentity resolveIdentity(std::int32_t pid, std::string_view rawName, std::string_view path,
                                std::string_view user, std::string_view currentUser);

} // namespace vantoro
