#include "Model/Processes/Quitting.h"

#include <algorithm>
#include <utility>

namespace vantoro {

namespace {

/// The kernel's clock ticks are coarser than the time of a snapshot, and the two clocks are not set alike.
constexpr double clockSlackSeconds = 1;

bool mayBeEnded(const ProcessControl& control, const LivingProcess& process) {
    // To the kernel 0 and below are not processes but whole groups of them.
    return process.pid > 1 && process.pid != control.ownPid();
}

std::map<std::int32_t, LivingProcess> aliveNow(ProcessControl& control) {
    std::vector<LivingProcess> list;
    control.list(list);
    std::map<std::int32_t, LivingProcess> alive;
    for (const LivingProcess& process : list)
        alive.emplace(process.pid, process);
    return alive;
}

} // namespace

std::optional<LivingProcess> livingProcess(ProcessControl& control, const ProcessAggregate& member) {
    if (member.pid <= 1)
        return std::nullopt;
    const auto process = control.find(member.pid);
    if (!process || !mayBeEnded(control, *process) || process->startedAt > member.firstSeen + clockSlackSeconds)
        return std::nullopt;
    return process;
}

Quitting::Quitting(QuitQuestion question) : question_(std::move(question)) {
    for (const LivingProcess& process : question_.processes)
        targets_.push_back({.process = process});
}

int Quitting::ended() const {
    return static_cast<int>(std::ranges::count_if(targets_, &Target::hasEnded));
}

int Quitting::refused() const {
    return static_cast<int>(
        std::ranges::count_if(targets_, [](const Target& target) { return target.isRefused && !target.hasEnded; }));
}

bool Quitting::hadEnded() const {
    return std::ranges::none_of(targets_, [](const Target& target) { return target.wasReached || target.isRefused; });
}

double Quitting::secondsLeft(double now) const {
    return std::clamp(since_ + patienceSeconds - now, 0.0, patienceSeconds);
}

void Quitting::ask(ProcessControl& control, double now) {
    since_ = now;
    send(control);
}

void Quitting::force(ProcessControl& control, double now) {
    if (stage_ == Stage::over)
        return;
    since_ = now;
    stage_ = Stage::forced;
    manner_ = QuitManner::force;
    send(control);
}

void Quitting::send(ProcessControl& control) {
    // Found before their parents are ended: an orphan does not tell whose it was.
    const Alive alive = aliveNow(control);
    adopt(control, alive);
    for (Target& target : targets_)
        if (!target.hasEnded && !target.isRefused)
            reach(control, target);
    if (running() == 0 && refused() == 0)
        stage_ = Stage::over;
}

void Quitting::reach(ProcessControl& control, Target& target) const {
    switch (control.end(target.process, manner_)) {
    case QuitAnswer::reached:
        target.wasReached = true;
        break;
    case QuitAnswer::gone:
        target.hasEnded = true;
        break;
    case QuitAnswer::refused:
        target.isRefused = true;
        break;
    }
}

bool Quitting::isStartedByOne(const LivingProcess& process, const Alive& alive) const {
    return std::ranges::any_of(targets_, [&](const Target& target) {
        const LivingProcess& of = target.process;
        const auto holder = alive.find(of.pid);
        const bool isAlive = holder != alive.end() && holder->second.birth == of.birth;
        if (process.parentPid == of.pid && isAlive)
            return true;
        // Its leader's number stays a group's until the last of the group has ended: it names no other meanwhile.
        const bool isNobodys = holder == alive.end() || isAlive;
        return isNobodys && ((process.groupPid == of.pid && of.groupPid == of.pid) ||
                             (process.sessionPid == of.pid && of.sessionPid == of.pid));
    });
}

void Quitting::adopt(ProcessControl& control, const Alive& alive) {
    for (bool hasGrown = true; std::exchange(hasGrown, false);)
        for (const auto& [pid, process] : alive) {
            const auto known = question_.known.find(pid);
            const bool isOld = known != question_.known.end() && known->second == process.birth;
            if (isOld || process.birth == 0 || !mayBeEnded(control, process) || process.parentPid == control.ownPid() ||
                !isStartedByOne(process, alive))
                continue;
            question_.known[pid] = process.birth;
            targets_.push_back({.process = process});
            hasGrown = true;
        }
}

void Quitting::look(ProcessControl& control, double now) {
    if (stage_ == Stage::over)
        return;
    const Alive alive = aliveNow(control);
    const std::size_t before = targets_.size();
    adopt(control, alive);
    for (std::size_t i = before; i < targets_.size(); ++i)
        reach(control, targets_[i]);
    for (Target& target : targets_) {
        const auto found = alive.find(target.process.pid);
        target.hasEnded = target.hasEnded || found == alive.end() || found->second.birth != target.process.birth;
    }
    if (running() == 0)
        stage_ = Stage::over;
    else if (now >= since_ + patienceSeconds && stage_ == Stage::asked)
        stage_ = Stage::stillRunning;
    else if (now >= since_ + patienceSeconds && stage_ == Stage::forced)
        stage_ = Stage::stuck;
}

} // namespace vantoro
