#include "Design/AnimationClock.h"

#include "Platform/Posix/Clocks.h"

#include <algorithm>
#include <utility>

namespace vantoro {

Animated::~Animated() {
    if (clock_ != nullptr)
        clock_->stop(*this);
}

AnimationClock::AnimationClock(Now now, QObject* parent) : QObject(parent), now_(std::move(now)) {
    if (!now_)
        now_ = monotonicSeconds;
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(beatMilliseconds);
    connect(&timer_, &QTimer::timeout, this, &AnimationClock::beat);
}

AnimationClock::~AnimationClock() {
    for (Animated* animated : running_)
        if (animated != nullptr)
            animated->clock_ = nullptr;
}

void AnimationClock::run(Animated& animated) {
    if (animated.clock_ == this)
        return;
    animated.clock_ = this;
    running_.push_back(&animated);
    startOrStop();
}

void AnimationClock::stop(Animated& animated) {
    animated.clock_ = nullptr;
    // Emptied in place: a beat may be walking the list.
    std::replace(running_.begin(), running_.end(), &animated, static_cast<Animated*>(nullptr));
}

void AnimationClock::setPaused(bool paused) {
    if (paused == paused_)
        return;
    paused_ = paused;
    startOrStop();
    if (!paused_)
        emit resumed();
}

void AnimationClock::beat() {
    const double instant = now();
    for (std::size_t i = 0; i < running_.size(); ++i)
        if (running_[i] != nullptr && !running_[i]->advance(instant) && running_[i] != nullptr)
            stop(*running_[i]);
    std::erase(running_, nullptr);
    startOrStop();
}

void AnimationClock::startOrStop() {
    const bool beats = !paused_ && !running_.empty();
    if (beats && !timer_.isActive())
        timer_.start();
    else if (!beats)
        timer_.stop();
}

} // namespace vantoro
