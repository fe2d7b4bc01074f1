#include "Model/IdentityResolver.h"

#include "Model/ProcessNaming.h"

#include <utility>

namespace vantoro {

IdentityResolver::IdentityResolver(std::shared_ptr<AppIdentity> appIdentity, std::string currentUser)
    : appIdentity_(std::move(appIdentity)), currentUser_(std::move(currentUser)) {}

SharedProcessIdentity IdentityResolver::resolve(std::int32_t pid, std::string_view rawName, std::string_view listedPath,
                                                std::string_view user) {
    const auto [found, isNew] = remembered_.try_emplace(pid);
    Remembered& entry = found->second;
    entry.lastSample = sampleNumber_;
    if (isNew || entry.rawName != rawName || entry.listedPath != listedPath || entry.user != user) {
        entry.rawName = rawName;
        entry.listedPath = listedPath;
        entry.user = user;
        entry.identity = workOut(pid, rawName, listedPath, user);
    }
    return entry.identity;
}

ProcessIdentity IdentityResolver::workOut(std::int32_t pid, std::string_view rawName, std::string_view listedPath,
                                          std::string_view user) const {
    const std::string_view path = isPathMark(listedPath) ? std::string_view() : listedPath;
    ProcessIdentity identity = resolveIdentity(pid, rawName, path, user, currentUser_);
    if (pid == 0 || identity.owningAppPath || !appIdentity_)
        return identity;
    AppMembership membership = appIdentity_->membership(pid, listedPath);
    if (membership.kind)
        identity.kind = *membership.kind;
    if (membership.displayName)
        identity.displayName = std::move(*membership.displayName);
    if (membership.owningAppName)
        identity.owningAppName = std::move(membership.owningAppName);
    if (membership.owningAppPath)
        identity.owningAppPath = std::move(membership.owningAppPath);
    return identity;
}

void IdentityResolver::endSample() {
    constexpr std::uint64_t samplesBetweenSweeps = 64;
    if (++sampleNumber_ % samplesBetweenSweeps == 0)
        std::erase_if(remembered_, [this](const auto& entry) {
            return entry.second.lastSample + samplesBetweenSweeps < sampleNumber_;
        });
}

} // namespace vantoro
