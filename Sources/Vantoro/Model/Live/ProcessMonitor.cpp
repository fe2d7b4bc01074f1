#include "Model/Live/ProcessMonitor.h"

#include "Model/Live/ProcessMonitorWorker.h"

#include <algorithm>
#include <QThread>
#include <semaphore>
#include <utility>

namespace vantoro {

/// The thread, its worker, and the way there and back. Everything handed over is queued; destroying this drops what is
/// still on its way.
class ProcessMonitorThread : private QThread {
public:
    ProcessMonitorThread(const Platform& platform, const ProcessMonitor::Timing& timing)
        : platform_(platform), timing_(timing) {
        setObjectName("vantoro.top");
        start();
        isReady_.acquire();
    }

    ~ProcessMonitorThread() override {
        quit();
        wait();
    }

    template <typename Work>
    void onWorker(Work work) {
        QMetaObject::invokeMethod(
            worker_, [worker = worker_, work = std::move(work)] { work(*worker); }, Qt::QueuedConnection);
    }

    template <typename Work>
    void onMain(Work work) {
        QMetaObject::invokeMethod(&mainThreadReceiver_, std::move(work), Qt::QueuedConnection);
    }

private:
    void run() override {
        ProcessMonitorWorker worker(platform_, timing_);
        worker_ = &worker;
        isReady_.release();
        exec();
    }

    Platform platform_;
    ProcessMonitor::Timing timing_;
    QObject mainThreadReceiver_;
    /// The standard library's, which the thread sanitizer sees through; Qt's own is not built for it.
    std::binary_semaphore isReady_{0};
    ProcessMonitorWorker* worker_ = nullptr;
};

std::chrono::milliseconds ProcessMonitor::Timing::watchdog(int intervalSeconds) const {
    return std::max<std::chrono::milliseconds>(watchdogFloor,
                                               std::chrono::seconds(watchdogIntervals * intervalSeconds));
}

ProcessMonitor::Mode ProcessMonitor::mode(std::optional<std::string_view> environment, std::string_view setting) {
    if (environment == "auto")
        return Mode::automatic;
    if (environment == "unprivileged" || setting == "unprivileged")
        return Mode::unprivileged;
    return Mode::automatic;
}

ProcessMonitor::ProcessMonitor(const Platform& platform, ModeReader currentMode, const Timing& timing)
    : currentMode_(std::move(currentMode)), thread_(std::make_unique<ProcessMonitorThread>(platform, timing)) {}

ProcessMonitor::~ProcessMonitor() = default;

void ProcessMonitor::start(int intervalSeconds, int rows) {
    stop();
    const std::uint64_t generation = generation_;
    // A result of this start that arrives after the next start or stop is nobody's any more.
    ProcessMonitorWorker::Events events{
        .sourceChanged =
            [this, generation](Source source) {
                thread_->onMain([this, generation, source] {
                    if (generation == generation_)
                        setSource(source);
                });
            },
        .delivered =
            [this, generation](std::vector<ProcessSample> processes, const SystemLine& system, int hidden) {
                thread_->onMain([this, generation, processes = std::move(processes), system, hidden] {
                    if (generation == generation_)
                        deliver(processes, system, hidden);
                });
            }};
    thread_->onWorker([intervalSeconds = std::max(1, intervalSeconds), rows, mode = currentMode_(),
                       events = std::move(events)](ProcessMonitorWorker& worker) {
        worker.start(intervalSeconds, rows, mode, events);
    });
}

void ProcessMonitor::alsoList(std::vector<std::int32_t> pids) {
    thread_->onWorker([pids = std::move(pids)](ProcessMonitorWorker& worker) { worker.alsoList(pids); });
}

void ProcessMonitor::stop() {
    ++generation_;
    thread_->onWorker([](ProcessMonitorWorker& worker) { worker.stop(); });
    if (source_ == Source{})
        return;
    source_ = {};
    thread_->onMain([this] {
        if (onSourceChange)
            onSourceChange({});
    });
}

void ProcessMonitor::setSource(Source source) {
    source_ = source;
    if (onSourceChange)
        onSourceChange(source);
}

void ProcessMonitor::deliver(const std::vector<ProcessSample>& processes, const SystemLine& system, int hidden) {
    unreadableCount_ = hidden;
    if (onUpdate)
        onUpdate(processes, system);
}

} // namespace vantoro
