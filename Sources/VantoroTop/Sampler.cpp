#include "VantoroTop/Sampler.h"

#include <algorithm>

namespace vantoro::top {

namespace {

/// One of the threads by which the kernel makes every processor pause to cool down. They are all alike and as many as
/// the processors: one row says as much as all, and leaves the others to what made the heat.
bool isCoolingPause(const ScannedProcess& process) {
    return process.isKernelThread() &&
           (process.name.starts_with("idle_inject") || process.name.starts_with("kidle_inj"));
}

} // namespace

Sampler::Sampler(const Options& options)
    : units_(options.units)
    , origins_(options.origins)
    , statistics_(options.root)
    , scan_(options.root, options.descriptorBudget) {
    figures_.totalKiB = statistics_.physicalMemory().totalBytes / 1024;
}

void Sampler::appendBlock(std::string& text, const Moment& moment, std::size_t rows, std::size_t columns) {
    const auto stat = statistics_.kernelStat();
    scan_.list(stat, static_cast<std::uint64_t>(moment.bootSeconds * static_cast<double>(units_.ticksPerSecond)));
    const double elapsed = previous_ ? moment.monotonicSeconds - previous_->monotonicSeconds : 0;

    busy_.clear();
    idle_.clear();
    ScannedProcess* pause = nullptr;
    figures_.processes = {};
    for (ScannedProcess& process : scan_.processes()) {
        if (!scan_.read(process))
            continue;
        ++figures_.processes.total;
        figures_.processes.running += process.state == 'R' ? 1 : 0;
        figures_.processes.threads += process.threads;
        if (process.spentTicks != 0 && isCoolingPause(process))
            pause = pause == nullptr || process.spentTicks > pause->spentTicks ? &process : pause;
        else if (process.spentTicks != 0)
            busy_.push_back(&process);
        else if (idle_.size() < rows)
            idle_.push_back(&process);
    }
    if (pause != nullptr)
        busy_.push_back(pause);
    for (const ProcJobs::Unseen& unseen : jobs_.unseenWork()) {
        if (unseen.process->ended)
            unseen.process->spentTicks = 0; // the last that was read was the interval's before
        if (unseen.process->spentTicks == 0) {
            std::erase(idle_, unseen.process);
            busy_.push_back(unseen.process);
        }
        unseen.process->spentTicks += unseen.ticks;
    }
    std::sort(busy_.begin(), busy_.end(), [](const ScannedProcess* left, const ScannedProcess* right) {
        return left->spentTicks != right->spentTicks ? left->spentTicks > right->spentTicks : left->pid < right->pid;
    });

    if (stat) {
        figures_.cpu = previousTicks_ ? TicksSpent(*previousTicks_, stat->ticks).load() : CPULoad{};
        previousTicks_ = stat->ticks;
    }
    figures_.localTime = moment.localTime;
    figures_.load = statistics_.loadAverages().value_or(LoadAverages{});
    figures_.memory = statistics_.virtualMemory().value_or(VirtualMemory{});
    const auto since = [](std::uint64_t now, std::uint64_t before) { return now > before ? now - before : 0; };
    figures_.swapInsSince = previousMemory_ ? since(figures_.memory.swapIns, previousMemory_->swapIns) : 0;
    figures_.swapOutsSince = previousMemory_ ? since(figures_.memory.swapOuts, previousMemory_->swapOuts) : 0;
    previousMemory_ = figures_.memory;
    appendHead(text, figures_, columns);

    const double perTick = elapsed > 0 ? 100 / (elapsed * static_cast<double>(units_.ticksPerSecond)) : 0;
    std::size_t printed = 0;
    for (; printed < std::min(rows, busy_.size()); ++printed)
        appendProcess(text, *busy_[printed], static_cast<double>(busy_[printed]->spentTicks) * perTick, columns);
    for (std::size_t next = 0; printed < rows && next < idle_.size(); ++next, ++printed)
        appendProcess(text, *idle_[next], 0, columns);
    previous_ = moment;
}

void Sampler::appendProcess(std::string& text, ScannedProcess& process, double cpuPercent, std::size_t columns) {
    const auto uid = scan_.uid(process);
    appendRow(text,
              {.pid = process.pid,
               .command = process.name,
               .cpuPercent = cpuPercent,
               .residentKiB = process.residentPages * (units_.pageBytes / 1024),
               .user = uid ? std::string_view(userName(*uid)) : std::string_view("?")},
              columns);
    if (origins_)
        appendOrigin(text, jobs_.origin(process));
}

const std::string& Sampler::userName(std::uint32_t uid) {
    const auto known = userNames_.find(uid);
    if (known != userNames_.end())
        return known->second;
    return userNames_.emplace(uid, accountName(uid).value_or(std::to_string(uid))).first->second;
}

} // namespace vantoro::top
