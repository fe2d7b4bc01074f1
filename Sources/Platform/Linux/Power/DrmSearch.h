// Which processes hold a graphics card open, by the links of /proc/PID/fd.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantoro {

/// The nodes below /dev/dri that render, with those that only show their pictures, of drivers that may tell of their
/// clients. Empty where no card renders.
std::set<std::string, std::less<>> tellingNodes(const std::string& root);

/// New processes and those that hold a card are examined at every look, others ever less often, at last at every sixth.
/// A process's descriptors are listed when their number has changed (the size of /proc/PID/fd, since kernel 6.2), and
/// at every fifth examination. Kernels before do not tell: every examination lists them, at last at every 18th look.
class DrmSearch {
public:
    struct Listener {
        /// This process has opened that node, and has it under this number; and no longer has.
        std::function<void(std::int32_t pid, std::int32_t number, const std::string& node)> opened;
        std::function<void(std::int32_t pid, std::int32_t number)> closed;
    };

    /// `root` is the folder that holds proc; processes of `ownUid` may be looked into, all of them by user 0.
    DrmSearch(std::string root, std::set<std::string, std::less<>> nodes, std::uint32_t ownUid, Listener listener);

    void look();
    /// This number is another file's now, or nobody's: what the process holds is listed at the next look.
    void distrust(std::int32_t pid, std::int32_t number);
    /// Whether the last look left nobody out.
    bool sawAll() const { return sawAll_; }
    /// Whether a process holds /dev/kfd, by which it may compute without any account.
    bool mayCompute(std::int32_t pid) const;
    const std::set<std::string, std::less<>>& nodes() const { return nodes_; }

private:
    struct Process {
        /// Counts of looks.
        std::uint64_t seenAt = 0;
        std::uint64_t dueAt = 0;
        std::uint64_t examinations = 0;
        /// How many descriptors it had when they were listed; negative to have them listed again.
        std::int64_t descriptors = -1;
        bool isForeign = false;
        bool mayCompute = false;
        std::vector<std::int32_t> held;
    };

    void examine(int proc, std::int32_t pid, Process& process, bool tellsCounts);
    void list(int folder, std::int32_t pid, Process& process);
    bool seesEveryProcess() const;

    const std::string root_;
    const std::set<std::string, std::less<>> nodes_;
    const std::uint32_t ownUid_;
    const Listener listener_;
    std::uint64_t looks_ = 0;
    bool sawAll_ = false;
    std::unordered_map<std::int32_t, Process> processes_;
};

} // namespace vantoro
