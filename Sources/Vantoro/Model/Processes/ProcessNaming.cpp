#include "Model/Processes/ProcessNaming.h"

#include <algorithm>
#include <array>

namespace vantoro {

namespace {

constexpr std::string_view appSuffix = ".app";

std::string withoutAppSuffix(std::string_view component) {
    return std::string(component.substr(0, component.size() - appSuffix.size()));
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

} // namespace vantoro
