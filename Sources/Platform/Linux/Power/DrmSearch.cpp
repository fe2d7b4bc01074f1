#include "Platform/Linux/Power/DrmSearch.h"

#include "Platform/Linux/Power/DrmClients.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;
using Link = std::array<char, 256>;

std::optional<std::int32_t> numberNamed(std::string_view name) {
    std::int32_t number = 0;
    const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), number);
    return fault == std::errc() && end == name.data() + name.size() && number >= 0 ? std::optional(number)
                                                                                   : std::nullopt;
}

/// Where a link leads; empty where there is none.
std::string_view linkAt(int folder, const char* name, Link& room) {
    const ssize_t size = ::readlinkat(folder, name, room.data(), room.size());
    return {room.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

} // namespace

std::set<std::string, std::less<>> tellingNodes(const std::string& root) {
    constexpr std::array<std::string_view, 5> silent{"nvidia", "nouveau", "virtio_gpu", "virtio-pci", "vmwgfx"};
    const std::string folder = root + "/sys/class/drm/";
    std::set<std::string, std::less<>> nodes;
    for (const std::string& name : namesIn(folder)) {
        if (graphicsNode("/dri/" + name) != name)
            continue;
        Link room;
        std::string_view driver = linkAt(AT_FDCWD, (folder + name + "/device/driver").c_str(), room);
        driver.remove_prefix(driver.rfind('/') + 1);
        if (std::ranges::find(silent, driver) == silent.end())
            nodes.insert(name);
    }
    const bool anyRenders = std::ranges::any_of(nodes, [](const auto& node) { return node.starts_with("render"); });
    return anyRenders ? nodes : decltype(nodes)();
}

DrmSearch::DrmSearch(std::string root, std::set<std::string, std::less<>> nodes, std::uint32_t ownUid,
                     Listener listener)
    : root_(std::move(root)), nodes_(std::move(nodes)), ownUid_(ownUid), listener_(std::move(listener)) {}

void DrmSearch::look() {
    ++looks_;
    sawAll_ = seesEveryProcess();
    const Folder folder(::opendir((root_ + "/proc").c_str()), ::closedir);
    const int proc = folder ? ::dirfd(folder.get()) : -1;
    struct stat own {};
    const bool tellsCounts = ::fstatat(proc, "self/fd", &own, 0) == 0 && own.st_size > 0;
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        const auto pid = numberNamed(entry->d_name);
        if (!pid || *pid < 1)
            continue;
        Process& process = processes_[*pid];
        process.seenAt = looks_;
        if (looks_ >= process.dueAt)
            examine(proc, *pid, process, tellsCounts);
        sawAll_ = sawAll_ && !process.isForeign;
    }
    std::erase_if(processes_, [this](const auto& each) {
        if (each.second.seenAt == looks_)
            return false;
        for (const std::int32_t number : each.second.held)
            listener_.closed(each.first, number);
        return true;
    });
}

void DrmSearch::examine(int proc, std::int32_t pid, Process& process, bool tellsCounts) {
    constexpr std::uint64_t longest = 6;
    constexpr std::uint64_t longestUntold = 18;
    constexpr std::uint64_t examinationsPerListing = 5;
    const std::string name = std::to_string(pid) + "/fd";
    struct stat status {};
    process.isForeign = ::fstatat(proc, name.c_str(), &status, 0) != 0 || (ownUid_ != 0 && status.st_uid != ownUid_);
    const bool isNew = !tellsCounts || status.st_size != process.descriptors;
    if (!process.isForeign && (isNew || process.examinations % examinationsPerListing == 0)) {
        const bool hasAny = !tellsCounts || status.st_size > 0; // a thread of the kernel's has none
        const int listed = hasAny ? ::openat(proc, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
        process.isForeign = hasAny && listed < 0;
        process.descriptors = status.st_size;
        list(listed, pid, process);
    }
    const std::uint64_t wait = std::min(++process.examinations, tellsCounts ? longest : longestUntold);
    process.dueAt = looks_ + (process.held.empty() ? wait : 1);
}

/// Of its descriptors at most as many as any program has that draws.
void DrmSearch::list(int number, std::int32_t pid, Process& process) {
    constexpr int most = 4096;
    const std::vector<std::int32_t> before = std::exchange(process.held, {});
    process.mayCompute = false;
    const Folder folder(number >= 0 ? ::fdopendir(number) : nullptr, ::closedir);
    Link room;
    int listed = 0;
    while (const dirent* entry = folder && listed++ < most ? ::readdir(folder.get()) : nullptr) {
        const auto held = numberNamed(entry->d_name);
        if (!held)
            continue;
        const std::string_view file = linkAt(::dirfd(folder.get()), entry->d_name, room);
        process.mayCompute = process.mayCompute || file == "/dev/kfd";
        const auto node = nodes_.find(graphicsNode(file));
        if (node == nodes_.end())
            continue;
        process.held.push_back(*held);
        if (std::ranges::find(before, *held) == before.end())
            listener_.opened(pid, *held, *node);
    }
    for (const std::int32_t old : before)
        if (std::ranges::find(process.held, old) == process.held.end())
            listener_.closed(pid, old);
}

/// None is hidden from a container, by the number of the first namespace (include/linux/proc_ns.h).
bool DrmSearch::seesEveryProcess() const {
    Link room;
    return linkAt(AT_FDCWD, (root_ + "/proc/self/ns/pid").c_str(), room) == "pid:[4026531836]";
}

void DrmSearch::distrust(std::int32_t pid, std::int32_t number) {
    if (const auto process = processes_.find(pid); process != processes_.end()) {
        process->second.descriptors = -1;
        process->second.dueAt = 0;
        std::erase(process->second.held, number);
    }
}

bool DrmSearch::mayCompute(std::int32_t pid) const {
    const auto process = processes_.find(pid);
    return process != processes_.end() && process->second.mayCompute;
}

} // namespace vantoro
