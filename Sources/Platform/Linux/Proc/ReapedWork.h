// The CPU time of processes that ended, which no reading of a living one shows: it arrives in what their parents'
// children had used (cutime and cstime of /proc/PID/stat) when they are waited for, with all that was waited for below
// them, in one piece. What rows have shown of it already is taken off. Pure.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace vantoro {

/// All times in clock ticks. One round is the time from one listing to the next.
class ReapedWork {
public:
    struct Process {
        std::int32_t pid = 0;
        std::int32_t parentPid = 0;
        std::int32_t groupPid = 0;
        std::uint64_t startTicks = 0;
        /// It has ended itself, and only waits to be waited for: its children are others' by now.
        bool isZombie = false;
    };
    struct Credit {
        /// Who waited for it.
        std::int32_t reaperPid = 0;
        /// The one that ended whose group did it; 0 where it was the reaper's own or nobody knows.
        std::int32_t endedPid = 0;
        std::uint64_t ticks = 0;

        bool operator==(const Credit&) const = default;
    };
    /// A process that lives, by its pid.
    using Find = std::function<std::optional<Process>(std::int32_t pid)>;

    /// A living process's children that were waited for had used so much more than in the round before.
    void reaped(const Process& process, std::uint64_t ticks);
    /// A process was last read in a round before and is gone. `told`: its own and its children's time at that reading,
    /// all of which was shown or is older than what is shown; `recent`: how much of it the last interval had.
    void ended(const Process& process, std::uint64_t told, std::uint64_t recent);
    /// What the round's rows do not show: together at most `most`. Work of a group that the reaper is not in goes by
    /// what the groups of those that ended last used. What is shown already but has not arrived is awaited for one
    /// round more, since processes are read one after another; nobody waits for the children of one who ignores them.
    const std::vector<Credit>& settle(std::uint64_t most, const Find& living);

private:
    struct Ended {
        Process process;
        std::uint64_t recent = 0;
    };
    /// What is to be taken off where it arrives: at the debtor, or, unless it was its child, with one further up.
    struct Debt {
        Ended ended;
        std::uint64_t ticks = 0;
        Process debtor;
        bool isOfChild = true;
        bool isOld = false;
    };
    struct Account {
        Process process;
        std::uint64_t ticks = 0;
        std::vector<Ended> ended;
    };

    bool findDebtor(Debt& debt, const Find& living) const;
    void pay(Debt& debt, const Find& living);
    void payAt(Debt& debt, std::int32_t pid);
    void distribute(const Account& account);
    void forgetOldParents();

    std::unordered_map<std::int32_t, Account> accounts_;
    std::vector<Debt> debts_;
    std::vector<Credit> credits_;
    /// Who ended not long ago: one that slept does not show for some readings that its parent is another by now.
    struct Former {
        Process process;
        std::uint64_t round = 0;
    };
    std::unordered_map<std::int32_t, Former> former_;
    std::uint64_t round_ = 0;
};

} // namespace vantoro
