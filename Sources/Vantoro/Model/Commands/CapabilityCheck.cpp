#include "Model/Commands/CapabilityCheck.h"

#include "CSensors/ioreport.h"
#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Processes/UnprivilegedProcesses.h"
#include "Model/Readers/CoreMonitor.h"
#include "Model/Text/Numbers.h"
#include "Model/Text/TerminalText.h"
#include "Model/Text/Utf8.h"

#include <algorithm>
#include <fmt/format.h>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <QTimer>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

/// More than any list of processes; a program that prints without end must not fill the memory.
constexpr qsizetype mostBytes = qsizetype{64} * 1024 * 1024;

ProgramTrial judgeOutput(const QByteArray& output) {
    if (output.isEmpty())
        return {false, "ran but produced no output"};
    const std::string_view text(output.data(), static_cast<std::size_t>(output.size()));
    if (validUtf8Length(text) == text.size()) {
        for (std::size_t at = 0; at < text.size();) {
            const std::string_view line = text.substr(at, text.find('\n', at) - at);
            if (line.starts_with("Processes:"))
                return {true, std::string(trimmed(line))};
            at += line.size() + 1;
        }
    }
    return {true, fmt::format("{} bytes of output", text.size())};
}

double clampedBusyPercent(const CPULoad& cpu) {
    return std::clamp(DiagnosisEngine::busyPercent(cpu), 0.0, 100.0);
}

std::string fanText(std::size_t count) {
    if (count == 0)
        return "no fans";
    return count == 1 ? "1 fan" : fmt::format("{} fans", count);
}

/// Padded to this many bytes: a terminal's columns are another matter.
std::string leftAligned(std::string_view text, std::size_t bytes) {
    std::string padded(text);
    padded.resize(std::max(text.size(), bytes), ' ');
    return padded;
}

} // namespace

ProgramTrial canRun(const ProgramCommand& command, std::chrono::milliseconds limit, std::string_view thisMachine) {
    const QFileInfo file(QString::fromStdString(command.program));
    if (!file.exists())
        return {false, fmt::format("not present on {}", thisMachine)};
    if (!file.isExecutable())
        return {false, fmt::format("present, but {} will not let you execute it", thisMachine)};

    QStringList arguments;
    for (const std::string& argument : command.arguments)
        arguments.append(QString::fromStdString(argument));
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(file.filePath(), arguments);
    if (!process.waitForStarted())
        return {false, "cannot execute — " + process.errorString().toStdString()};

    const QDeadlineTimer deadline(limit);
    QByteArray output;
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired() && output.size() <= mostBytes) {
        // Once its output is closed there is only its end to wait for.
        if (!process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            process.waitForFinished(static_cast<int>(deadline.remainingTime()));
        output += process.readAllStandardOutput();
    }
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        return {false, output.size() > mostBytes ? "printed without end" : "did not finish in time"};
    }
    output += process.readAllStandardOutput();
    if (process.exitStatus() == QProcess::CrashExit)
        return {false, "killed by a signal while running"};
    if (process.exitCode() != 0)
        return {false, fmt::format("exited with status {}", process.exitCode())};
    return judgeOutput(output);
}

CapabilityCheck::CapabilityCheck(Platform platform, Options options)
    : platform_(std::move(platform)), options_(std::move(options)) {}

std::string CapabilityCheck::line(std::string_view label, bool ok, std::string_view detail) {
    return fmt::format("{} {} {}", ok ? "✓" : "✗", leftAligned(label, 38), detail);
}

std::string CapabilityCheck::sourceDetail(ProcessMonitor::Source source, std::string_view streamName) {
    using Kind = ProcessMonitor::Source::Kind;
    switch (source.kind) {
    case Kind::system:
        return fmt::format("{} — every process on the machine", streamName);
    case Kind::ownProcessesOnly:
        return source.byChoice ? "syscalls — by preference, in Settings"
                               : "syscalls — top was refused, fell back automatically";
    case Kind::starting:
        break;
    }
    return "never started";
}

void CapabilityCheck::run() {
    options_.print("Vantoro capability check");
    std::string rule;
    for (int i = 0; i < 52; ++i)
        rule += "─";
    options_.print(rule);
    checkSMC();
    checkGPU();
    checkCores();
    options_.print("");
    checkPrivilegedProcessSources();
    checkUnprivilegedProcesses();
    options_.print("");
    checkMonitor();
    options_.print("");
    options_.print("Everything above marked ✓ works without admin rights.");
    options_.print(systemWords(platform_.system).isMac() ? "If top and ps are blocked, Settings › Process monitoring"
                                                         : "If vantoro-top is blocked, Settings › Processes");
    options_.print("explains what the process list can still show.");
}

void CapabilityCheck::checkSMC() {
    const SystemWords& words = systemWords(platform_.system);
    const std::string label = fmt::format("{} (fans, temperatures, power)", words.sensorSource);
    constexpr double longestWaitSeconds = 2;
    if (options_.reader.standIn)
        options_.reader.standIn->waitForSlowSensors(longestWaitSeconds);
    if (smc_open() == 0) {
        print(label, false, words.isMac() ? "could not open AppleSMC" : "none found");
        return;
    }
    const std::uint32_t keyCount = smc_key_count();
    SMCReader reader(options_.reader); // closes the connection when it goes
    const std::size_t fanCount = reader.readFans().size();
    reader.readTemperatures();
    options_.reader.pause(200);
    const Temperatures temperatures = reader.readTemperatures();
    // What stands in the controller's place does not know of everything that a Mac's own does.
    const bool mayNotKnow = platform_.smcService && !platform_.smcService->isController();
    const bool knowsFans = !mayNotKnow || fanCount > 0 || reader.reportsNoFans();
    const bool knowsChip = !mayNotKnow || temperatures.soc != 0;
    if (keyCount == 0)
        print(label, false, words.isMac() ? "no keys returned" : "none found");
    else
        print(label, true,
              fmt::format("{} keys · {} · chip {}", keyCount, knowsFans ? fanText(fanCount) : "fans unknown",
                          knowsChip ? fmt::format("{:.1f}°C", temperatures.soc) : "unknown"));
}

void CapabilityCheck::checkGPU() {
    double joules = 0;
    const bool ok = ior_init() != 0 && ior_gpu_energy_joules(&joules) != 0;
    print(fmt::format("{} (GPU wattage)", systemWords(platform_.system).reportSource), ok,
          ok ? "energy counter reading" : "unavailable on this machine");
    if (!platform_.graphicsClients || platform_.system == SystemKind::macos)
        return;
    platform_.graphicsClients->read();
    options_.reader.pause(300);
    const auto shares = platform_.graphicsClients->read();
    print("Graphics work per program", shares.has_value(),
          shares ? SensorDump::graphicsWork(shares) : "no driver here tells, or nothing renders");
}

void CapabilityCheck::checkCores() {
    CoreMonitor monitor(platform_.processors);
    monitor.sample();
    options_.reader.pause(300);
    monitor.sample();
    const bool ok = !monitor.cores().empty();
    const bool areAlike = monitor.efficiencyCount() == 0 && platform_.system != SystemKind::macos;
    print("Per-core load and frequency", ok,
          ok && areAlike
              ? fmt::format("{} {}", monitor.performanceCount(), monitor.performanceCount() == 1 ? "core" : "cores")
          : ok ? fmt::format("{}{} + {}{} cores", monitor.performanceCount(), tierLetter(monitor.tiers().performance),
                             monitor.efficiencyCount(), tierLetter(monitor.tiers().efficiency))
          : systemWords(platform_.system).isMac() ? "host_processor_info returned nothing"
                                                  : "the kernel named no processors");
}

void CapabilityCheck::checkPrivilegedProcessSources() {
    // A platform without a stream is one whose programs are not present.
    const ProcessStream* const stream = platform_.processStream.get();
    const SystemWords& words = systemWords(platform_.system);
    const ProgramTrial top =
        canRun(stream != nullptr ? stream->trial() : ProgramCommand{}, options_.programLimit, words.thisMachine);
    print(fmt::format("{} (every process)", stream != nullptr ? stream->streamName() : "top"), top.ok, top.detail);
    const ProgramTrial paths =
        canRun(stream != nullptr ? stream->pathList() : ProgramCommand{}, options_.programLimit, words.thisMachine);
    print(fmt::format("{} (full process paths)", stream != nullptr ? stream->pathListName() : "ps"), paths.ok,
          paths.detail);
    if (top.ok && paths.ok)
        return;
    options_.print("");
    if (words.isMac()) {
        options_.print("  ↳ These are the only privileged things Vantoro uses, and");
        options_.print("    both ship setuid-root. A refusal here is this Mac's");
        options_.print("    management policy, not a fault in the app — it falls");
        options_.print("    back to the syscalls below on its own.");
    } else {
        options_.print("  ↳ Both come with Vantoro. Where one is missing or may not");
        options_.print("    run, it falls back to the syscalls below on its own.");
    }
}

void CapabilityCheck::checkUnprivilegedProcesses() {
    UnprivilegedProcesses processes(platform_.processTable, platform_.systemStatistics);
    processes.sample(options_.now());
    options_.reader.pause(500);
    const UnprivilegedProcesses::Sample sample = processes.sample(options_.now());

    const std::size_t count = sample.processes.size();
    print("Process syscalls (your own processes)", count > 0,
          fmt::format("{} of {} processes measurable", count,
                      count + static_cast<std::size_t>(processes.unreadableCount())));
    print("System CPU and memory syscalls", sample.system.memory.totalBytes != 0,
          fmt::format("{:.0f}% busy · {:.0f}% memory pressure", clampedBusyPercent(sample.system.cpu),
                      std::clamp(DiagnosisEngine::memoryPressure(sample.system.memory), 0.0, 1.0) * 100));

    constexpr double leastCPU = 0.5;
    constexpr std::size_t mostShown = 5;
    std::vector<ProcessSample> busy;
    std::ranges::copy_if(sample.processes, std::back_inserter(busy),
                         [](const ProcessSample& process) { return process.cpuPercent >= leastCPU; });
    if (busy.empty())
        return;
    std::ranges::stable_sort(busy, std::ranges::greater(), &ProcessSample::cpuPercent);
    options_.print("");
    options_.print("  Busiest of yours right now:");
    for (std::size_t i = 0; i < std::min(busy.size(), mostShown); ++i) {
        const std::string name = shortened(terminalText(busy[i].displayName()), longestShownName);
        options_.print(fmt::format("    {} {:5.1f}%", padded(name, 28), busy[i].cpuPercent));
    }
}

void CapabilityCheck::checkMonitor() {
    constexpr int intervalSeconds = 1;
    constexpr int rows = 40;
    std::size_t latestCount = 0;
    double busyPercent = 0;
    ProcessMonitor monitor(platform_, options_.mode, options_.timing);
    monitor.onUpdate = [&](const std::vector<ProcessSample>& processes, const ProcessMonitor::SystemLine& system) {
        latestCount = processes.size();
        busyPercent = clampedBusyPercent(system.cpu);
    };
    monitor.start(intervalSeconds, rows);
    QEventLoop loop;
    QTimer end;
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    end.start(options_.monitorTime);
    loop.exec();
    const ProcessMonitor::Source source = monitor.source();
    monitor.stop();

    print("Vantoro's process source", latestCount > 0,
          sourceDetail(source, platform_.processStream ? platform_.processStream->streamName() : "top"));
    print("Process list after 6 seconds", latestCount > 0,
          latestCount > 0 ? fmt::format("{} processes · {:.0f}% system CPU", latestCount, busyPercent)
                          : "empty — this is the failure the fallback exists to prevent");
}

} // namespace vantoro
