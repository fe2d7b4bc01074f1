#include "Model/Live/ProcessMonitorWorker.h"

#include "Model/Text/Utf8.h"
#include "Platform/Posix/Clocks.h"

#include <algorithm>
#include <QDeadlineTimer>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

using Kind = ProcessMonitor::Source::Kind;

/// More than any machine's two blocks or path list; a program that prints more is not the one that was meant.
constexpr qint64 mostOutputBytes = qint64{16} * 1024 * 1024;
/// What the stream may print without completing a block: past this it is a flood that would cost more than it tells.
constexpr qint64 mostBytesPerBlock = qint64{64} * 1024 * 1024;

std::string currentUserName(ProcessTable* table) {
    return table != nullptr ? table->userName(::geteuid()).value_or("") : "";
}

std::unique_ptr<QProcess> makeProcess(const ProgramCommand& command) {
    auto process = std::make_unique<QProcess>();
    process->setProgram(QString::fromStdString(command.program));
    QStringList arguments;
    for (const std::string& argument : command.arguments)
        arguments.append(QString::fromStdString(argument));
    process->setArguments(arguments);
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    return process;
}

std::string_view toView(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

/// All that the program prints, or none when it cannot be started, fails, takes longer than the limit or prints too
/// much.
std::optional<QByteArray> outputOf(const ProgramCommand& command, std::chrono::milliseconds limit) {
    const std::unique_ptr<QProcess> process = makeProcess(command);
    const QDeadlineTimer deadline(limit);
    process->start(QIODevice::ReadOnly);
    QByteArray output;
    while (process->waitForReadyRead(static_cast<int>(deadline.remainingTime())) && output.size() <= mostOutputBytes)
        output += process->readAllStandardOutput();
    if (output.size() <= mostOutputBytes && process->state() != QProcess::NotRunning)
        process->waitForFinished(static_cast<int>(deadline.remainingTime()));
    if (process->state() != QProcess::NotRunning) {
        process->kill();
        process->waitForFinished(-1);
        return std::nullopt;
    }
    output += process->readAllStandardOutput();
    const bool didStart = process->error() != QProcess::FailedToStart;
    return didStart && process->exitStatus() == QProcess::NormalExit && process->exitCode() == 0
               ? std::optional<QByteArray>(output)
               : std::nullopt;
}

} // namespace

ProcessMonitorWorker::ProcessMonitorWorker(const Platform& platform, const ProcessMonitor::Timing& timing)
    : processTable_(platform.processTable)
    , statistics_(platform.systemStatistics)
    , processStream_(platform.processStream)
    , timing_(timing)
    , identities_(platform.appIdentity, currentUserName(platform.processTable.get()))
    , fallback_(platform.processTable, platform.systemStatistics) {}

ProcessMonitorWorker::~ProcessMonitorWorker() {
    stop();
    const QDeadlineTimer deadline(timing_.terminationGrace);
    for (const std::unique_ptr<QProcess>& process : retiring_) {
        process->disconnect();
        if (!process->waitForFinished(static_cast<int>(deadline.remainingTime()))) {
            process->kill();
            process->waitForFinished(-1);
        }
    }
}

void ProcessMonitorWorker::start(int intervalSeconds, int rows, ProcessMonitor::Mode mode, Events events) {
    stop();
    events_ = std::move(events);
    if (mode == ProcessMonitor::Mode::unprivileged)
        startUnprivileged(intervalSeconds, true);
    else if (processStream_)
        startStream(intervalSeconds, rows);
    else
        startUnprivileged(intervalSeconds, false);
}

void ProcessMonitorWorker::stop() {
    events_ = {};
    watchdog_.reset();
    fallbackTimer_.reset();
    fallback_.rest();
    teardownTop();
    source_ = {};
}

void ProcessMonitorWorker::startStream(int intervalSeconds, int rows) {
    refreshPaths();
    task_ = makeProcess(processStream_->stream(0, intervalSeconds, rows));
    const auto fallBack = [this, intervalSeconds] { startUnprivileged(intervalSeconds, false); };
    connect(task_.get(), &QProcess::readyReadStandardOutput, this,
            [this, intervalSeconds] { readStream(intervalSeconds); });
    connect(task_.get(), &QProcess::finished, this, fallBack);
    connect(task_.get(), &QProcess::errorOccurred, this, [fallBack](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            fallBack();
    });
    armWatchdog(intervalSeconds);
    primeImmediately(rows);
    task_->start(QIODevice::ReadOnly);
}

void ProcessMonitorWorker::armWatchdog(int intervalSeconds) {
    watchdog_ = std::make_unique<QTimer>();
    watchdog_->setSingleShot(true);
    watchdog_->setTimerType(Qt::PreciseTimer);
    connect(watchdog_.get(), &QTimer::timeout, this, [this, intervalSeconds] {
        if (source_.kind != Kind::system)
            startUnprivileged(intervalSeconds, false);
    });
    watchdog_->start(timing_.watchdog(intervalSeconds));
}

// The stream's first block means nothing and its second comes after two intervals; a short run of its own has figures
// after one second. It runs beside the stream: one that hangs must not keep the watchdog from firing.
void ProcessMonitorWorker::primeImmediately(int rows) {
    priming_ = makeProcess(processStream_->stream(2, 1, rows));
    primingOutput_.clear();
    connect(priming_.get(), &QProcess::readyReadStandardOutput, this, [this] {
        primingOutput_ += priming_->readAllStandardOutput();
        if (primingOutput_.size() > mostOutputBytes)
            retire(std::move(priming_));
    });
    connect(priming_.get(), &QProcess::finished, this, [this] { finishPriming(); });
    priming_->start(QIODevice::ReadOnly);
}

void ProcessMonitorWorker::finishPriming() {
    primingOutput_ += priming_->readAllStandardOutput();
    const QByteArray output = std::exchange(primingOutput_, {});
    retire(std::move(priming_));
    // Bytes that are no text tell nothing, and must not pass for a stream that works.
    if (validUtf8Length(toView(output)) != toView(output).size())
        return;
    const std::optional<std::vector<std::string>> lines = lastBlock(toView(output));
    if (lines && !fallbackTimer_ && blocksSeen_ <= 1)
        parseAndDeliver(*lines);
}

void ProcessMonitorWorker::readStream(int intervalSeconds) {
    const QByteArray bytes = task_->readAllStandardOutput();
    bytesSinceBlock_ += bytes.size();
    cutter_.ingest(toView(bytes), [this](const std::vector<std::string>& lines) { finishBlock(lines); });
    if (bytesSinceBlock_ > mostBytesPerBlock)
        startUnprivileged(intervalSeconds, false);
}

void ProcessMonitorWorker::finishBlock(const std::vector<std::string>& lines) {
    if (fallbackTimer_)
        return;
    bytesSinceBlock_ = 0;
    ++blocksSeen_;
    // The first block's CPU figures cover no interval.
    if (blocksSeen_ >= 2)
        parseAndDeliver(lines);
}

void ProcessMonitorWorker::parseAndDeliver(const std::vector<std::string>& lines) {
    const PhysicalMemory memory = statistics_ ? statistics_->physicalMemory() : PhysicalMemory();
    TopBlock block = parseBlock(lines, memory.totalBytes);
    block.system.memory.availableBytes = memory.availableBytes;
    // The kernel itself, pid 0, is in no path list.
    const bool hasUnknownPid = std::ranges::any_of(
        block.rows, [this](const TopRow& row) { return row.pid != 0 && !pathMap_.contains(row.pid); });
    // A stream that tells where its processes come from needs no list beside it.
    const bool tellsOrigins = !block.rows.empty() &&
                              std::ranges::all_of(block.rows, [](const TopRow& row) { return row.origin.has_value(); });
    if (!tellsOrigins && (pathMap_.empty() || hasUnknownPid || !lastPathRefresh_ ||
                          std::chrono::duration<double>(monotonicSeconds() - *lastPathRefresh_) > timing_.pathListAge))
        refreshPaths();

    std::vector<ProcessSample> samples;
    samples.reserve(block.rows.size());
    for (const TopRow& row : block.rows) {
        const auto path = pathMap_.find(row.pid);
        const ProcessOrigin listed{.path = !row.origin && path != pathMap_.end() ? path->second : ""};
        samples.push_back(
            {.identity = identities_.resolve(row.pid, row.command, row.origin ? *row.origin : listed, row.user),
             .cpuPercent = row.cpuPercent,
             .memoryBytes = row.memoryBytes,
             .energyImpact = row.energyImpact});
    }
    addLeftOut(samples);
    identities_.endSample();
    confirmSystemSource();
    if (events_.delivered)
        events_.delivered(std::move(samples), block.system, 0);
}

void ProcessMonitorWorker::alsoList(std::vector<std::int32_t> pids) {
    alsoListed_ = std::move(pids);
    samplesUntilListing_ = 0;
    if (alsoListed_.empty() && !fallbackTimer_)
        fallback_.rest();
}

void ProcessMonitorWorker::addLeftOut(std::vector<ProcessSample>& samples) {
    if (alsoListed_.empty() || !processTable_)
        return;
    // Whose child one is can be told only of those whose parents are known.
    constexpr int samplesBetweenListings = 8;
    if (samplesUntilListing_-- == 0) {
        std::vector<std::int32_t> pids;
        processTable_->listPids(pids);
        samplesUntilListing_ = samplesBetweenListings;
    }
    // Also of those that are in the list just now: when they leave it their share is known.
    for (ProcessSample& process : fallback_.sampleThese(alsoListed_, monotonicSeconds()))
        if (std::ranges::find(samples, process.pid(), &ProcessSample::pid) == samples.end()) {
            identify(process);
            samples.push_back(std::move(process));
        }
}

void ProcessMonitorWorker::identify(ProcessSample& process) {
    process.identity =
        identities_.resolve(process.pid(), process.rawName(), processTable_->origin(process.pid()), process.user());
}

void ProcessMonitorWorker::refreshPaths() {
    const double now = monotonicSeconds();
    if (lastPathRefresh_ && std::chrono::duration<double>(now - *lastPathRefresh_) <= timing_.pathListPause)
        return;
    lastPathRefresh_ = now;
    if (const std::optional<QByteArray> output = outputOf(processStream_->pathList(), timing_.pathListLimit))
        pathMap_ = parsePathList(toView(*output));
}

void ProcessMonitorWorker::confirmSystemSource() {
    if (fallbackTimer_)
        return;
    watchdog_.reset();
    setSource({.kind = Kind::system});
}

void ProcessMonitorWorker::setSource(Source source) {
    if (source == source_)
        return;
    source_ = source;
    if (events_.sourceChanged)
        events_.sourceChanged(source);
}

void ProcessMonitorWorker::startUnprivileged(int intervalSeconds, bool byChoice) {
    if (source_.kind == Kind::ownProcessesOnly && fallbackTimer_)
        return;
    watchdog_.reset();
    teardownTop();
    // A first reading only sets the baselines: without it the first list would show every process at 0 %.
    fallback_.sample(monotonicSeconds());
    fallbackTimer_ = std::make_unique<QTimer>();
    fallbackTimer_->setTimerType(Qt::PreciseTimer);
    const std::chrono::milliseconds interval = std::max(1, intervalSeconds) * timing_.fallbackSecond;
    connect(fallbackTimer_.get(), &QTimer::timeout, this, [this, interval] {
        if (fallbackTimer_->intervalAsDuration() != interval)
            fallbackTimer_->setInterval(interval);
        sampleUnprivileged();
    });
    fallbackTimer_->start(timing_.firstFallbackSample);
    setSource({.kind = Kind::ownProcessesOnly, .byChoice = byChoice});
}

void ProcessMonitorWorker::sampleUnprivileged() {
    UnprivilegedProcesses::Sample sample = fallback_.sample(monotonicSeconds());
    for (ProcessSample& process : sample.processes)
        identify(process);
    identities_.endSample();
    if (events_.delivered)
        events_.delivered(std::move(sample.processes), sample.system, fallback_.unreadableCount());
}

void ProcessMonitorWorker::teardownTop() {
    retire(std::move(task_));
    retire(std::move(priming_));
    primingOutput_.clear();
    cutter_.reset();
    blocksSeen_ = 0;
    bytesSinceBlock_ = 0;
}

void ProcessMonitorWorker::retire(std::unique_ptr<QProcess> process) {
    if (!process)
        return;
    process->disconnect();
    QProcess* const retired = retiring_.emplace_back(std::move(process)).get();
    // Removed later: this may run inside one of the process's own signals.
    const auto forget = [this, retired] {
        std::erase_if(retiring_, [retired](const std::unique_ptr<QProcess>& other) { return other.get() == retired; });
    };
    if (retired->state() == QProcess::NotRunning) {
        QMetaObject::invokeMethod(this, forget, Qt::QueuedConnection);
        return;
    }
    connect(retired, &QProcess::finished, this, forget, Qt::QueuedConnection);
    retired->closeReadChannel(QProcess::StandardOutput);
    retired->terminate();
    QTimer::singleShot(timing_.terminationGrace, retired, [retired] { retired->kill(); });
}

} // namespace vantoro
