#include "Model/Processes/UnprivilegedProcesses.h"

#include <algorithm>
#include <utility>

namespace vantoro {

MemoryLoad memoryLoad(std::uint64_t physicalMemoryBytes, const std::optional<VirtualMemory>& memory) {
    if (!memory)
        return {.totalBytes = physicalMemoryBytes};
    const std::uint64_t appPages = memory->internalPages - std::min(memory->internalPages, memory->purgeablePages);
    return {.usedBytes = (appPages + memory->wiredPages + memory->compressorPages) * memory->pageBytes,
            .totalBytes = physicalMemoryBytes,
            .wiredBytes = memory->wiredPages * memory->pageBytes,
            .compressedBytes = memory->compressorPages * memory->pageBytes,
            .swapOutEvents = memory->swapOuts};
}

UnprivilegedProcesses::UnprivilegedProcesses(std::shared_ptr<ProcessTable> table,
                                             std::shared_ptr<SystemStatistics> statistics)
    : table_(std::move(table)), statistics_(std::move(statistics)) {}

UnprivilegedProcesses::Sample UnprivilegedProcesses::sample(double nowSeconds) {
    Sample result;
    unreadableCount_ = 0;
    ++sampleNumber_;
    pids_.clear();
    if (table_)
        table_->listPids(pids_);
    result.processes.reserve(pids_.size());
    for (const std::int32_t pid : pids_)
        if (pid >= 1)
            if (std::optional<ProcessSample> process = sampleProcess(pid, nowSeconds, Refused::leftOut))
                result.processes.push_back(std::move(*process));
    if (table_)
        addUnseenWork(result.processes, previousSeconds_ ? nowSeconds - *previousSeconds_ : 0);
    previousSeconds_ = nowSeconds;
    forgetOthers();
    result.system = systemLine();
    return result;
}

std::vector<ProcessSample> UnprivilegedProcesses::sampleThese(const std::vector<std::int32_t>& pids,
                                                              double nowSeconds) {
    ++sampleNumber_;
    std::vector<ProcessSample> processes;
    for (const std::int32_t pid : pids)
        if (std::optional<ProcessSample> process = sampleProcess(pid, nowSeconds, Refused::zero))
            processes.push_back(std::move(*process));
    forgetOthers();
    return processes;
}

void UnprivilegedProcesses::forgetOthers() {
    std::erase_if(previousCPU_, [this](const auto& entry) { return entry.second.sampleNumber != sampleNumber_; });
}

void UnprivilegedProcesses::rest() {
    previousCPU_.clear();
    previousTicks_.reset();
    previousSeconds_.reset();
    if (table_)
        table_->rest();
}

std::optional<ProcessSample> UnprivilegedProcesses::sampleProcess(std::int32_t pid, double nowSeconds,
                                                                  Refused refused) {
    const auto known = previousCPU_.find(pid);
    // Whatever else is refused below, a process that is listed keeps its baseline.
    if (known != previousCPU_.end())
        known->second.sampleNumber = sampleNumber_;
    const std::optional<ShortProcessRecord> record = table_->shortRecord(pid);
    if (!record)
        return std::nullopt;
    const std::string& user = userName(record->uid);
    std::optional<TaskRecord> task = table_->taskRecord(pid);
    if (!task && refused == Refused::zero)
        task.emplace();
    if (!task) {
        ++unreadableCount_;
        return std::nullopt;
    }
    const std::uint64_t total = task->userNanoseconds + task->systemNanoseconds;
    double cpuPercent = 0;
    Previous& previous = previousCPU_[pid];
    const bool isSameProcess = previous.sampleNumber != 0 && previous.startTime == record->startTime;
    const double elapsed = nowSeconds - previous.atSeconds;
    if (isSameProcess && elapsed > 0 && total > previous.cpuNanoseconds)
        cpuPercent = static_cast<double>(total - previous.cpuNanoseconds) / (elapsed * 1e9) * 100;

    std::string path = table_->path(pid);
    const ProcessIdentity& last = *previous.identity;
    if (!isSameProcess || last.rawName != record->name || last.executablePath != path || last.user != user)
        previous.identity = ProcessIdentity{.pid = pid,
                                            .rawName = record->name,
                                            .displayName = record->name,
                                            .executablePath = std::move(path),
                                            .user = user,
                                            .kind = ProcessKind::systemDaemon};
    previous.cpuNanoseconds = total;
    previous.atSeconds = nowSeconds;
    previous.startTime = record->startTime;
    previous.sampleNumber = sampleNumber_;
    return ProcessSample{
        .identity = previous.identity, .cpuPercent = cpuPercent, .memoryBytes = task->residentBytes, .energyImpact = 0};
}

void UnprivilegedProcesses::addUnseenWork(std::vector<ProcessSample>& processes, double elapsedSeconds) {
    for (const UnseenWork& work : table_->unseenWork()) {
        if (elapsedSeconds <= 0)
            continue;
        auto row = std::ranges::find(processes, work.pid, &ProcessSample::pid);
        if (row == processes.end()) {
            const auto known = previousCPU_.find(work.pid);
            if (known == previousCPU_.end())
                continue;
            row = processes.insert(row, {.identity = known->second.identity});
        }
        row->cpuPercent += static_cast<double>(work.nanoseconds) / (elapsedSeconds * 1e9) * 100;
    }
}

const std::string& UnprivilegedProcesses::userName(std::uint32_t uid) {
    const auto [found, isNew] = userNames_.try_emplace(uid);
    if (isNew)
        found->second = table_->userName(uid).value_or(std::to_string(uid));
    return found->second;
}

SystemLine UnprivilegedProcesses::systemLine() {
    SystemLine line;
    if (!statistics_)
        return line;
    if (const std::optional<HostTicks> ticks = statistics_->hostTicks()) {
        if (previousTicks_)
            line.cpu = TicksSpent(*previousTicks_, *ticks).load();
        previousTicks_ = ticks;
    }
    if (const std::optional<LoadAverages> averages = statistics_->loadAverages())
        line.cpu.loadAverage = averages->oneMinute;
    const PhysicalMemory physical = statistics_->physicalMemory();
    line.memory = memoryLoad(physical.totalBytes, statistics_->virtualMemory());
    line.memory.availableBytes = physical.availableBytes;
    return line;
}

} // namespace vantoro
