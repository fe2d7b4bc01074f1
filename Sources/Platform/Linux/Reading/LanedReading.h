// A reading that moves out of its caller's way when it proves slow.
#pragma once

#include "Platform/Linux/Reading/SlowLane.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace vantoro {

/// The first reading is made in the lane and waited for with the lane's patience; once it has proved quick the caller
/// reads by itself, with no thread between. A reading that took longer than slowReadSeconds is slow: from then on the
/// lane makes it, one at a time, and the caller gets what the one before gave. Some quick readings in a row bring it
/// back, more of them each time. Used from one thread at a time; `read` is never run twice at once.
template <typename Value>
class LanedReading {
public:
    using Read = std::function<std::optional<Value>()>;
    /// `alwaysInLane`: however quick it was, it may take its time at any other.
    enum class Way { quickest, alwaysInLane };

    LanedReading(std::shared_ptr<SlowLane> lane, Read read, Way way = Way::quickest)
        : lane_(std::move(lane)), shared_(std::make_shared<Shared>(std::move(read), lane_->clock())), way_(way) {}

    /// None while there is no value, when the reading fails, and when the last value is older than half a minute.
    std::optional<Value> read() {
        if (isQuick_)
            return readHere();
        std::unique_lock lock(shared_->mutex);
        if (way_ == Way::quickest && !shared_->isPending && shared_->quickInARow >= quickNeeded_) {
            lock.unlock();
            isQuick_ = true;
            return readHere();
        }
        const bool isFirst = !shared_->isPending && !shared_->wasTried;
        if (!shared_->isPending) {
            shared_->isPending = shared_->wasTried = true;
            lane_->submit([shared = shared_] { shared->run(); });
        } else {
            lane_->attend();
        }
        if ((isFirst || lane_->waitsAlways()) && !lane_->isHeldUp())
            shared_->done.wait_for(lock, std::chrono::duration<double>(lane_->patienceSeconds()),
                                   [this] { return !shared_->isPending; });
        if (!shared_->value || lane_->now() - shared_->readAt > keptSeconds)
            return {};
        return shared_->value;
    }

private:
    static constexpr double keptSeconds = 30;
    static constexpr int quickNeededAfterSlowness = 8;

    struct Shared {
        Shared(Read reading, SecondsClock seconds) : read(std::move(reading)), clock(std::move(seconds)) {}

        void run() {
            const double begun = clock();
            std::optional<Value> fresh = read();
            const double ended = clock();
            {
                const std::lock_guard lock(mutex);
                value = std::move(fresh);
                readAt = ended;
                quickInARow = ended - begun > slowReadSeconds ? 0 : quickInARow + 1;
                isPending = false;
            }
            done.notify_all();
        }

        const Read read;
        const SecondsClock clock;
        std::mutex mutex;
        std::condition_variable done;
        std::optional<Value> value;
        double readAt = 0;
        int quickInARow = 0;
        bool isPending = false;
        bool wasTried = false;
    };

    std::optional<Value> readHere() {
        const double begun = lane_->now();
        std::optional<Value> fresh = shared_->read();
        const double ended = lane_->now();
        if (ended - begun <= slowReadSeconds)
            return fresh;
        const std::lock_guard lock(shared_->mutex);
        shared_->value = fresh;
        shared_->readAt = ended;
        shared_->quickInARow = 0;
        isQuick_ = false;
        quickNeeded_ = quickNeeded_ == 1 ? quickNeededAfterSlowness : quickNeeded_ * 2;
        return fresh;
    }

    std::shared_ptr<SlowLane> lane_;
    std::shared_ptr<Shared> shared_;
    Way way_;
    bool isQuick_ = false;
    /// One quick reading is enough for what was never slow.
    int quickNeeded_ = 1;
};

} // namespace vantoro
