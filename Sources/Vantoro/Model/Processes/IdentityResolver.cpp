#include "Model/Processes/IdentityResolver.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vantoro {

namespace {

constexpr std::string_view appSuffix = ".app";

std::string withoutAppSuffix(std::string_view component) {
    return std::string(component.substr(0, component.size() - appSuffix.size()));
}

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

std::vector<std::string_view> appComponents(std::string_view path) {
    std::vector<std::string_view> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (path.substr(0, end).ends_with(appSuffix))
            components.push_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

ProcessKind classify(std::string_view path, std::size_t appComponentCount, std::string_view user,
                     std::string_view currentUser) {
    if (path.empty())
        return ProcessKind::systemDaemon;
    if (appComponentCount > 1)
        return ProcessKind::helper;
    if (appComponentCount == 1)
        return path.starts_with("/System/") ? ProcessKind::systemDaemon : ProcessKind::userApp;
    static constexpr std::array<std::string_view, 4> systemFolders{"/System/", "/usr/libexec/", "/usr/sbin/", "/sbin/"};
    if (std::ranges::any_of(systemFolders, [path](std::string_view folder) { return path.starts_with(folder); }))
        return ProcessKind::systemDaemon;
    return user == currentUser ? ProcessKind::commandLine : ProcessKind::systemDaemon;
}

ProcessIdentity resolveIdentity(std::int32_t pid, std::string_view rawName, std::string_view path,
                                std::string_view user, std::string_view currentUser) {
    ProcessIdentity identity{.pid = pid,
                             .rawName = std::string(rawName),
                             .displayName = std::string(rawName),
                             .user = std::string(user),
                             .kind = ProcessKind::systemDaemon};
    if (pid == 0) {
        identity.displayName = "kernel_task";
        identity.kind = ProcessKind::kernel;
        return identity;
    }
    identity.executablePath = path;
    const std::vector<std::string_view> apps = appComponents(path);
    if (!apps.empty()) {
        identity.displayName = withoutAppSuffix(apps.back());
        identity.owningAppName = withoutAppSuffix(apps.front());
        const auto end = static_cast<std::size_t>(apps.front().data() + apps.front().size() - path.data());
        identity.owningAppPath = std::string(path.substr(0, end));
    } else if (!path.empty()) {
        const std::size_t slash = path.rfind('/');
        identity.displayName = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
    }
    identity.kind = classify(path, apps.size(), user, currentUser);
    return identity;
}

IdentityResolver::IdentityResolver(std::shared_ptr<AppIdentity> appIdentity, std::string currentUser)
    : appIdentity_(std::move(appIdentity)), currentUser_(std::move(currentUser)) {}

SharedProcessIdentity IdentityResolver::resolve(std::int32_t pid, std::string_view rawName, const ProcessOrigin& origin,
                                                std::string_view user) {
    const auto [found, isNew] = remembered_.try_emplace(pid);
    Remembered& entry = found->second;
    entry.lastSample = sampleNumber_;
    const bool isChanged = isNew || entry.rawName != rawName || entry.origin != origin || entry.user != user;
    if (isChanged) {
        entry.rawName = rawName;
        entry.origin = origin;
        entry.user = user;
        const std::string_view path = isPathMark(origin.path) ? std::string_view() : origin.path;
        ProcessIdentity identity = resolveIdentity(pid, rawName, path, user, currentUser_);
        if (appIdentity_ && pid != 0 && path.empty())
            takeAfterTwin(identity);
        entry.portable = std::move(identity);
    }
    if (!appIdentity_ || pid == 0 || !appComponents(origin.path).empty()) {
        entry.identity = entry.portable;
        return entry.identity;
    }
    // Asked anew each time: what is installed may have changed.
    AppMembership membership = appIdentity_->membership(pid, origin, user == currentUser_);
    if (isChanged || membership != entry.membership) {
        entry.membership = std::move(membership);
        entry.identity = joined(entry.portable, entry.membership);
    }
    return entry.identity;
}

void IdentityResolver::takeAfterTwin(ProcessIdentity& identity) const {
    const auto twin = std::ranges::find_if(remembered_, [&identity](const auto& other) {
        const ProcessIdentity& known = *other.second.identity;
        return other.first != identity.pid && !known.executablePath.empty() && known.rawName == identity.rawName &&
               known.user == identity.user;
    });
    if (twin == remembered_.end())
        return;
    const ProcessIdentity& known = *twin->second.identity;
    identity.displayName = known.displayName;
    identity.owningAppName = known.owningAppName;
    identity.owningAppPath = known.owningAppPath;
    identity.kind = known.kind;
}

void IdentityResolver::endSample() {
    constexpr std::uint64_t samplesBetweenSweeps = 64;
    if (++sampleNumber_ % samplesBetweenSweeps == 0)
        std::erase_if(remembered_, [this](const auto& entry) {
            return entry.second.lastSample + samplesBetweenSweeps < sampleNumber_;
        });
}

} // namespace vantoro
