#include "Platform/Linux/Proc/ReapedWork.h"

#include <algorithm>
#include <utility>

namespace vantoro {

namespace {

constexpr int mostAncestors = 64;
constexpr std::uint64_t roundsRemembered = 32;

} // namespace

void ReapedWork::reaped(const Process& process, std::uint64_t ticks) {
    Account& account = accounts_[process.pid];
    account.process = process;
    account.ticks += ticks;
}

void ReapedWork::ended(const Process& process, std::uint64_t told, std::uint64_t recent) {
    former_[process.pid] = {.process = process, .round = round_};
    debts_.push_back({.ended = {.process = process, .recent = recent}, .ticks = told, .debtor = process});
}

/// The nearest ancestor that lives; false when there is none.
bool ReapedWork::findDebtor(Debt& debt, const Find& living) const {
    Process each = debt.debtor;
    // A debt of before is its debtor's still, if that one lives.
    if (debt.isOld)
        if (const auto same = living(each.pid); same && same->startTicks == each.startTicks)
            return true;
    bool isOfChild = !debt.isOld;
    for (int generation = 0; generation < mostAncestors && each.parentPid > 0; ++generation) {
        if (const auto parent = living(each.parentPid); parent && parent->startTicks <= each.startTicks) {
            debt.debtor = *parent;
            debt.isOfChild = isOfChild && !parent->isZombie;
            return true;
        }
        const auto former = former_.find(each.parentPid);
        if (former == former_.end() || former->second.process.startTicks > each.startTicks)
            return false;
        each = former->second.process;
        isOfChild = false;
    }
    return false;
}

void ReapedWork::payAt(Debt& debt, std::int32_t pid) {
    const auto found = accounts_.find(pid);
    if (found == accounts_.end())
        return;
    Account& account = found->second;
    const std::uint64_t paid = std::min(account.ticks, debt.ticks);
    account.ticks -= paid;
    debt.ticks -= paid;
    if (debt.ticks == 0)
        account.ended.push_back(debt.ended);
}

void ReapedWork::pay(Debt& debt, const Find& living) {
    Process each = debt.debtor;
    payAt(debt, each.pid);
    // One whose parent ended before it was handed to somebody further up.
    for (int generation = 0; !debt.isOfChild && debt.ticks != 0 && generation < mostAncestors; ++generation) {
        const auto parent = living(each.parentPid);
        if (!parent)
            return;
        each = *parent;
        payAt(debt, each.pid);
    }
}

const std::vector<ReapedWork::Credit>& ReapedWork::settle(std::uint64_t most, const Find& living) {
    credits_.clear();
    ++round_;
    if (accounts_.empty() && debts_.empty())
        return credits_;
    std::erase_if(debts_, [&](Debt& debt) { return !findDebtor(debt, living); });
    // What is certain first, and what is new before what is old.
    std::ranges::stable_sort(debts_, {},
                             [](const Debt& debt) { return (debt.isOld ? 2 : 0) + (debt.isOfChild ? 0 : 1); });
    for (Debt& debt : debts_)
        pay(debt, living);
    for (const auto& [pid, account] : accounts_)
        if (account.ticks != 0)
            distribute(account);
    std::uint64_t total = 0;
    for (const Credit& credit : credits_)
        total += credit.ticks;
    if (total > most) {
        const double share = static_cast<double>(most) / static_cast<double>(total);
        for (Credit& credit : credits_)
            credit.ticks = static_cast<std::uint64_t>(static_cast<double>(credit.ticks) * share);
        std::erase_if(credits_, [](const Credit& credit) { return credit.ticks == 0; });
    }
    accounts_.clear();
    std::erase_if(debts_, [](const Debt& debt) { return debt.ticks == 0 || debt.isOld; });
    for (Debt& debt : debts_)
        debt.isOld = true;
    if (round_ % roundsRemembered == 0)
        std::erase_if(former_, [this](const auto& each) { return each.second.round + roundsRemembered < round_; });
    return credits_;
}

void ReapedWork::distribute(const Account& account) {
    // By group: its own, and those of the ended, each told by the one of them that used most.
    struct Part {
        std::int32_t group = 0;
        Ended busiest;
        std::uint64_t weight = 0;
    };
    std::vector<Part> parts{{.group = account.process.groupPid}};
    std::uint64_t weights = 0;
    for (const Ended& ended : account.ended) {
        auto part = std::ranges::find(parts, ended.process.groupPid, &Part::group);
        if (part == parts.end())
            part = parts.insert(parts.end(), {.group = ended.process.groupPid, .busiest = ended});
        else if (ended.recent > part->busiest.recent)
            part->busiest = ended;
        part->weight += ended.recent;
        weights += ended.recent;
    }
    std::uint64_t rest = account.ticks;
    for (std::size_t index = parts.size() - 1; index > 0 && weights != 0; --index) {
        const double share = static_cast<double>(parts[index].weight) / static_cast<double>(weights);
        // The last one's, where nothing is the reaper's own, takes what the others' fractions leave.
        const bool isLast = index == 1 && parts[0].weight == 0;
        const std::uint64_t ticks =
            isLast ? rest : std::min(rest, static_cast<std::uint64_t>(static_cast<double>(account.ticks) * share));
        rest -= ticks;
        if (ticks != 0)
            credits_.push_back({account.process.pid, parts[index].busiest.process.pid, ticks});
    }
    if (rest != 0)
        credits_.push_back({account.process.pid, 0, rest});
}

} // namespace vantoro
