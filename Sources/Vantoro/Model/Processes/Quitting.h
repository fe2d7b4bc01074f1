// Ending one group of processes: first they are asked, and only those that have not ended by then may be ended by
// force.
#pragma once

#include "Model/Records/ProcessAggregate.h"
#include "Platform/ProcessControl.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vantoro {

/// What is asked about: the group's processes that are alive at this moment.
struct QuitQuestion {
    std::string key;
    /// What the group is called.
    std::string name;
    std::vector<LivingProcess> processes;
    /// Every process alive at this moment, by pid and birth: what is not among them has been started since.
    std::map<std::int32_t, std::uint64_t> known;
};

/// The process this member was, if it is still alive: one that started after the member was seen has only its number.
/// Never the system's first process, nor this program.
std::optional<LivingProcess> livingProcess(ProcessControl& control, const ProcessAggregate& member);

/// Every reading of the clock is an argument, in seconds of one that only goes forward.
class Quitting {
public:
    /// How long processes have before force is offered, and how long force may take.
    static constexpr double patienceSeconds = 5;

    enum class Stage {
        asked,        ///< they have time to end
        stillRunning, ///< their time is up
        forced,       ///< ended by force, and not all gone yet
        stuck,        ///< not even force ended them in its time
        over,         ///< nothing is left that could be ended
    };

    explicit Quitting(QuitQuestion question);

    const std::string& key() const { return question_.key; }
    const std::string& name() const { return question_.name; }
    Stage stage() const { return stage_; }
    /// All that were asked, those started since among them; of these, how many have ended, were refused by the system,
    /// and still run.
    int all() const { return static_cast<int>(targets_.size()); }
    int ended() const;
    int refused() const;
    int running() const { return all() - ended() - refused(); }
    /// None of them was still there to be asked.
    bool hadEnded() const;
    /// Seconds until force is offered.
    double secondsLeft(double now) const;

    /// Asks them, and those that they have started since the question.
    void ask(ProcessControl& control, double now);
    /// Ends those that still run.
    void force(ProcessControl& control, double now);
    /// Looks who has ended, and treats like their parents those that were started since.
    void look(ProcessControl& control, double now);

private:
    struct Target {
        LivingProcess process;
        bool wasReached = false;
        bool isRefused = false;
        bool hasEnded = false;
    };
    using Alive = std::map<std::int32_t, LivingProcess>;

    void send(ProcessControl& control);
    void reach(ProcessControl& control, Target& target) const;
    void adopt(ProcessControl& control, const Alive& alive);
    bool isStartedByOne(const LivingProcess& process, const Alive& alive) const;

    QuitQuestion question_;
    std::vector<Target> targets_;
    Stage stage_ = Stage::asked;
    QuitManner manner_ = QuitManner::ask;
    double since_ = 0;
};

} // namespace vantoro
