// The groups of processes that are being ended, and what became of them.
#pragma once

#include "Model/Processes/Quitting.h"
#include "Model/Records/Telemetry.h"

#include <functional>
#include <memory>
#include <optional>
#include <QObject>
#include <QTimer>
#include <string>
#include <vector>

namespace vantoro {

/// What became of asking a group to end.
struct QuitResult {
    enum class Kind { ended, hadEnded, refused, stillRunning, stuck };
    Kind kind = Kind::ended;
    /// The group's display name.
    std::string name;
    /// How many processes ended, were refused or still run.
    int processes = 0;
    UnixSeconds at = 0;

    bool operator==(const QuitResult&) const = default;
};

/// Lives on the main thread. Looks a few times a second while something is being ended, and not at all otherwise.
class Quits : public QObject {
    Q_OBJECT
public:
    static constexpr double noteSeconds = 8;
    static constexpr int lookMilliseconds = 200;
    using Clock = std::function<double()>;

    /// `monotonic` gives seconds of a clock that only goes forward; `system` is this machine's, by which groups are
    /// named. Without a control nothing is ever ended.
    Quits(std::shared_ptr<ProcessControl> control, Clock now, Clock monotonic, SystemKind system);

    bool canEnd() const { return control_ != nullptr; }
    /// From now on process numbers mean nothing here.
    void disable();

    /// How many of the group's processes are alive and could be asked, the leader of their job among them; all of them
    /// where that cannot be told.
    int living(const ProcessGroup& group) const;
    /// False also where it cannot be told.
    bool isKnownToLive(const ProcessAggregate& member) const;
    /// Where the group's job works: the working folder of its leader or, where that has ended, of the oldest of its
    /// processes that live. Empty where it cannot be told.
    std::string workingFolder(const ProcessGroup& group) const;
    /// Whether this program is one of them.
    bool holdsOwn(const ProcessGroup& group) const;
    /// The group was ended from here, and nothing of it has come back.
    bool isEnded(const ProcessGroup& group) const;

    /// What there is to ask about; none when all of it has ended, which then is the result.
    std::optional<QuitQuestion> question(const ProcessGroup& group);
    /// The answer was yes. Whoever shows the progress is attending: while that lasts, what still runs is no result yet.
    void begin(QuitQuestion question);
    void force(const std::string& key);
    void attend(const std::string& key, bool isAttended);
    /// The quitting of this group that is under way; null when there is none. Valid until changed().
    const Quitting* find(const std::string& key) const;
    double secondsLeft(const Quitting& quitting) const { return quitting.secondsLeft(monotonic_()); }
    /// What happened last, for as long as it is shown.
    const std::optional<QuitResult>& result() const { return result_; }

    /// One look; the timer's, or a test's.
    void look();

signals:
    void changed();

private:
    struct Open {
        Quitting quitting;
        bool isAttended = true;
        bool isNoted = false;
        double lastStep = 0;
    };
    struct Ended {
        std::string key;
        double at = 0;
    };

    std::vector<LivingProcess> livingOf(const ProcessGroup& group) const;
    void settle();
    void note(QuitResult::Kind kind, const std::string& name, int processes);
    Open* open(const std::string& key);

    std::shared_ptr<ProcessControl> control_;
    Clock now_;
    Clock monotonic_;
    SystemKind system_;
    std::vector<Open> open_;
    std::vector<Ended> ended_;
    std::optional<QuitResult> result_;
    double resultUntil_ = 0;
    QTimer timer_;
};

} // namespace vantoro
