#include "Platform/Linux/Reading/SlowLane.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

constexpr std::size_t mostWorkers = 4;
constexpr std::chrono::milliseconds farewell{100};

using Steady = std::chrono::steady_clock;

} // namespace

struct SlowLane::State {
    struct Worker {
        bool isBusy = false;
        Steady::time_point begun;
    };

    explicit State(double seconds) : patienceSeconds(seconds) {}

    const double patienceSeconds;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> jobs;
    std::vector<std::unique_ptr<Worker>> workers;
    std::size_t running = 0;
    bool isEnding = false;

    bool allHeld() const {
        const auto now = Steady::now();
        return std::ranges::all_of(workers, [&](const auto& worker) {
            return worker->isBusy && std::chrono::duration<double>(now - worker->begun).count() > patienceSeconds;
        });
    }

    void work(Worker& self) {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return isEnding || !jobs.empty(); });
            if (isEnding)
                break;
            const std::function<void()> job = std::move(jobs.front());
            jobs.pop_front();
            self = {.isBusy = true, .begun = Steady::now()};
            lock.unlock();
            job();
            lock.lock();
            self.isBusy = false;
        }
        --running;
        changed.notify_all();
    }
};

SlowLane::SlowLane(SecondsClock clock, double patienceSeconds)
    : clock_(std::move(clock)), patienceSeconds_(patienceSeconds), state_(std::make_shared<State>(patienceSeconds)) {}

SlowLane::~SlowLane() {
    std::unique_lock lock(state_->mutex);
    state_->isEnding = true;
    state_->jobs.clear();
    state_->changed.notify_all();
    state_->changed.wait_for(lock, farewell, [this] { return state_->running == 0; });
}

void SlowLane::submit(std::function<void()> job) {
    {
        const std::lock_guard lock(state_->mutex);
        state_->jobs.push_back(std::move(job));
        state_->changed.notify_one();
    }
    attend();
}

void SlowLane::attend() {
    const std::lock_guard lock(state_->mutex);
    if (state_->jobs.empty() || state_->workers.size() == mostWorkers || !state_->allHeld())
        return;
    State::Worker& worker = *state_->workers.emplace_back(std::make_unique<State::Worker>());
    ++state_->running;
    std::thread([state = state_, &worker] { state->work(worker); }).detach();
}

bool SlowLane::isHeldUp() const {
    const std::lock_guard lock(state_->mutex);
    return state_->workers.size() == mostWorkers && state_->allHeld();
}

} // namespace vantoro
