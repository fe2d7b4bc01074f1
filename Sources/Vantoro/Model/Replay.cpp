#include "Model/Replay.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace vantoro {

Replay::Replay(SensorHub& hub, const std::string& path) : hub_(hub), result_(readRecording(path, [](Snapshot&&) {})) {
    if (result_.error)
        return;
    hub_.beginReplay(result_.header.machine, result_.header.processors);
    reader_.emplace(path);
    next_ = reader_->next();
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &Replay::takeNext);
}

void Replay::start() {
    if (next_ && !timer_.isActive())
        takeNext();
}

void Replay::takeNext() {
    const UnixSeconds shown = next_->timestamp;
    Snapshot snapshot = std::move(*next_);
    next_ = reader_->next();
    hub_.accept(std::move(snapshot));
    if (!next_) {
        emit finished();
        return;
    }
    // A recorder that slept leaves a gap; nobody waits for a night to pass.
    constexpr double longestPause = 60;
    const double pause = std::clamp(next_->timestamp - shown, 0.0, longestPause);
    timer_.start(std::chrono::milliseconds(std::llround(pause * 1000)));
}

void Replay::finish() {
    while (next_)
        takeNext();
    timer_.stop();
}

} // namespace vantoro
