#include "Model/Commands/MeasuringCommands.h"

#include "Model/Commands/StandardOutput.h"
#include "Model/Explanation/Explanation.h"
#include "Model/Explanation/Reports.h"
#include "Model/Live/InterruptWatcher.h"
#include "Model/Live/Log.h"
#include "Model/Recording/RecordingFile.h"
#include "Platform/Posix/Clocks.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <limits>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr int nothingMeasured = 1;
constexpr int recordingFault = 2;
constexpr double defaultSeconds = 20;

/// How wide lines may be: the terminal's width up to what reads well, 80 where there is no terminal.
std::size_t lineWidth() {
    constexpr std::size_t withoutTerminal = 80;
    constexpr std::size_t widest = 100;
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return withoutTerminal;
    return std::min<std::size_t>(size.ws_col, widest);
}

int print(const CommandLine& line, const History& history, const Conclusion& conclusion) {
    const bool emphasis = ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
    const std::string text = line.json ? jsonReport(history, conclusion.verdict, conclusion.suspects,
                                                    conclusion.explanation, conclusion.series) +
                                             '\n'
                                       : textReport(conclusion.verdict, conclusion.explanation, lineWidth(), emphasis);
    StandardOutput output;
    output.text(text);
    return output.status();
}

/// One line on a terminal, written over as time goes by and cleared at the end; nothing anywhere else.
class Progress {
public:
    explicit Progress(double seconds)
        : total_(seconds), deadline_(std::chrono::milliseconds(std::llround(seconds * 1e3))) {
        if (::isatty(STDERR_FILENO) == 0)
            return;
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { show(); });
        timer_.start(std::chrono::seconds(1));
        show();
    }

    ~Progress() {
        if (timer_.isActive())
            std::fputs("\r\x1b[K", stderr);
    }

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void show() {
        const double left = static_cast<double>(deadline_.remainingTime()) / 1e3;
        std::fprintf(stderr, "\rWatching this machine: %.0f of %.0f s", std::floor(total_ - left), total_);
        std::fflush(stderr);
    }

    double total_;
    QDeadlineTimer deadline_;
    QTimer timer_;
};

/// Lets the hub go on until there is enough for a verdict, for as long as anyone would wait.
void awaitMeasurement(const SensorHub& hub) {
    constexpr std::chrono::seconds patience{5};
    QObject scope;
    QObject::connect(&hub, &SensorHub::transactionEnded, &scope, [&hub] {
        if (hub.measuring() == Measuring::done)
            QCoreApplication::quit();
    });
    QTimer::singleShot(patience, &scope, &QCoreApplication::quit);
    QCoreApplication::exec();
}

int reportNothing(const CommandLine& line, const SensorHub& hub) {
    const char* const reason = hub.processesReady()
                                   ? "this machine was watched for too short a time; there is no verdict"
                                   : "no list of processes has come; there is no verdict";
    complain(reason);
    if (!line.json)
        std::printf("Looking…\n\n%s\n", hub.processesReady() ? "Two samples are needed before anything can be said."
                                                             : "No list of processes has come yet.");
    return nothingMeasured;
}

constexpr int writeFault = 1;

} // namespace

int explainThisMachine(const CommandLine& line, SensorHub& hub) {
    const double seconds = line.seconds.value_or(defaultSeconds);
    hub.seeProgramsAlways();
    {
        const Progress progress(seconds);
        bool isInterrupted = false;
        const InterruptWatcher interrupt([&isInterrupted] {
            isInterrupted = true;
            QCoreApplication::quit();
        });
        QTimer::singleShot(std::chrono::milliseconds(std::llround(std::min(seconds, 1e6) * 1e3)),
                           QCoreApplication::instance(), &QCoreApplication::quit);
        hub.start();
        QCoreApplication::exec();
        // What was delivered since the last tick counts too.
        hub.tickUnlessJustDone();
        if (hub.measuring() != Measuring::done && !isInterrupted)
            awaitMeasurement(hub);
    }
    if (hub.measuring() != Measuring::done)
        return reportNothing(line, hub);
    return print(line, hub.history(), conclude(hub.history(), hub.format()));
}

int explainRecording(const CommandLine& line, const Format& format) {
    History history;
    const RecordingResult result =
        readRecording(*line.replayFile, [&history](Snapshot&& snapshot) { history.append(std::move(snapshot)); });
    if (result.error) {
        complain(result.error->text(*line.replayFile));
        return recordingFault;
    }
    history.setSystem(result.header.system.value_or(SystemKind::macos));
    if (const auto& counted = result.header.processors; counted && !history.processorCount())
        history.setProcessorCount(counted->count());
    if (result.warning)
        complain(result.warning->text(*line.replayFile));
    return print(line, history, conclude(history, format));
}

int recordThisMachine(const CommandLine& line, SensorHub& hub, std::chrono::milliseconds interval) {
    // From before the file is there: what was begun is finished.
    const InterruptWatcher interrupt([] { QCoreApplication::quit(); });
    hub.seeProgramsAlways();
    RecordingWriter writer;
    Outcome<> outcome = writer.open(line.recordFile, hub.recordingHeader(unixSeconds()));
    const auto takeOne = [&] {
        Snapshot snapshot = hub.measure(unixSeconds());
        hub.addSingleReadings(snapshot);
        History::keepBusiest(snapshot.processes);
        outcome = writer.append(snapshot);
        if (outcome.failed())
            QCoreApplication::exit(writeFault);
    };
    if (!outcome.failed()) {
        hub.startProcesses();
        takeOne();
    }
    if (!outcome.failed()) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &timer, takeOne);
        timer.start(interval);
        QTimer end;
        end.setSingleShot(true);
        QObject::connect(&end, &QTimer::timeout, &end, [] { QCoreApplication::quit(); });
        if (line.seconds && *line.seconds * 1e3 < std::numeric_limits<int>::max())
            end.start(std::chrono::milliseconds(std::llround(*line.seconds * 1e3)));
        QCoreApplication::exec();
    }
    if (!outcome.failed())
        outcome = writer.close();
    if (!outcome.failed())
        return EXIT_SUCCESS;
    complain(fmt::format("{}: {}", line.recordFile, outcome.fault()));
    return writeFault;
}

} // namespace vantoro
