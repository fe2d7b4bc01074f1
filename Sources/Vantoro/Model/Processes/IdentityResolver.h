// Gives the rows of each sample their full identities, and remembers them: a process that has not changed keeps the
// very record it had, so that a tick's samples share their texts with the tick before.
#pragma once

#include "Model/Records/ProcessIdentity.h"
#include "Platform/AppIdentity.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vantoro {

/// Not for concurrent use.
class IdentityResolver {
public:
    /// `appIdentity` may be null: then only paths tell applications.
    IdentityResolver(std::shared_ptr<AppIdentity> appIdentity, std::string currentUser);

    /// The identity of a row as its source gives it. It is worked out again when the command, the path or the owner
    /// changed (an exec keeps the pid) and when the platform, which is asked each time, has another answer.
    SharedProcessIdentity resolve(std::int32_t pid, std::string_view rawName, std::string_view listedPath,
                                  std::string_view user);

    /// Marks the end of one sample; identities that no recent sample asked for are forgotten.
    void endSample();

private:
    struct Remembered {
        std::string rawName;
        std::string listedPath;
        std::string user;
        /// By the path alone, and with what the platform knows.
        SharedProcessIdentity portable;
        AppMembership membership;
        SharedProcessIdentity identity;
        std::uint64_t lastSample = 0;
    };

    ProcessIdentity workOut(std::int32_t pid, std::string_view rawName, std::string_view listedPath,
                            std::string_view user) const;

    std::shared_ptr<AppIdentity> appIdentity_;
    std::string currentUser_;
    std::unordered_map<std::int32_t, Remembered> remembered_;
    std::uint64_t sampleNumber_ = 0;
};

} // namespace vantoro
