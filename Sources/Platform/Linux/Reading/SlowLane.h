// Where readings go that a driver takes its time over, so that the caller never waits for it.
#pragma once

#include <functional>
#include <memory>

namespace vantoro {

/// Seconds of a clock that never goes back; callable from any thread.
using SecondsClock = std::function<double()>;

/// A reading that takes longer is slow.
constexpr double slowReadSeconds = 0.020;

/// One worker thread that starts with the first job. Only while a job holds it for longer than the patience does
/// another thread take the jobs behind (four at most), so that one stuck driver does not silence the other slow ones.
class SlowLane {
public:
    /// The clock judges how long a reading took; the patience is in real seconds, so that a test on a busy machine can
    /// have more of it.
    explicit SlowLane(SecondsClock clock, double patienceSeconds = slowReadSeconds);
    SlowLane(const SlowLane&) = delete;
    SlowLane& operator=(const SlowLane&) = delete;
    /// Jobs not yet begun are dropped. A worker that a driver holds is left behind; jobs must own what they touch.
    ~SlowLane();

    void submit(std::function<void()> job);
    /// To be called by whoever still waits for a job: gives the jobs another worker once all of them are held.
    void attend();
    /// Whether a job handed over now would have to wait for one that is slow already.
    bool isHeldUp() const;
    /// For how long a caller waits for a first reading.
    double patienceSeconds() const { return patienceSeconds_; }
    /// From now on callers wait for every reading, so long: for who looks only once and would rather be late.
    void waitAlways(double seconds) {
        patienceSeconds_ = seconds;
        waitsAlways_ = true;
    }
    bool waitsAlways() const { return waitsAlways_; }
    double now() const { return clock_(); }
    const SecondsClock& clock() const { return clock_; }

private:
    struct State;
    SecondsClock clock_;
    double patienceSeconds_;
    bool waitsAlways_ = false;
    std::shared_ptr<State> state_;
};

} // namespace vantoro
