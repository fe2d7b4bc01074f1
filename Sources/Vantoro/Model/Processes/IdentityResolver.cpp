#include "Model/Processes/IdentityResolver.h"

#include "Model/Processes/ProcessNaming.h"

#include <utility>

namespace vantoro {

namespace {

/// What the platform knows goes before the portable rule's answer.
SharedProcessIdentity joined(const SharedProcessIdentity& portable, const AppMembership& membership) {
    if (membership == AppMembership())
        return portable;
    ProcessIdentity identity = *portable;
    identity.kind = membership.kind.value_or(identity.kind);
    identity.displayName = membership.displayName.value_or(identity.displayName);
    if (membership.owningAppName)
        identity.owningAppName = membership.owningAppName;
    if (membership.owningAppPath)
        identity.owningAppPath = membership.owningAppPath;
    return identity;
}

} // namespace

IdentityResolver::IdentityResolver(std::shared_ptr<AppIdentity> appIdentity, std::string currentUser)
    : appIdentity_(std::move(appIdentity)), currentUser_(std::move(currentUser)) {}

SharedProcessIdentity IdentityResolver::resolve(std::int32_t pid, std::string_view rawName, std::string_view listedPath,
                                                std::string_view user) {
    const auto [found, isNew] = remembered_.try_emplace(pid);
    Remembered& entry = found->second;
    entry.lastSample = sampleNumber_;
    const bool isChanged = isNew || entry.rawName != rawName || entry.listedPath != listedPath || entry.user != user;
    if (isChanged) {
        entry.rawName = rawName;
        entry.listedPath = listedPath;
        entry.user = user;
        entry.portable = workOut(pid, rawName, listedPath, user);
    }
    if (!appIdentity_ || pid == 0 || entry.portable->owningAppPath) {
        entry.identity = entry.portable;
        return entry.identity;
    }
    // Asked anew each time: the desktop may move a process into its application's group after it has started.
    AppMembership membership = appIdentity_->membership(pid, listedPath);
    if (isChanged || membership != entry.membership) {
        entry.membership = std::move(membership);
        entry.identity = joined(entry.portable, entry.membership);
    }
    return entry.identity;
}

ProcessIdentity IdentityResolver::workOut(std::int32_t pid, std::string_view rawName, std::string_view listedPath,
                                          std::string_view user) const {
    const std::string_view path = isPathMark(listedPath) ? std::string_view() : listedPath;
    return resolveIdentity(pid, rawName, path, user, currentUser_);
}

void IdentityResolver::endSample() {
    constexpr std::uint64_t samplesBetweenSweeps = 64;
    if (++sampleNumber_ % samplesBetweenSweeps == 0)
        std::erase_if(remembered_, [this](const auto& entry) {
            return entry.second.lastSample + samplesBetweenSweeps < sampleNumber_;
        });
}

} // namespace vantoro
