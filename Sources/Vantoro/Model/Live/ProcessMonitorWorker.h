// The process monitor's work, on the monitor's own thread: the child processes, the parsing, the fallback sampling and
// the timers.
#pragma once

#include "Model/Live/ProcessMonitor.h"
#include "Model/Processes/IdentityResolver.h"
#include "Model/Processes/TopStream.h"
#include "Model/Processes/UnprivilegedProcesses.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <QObject>
#include <QProcess>
#include <QTimer>
#include <unordered_map>
#include <vector>

namespace vantoro {

/// Made, used and destroyed on one thread that runs a Qt event loop. Destroying it ends every child process.
class ProcessMonitorWorker : public QObject {
public:
    using Source = ProcessMonitor::Source;

    /// Called on the worker's thread.
    struct Events {
        std::function<void(Source)> sourceChanged;
        std::function<void(std::vector<ProcessSample>, SystemLine, int hidden)> delivered;
    };

    ProcessMonitorWorker(const Platform& platform, const ProcessMonitor::Timing& timing);
    ~ProcessMonitorWorker() override;

    /// Stops what runs, then starts anew; `events` replace those of the start before.
    void start(int intervalSeconds, int rows, ProcessMonitor::Mode mode, Events events);
    void stop();
    /// These processes are listed even where the stream leaves them out; kept over a new start.
    void alsoList(std::vector<std::int32_t> pids);

private:
    void startStream(int intervalSeconds, int rows);
    void startUnprivileged(int intervalSeconds, bool byChoice);
    void sampleUnprivileged();
    void primeImmediately(int rows);
    void finishPriming();
    void armWatchdog(int intervalSeconds);
    void readStream(int intervalSeconds);
    void finishBlock(const std::vector<std::string>& lines);
    void parseAndDeliver(const std::vector<std::string>& lines);
    void addLeftOut(std::vector<ProcessSample>& samples);
    void identify(ProcessSample& process);
    void confirmSystemSource();
    void setSource(Source source);
    void refreshPaths();
    void teardownTop();
    void retire(std::unique_ptr<QProcess> process);

    std::shared_ptr<ProcessTable> processTable_;
    std::shared_ptr<SystemStatistics> statistics_;
    std::shared_ptr<ProcessStream> processStream_;
    ProcessMonitor::Timing timing_;
    Events events_;
    Source source_;

    std::unique_ptr<QProcess> task_;
    std::unique_ptr<QProcess> priming_;
    QByteArray primingOutput_;
    /// Children that were told to go and have not gone yet.
    std::vector<std::unique_ptr<QProcess>> retiring_;
    TopBlockCutter cutter_;
    int blocksSeen_ = 0;
    qint64 bytesSinceBlock_ = 0;
    std::unique_ptr<QTimer> watchdog_;

    std::unordered_map<std::int32_t, std::string> pathMap_;
    /// Monotonic.
    std::optional<double> lastPathRefresh_;

    IdentityResolver identities_;
    UnprivilegedProcesses fallback_;
    std::vector<std::int32_t> alsoListed_;
    int samplesUntilListing_ = 0;
    /// Set exactly while the fallback is active.
    std::unique_ptr<QTimer> fallbackTimer_;
};

} // namespace vantoro
