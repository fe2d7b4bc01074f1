#include "Model/Live/Replay.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <system_error>

namespace vantoro {

namespace {

/// Whether what is read of it is gone: a pipe, a terminal, a socket.
bool readsOnlyOnce(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::file_type type = fs::status(path, ignored).type();
    return type == fs::file_type::fifo || type == fs::file_type::character || type == fs::file_type::socket;
}

RecordingResult readWhole(const std::string& path) {
    if (!readsOnlyOnce(path))
        return readRecording(path, [](Snapshot&&) {});
    RecordingResult refused;
    refused.error = {
        .line = 0, .reason = "the window needs a file and not a pipe, which can be read only once; --explain takes it"};
    return refused;
}

} // namespace

Replay::Replay(SensorHub& hub, const std::string& path) : hub_(hub), result_(readWhole(path)) {
    if (result_.error)
        return;
    hub_.beginReplay(result_.header.machine, result_.header.processors,
                     result_.header.system.value_or(SystemKind::macos));
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
