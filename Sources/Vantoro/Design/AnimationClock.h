// The one clock of everything that moves: 30 beats a second while something does, none while all is at rest.
#pragma once

#include <functional>
#include <QObject>
#include <QTimer>
#include <vector>

namespace vantoro {

class AnimationClock;

/// Something that moves; leaves its clock when it is destroyed.
class Animated {
public:
    Animated() = default;
    virtual ~Animated();
    Animated(const Animated&) = delete;
    Animated& operator=(const Animated&) = delete;

    /// Shows the state at this instant; false once nothing moves any more, and then it is not asked again until it is
    /// run anew.
    virtual bool advance(double now) = 0;

private:
    friend class AnimationClock;
    AnimationClock* clock_ = nullptr;
};

class AnimationClock : public QObject {
    Q_OBJECT
public:
    static constexpr int beatMilliseconds = 33;

    /// Seconds of a clock that only goes forward; a test may bring its own.
    using Now = std::function<double()>;
    explicit AnimationClock(Now now = {}, QObject* parent = nullptr);
    ~AnimationClock() override;

    double now() const { return now_(); }
    /// Beats as seldom as what moves on it changes its picture.
    void setBeat(int milliseconds) { timer_.setInterval(milliseconds); }
    /// Beats for it until its advance says no. Running it twice changes nothing.
    void run(Animated& animated);
    void stop(Animated& animated);
    /// While nobody can see anything it stands; what was under way goes on where it would be by then.
    void setPaused(bool paused);
    bool isPaused() const { return paused_; }
    /// Whether it beats at this moment.
    bool isBeating() const { return timer_.isActive(); }
    /// One beat; the timer's, or a test's.
    void beat();

signals:
    /// Somebody can see something again.
    void resumed();

private:
    void startOrStop();

    Now now_;
    QTimer timer_;
    std::vector<Animated*> running_;
    bool paused_ = false;
};

} // namespace vantoro
