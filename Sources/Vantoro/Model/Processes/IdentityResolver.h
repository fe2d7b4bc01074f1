// What a process is called and what kind of process it is. The rows of each sample get their full identities, and a
// process that has not changed keeps the very record it had, so that a tick's samples share their texts with the tick
// before.
#pragma once

#include "Model/Records/ProcessIdentity.h"
#include "Platform/AppIdentity.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
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

/// Not for concurrent use.
class IdentityResolver {
public:
    /// `appIdentity` may be null: then only paths tell applications.
    IdentityResolver(std::shared_ptr<AppIdentity> appIdentity, std::string currentUser);

    /// The identity of a row as its source gives it. It is worked out again when the command, the origin or the owner
    /// changed (an exec keeps the pid) and when the platform, which is asked each time, has another answer.
    SharedProcessIdentity resolve(std::int32_t pid, std::string_view rawName, const ProcessOrigin& origin,
                                  std::string_view user);

    /// Marks the end of one sample; identities that no recent sample asked for are forgotten.
    void endSample();

private:
    struct Remembered {
        std::string rawName;
        ProcessOrigin origin;
        std::string user;
        /// By the path alone, and with what the platform knows.
        SharedProcessIdentity portable;
        AppMembership membership;
        SharedProcessIdentity identity;
        std::uint64_t lastSample = 0;
    };

    /// A process that ended before its path was read is what others of its name and owner are.
    void takeAfterTwin(ProcessIdentity& identity) const;

    std::shared_ptr<AppIdentity> appIdentity_;
    std::string currentUser_;
    std::unordered_map<std::int32_t, Remembered> remembered_;
    std::uint64_t sampleNumber_ = 0;
};

} // namespace vantoro
