// A made machine: processors that programs share, the heat that their work makes, fans that carry it off, and a sampler
// that sees of it what a process list shows. It knows who made the heat; nothing of the product is used here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace culprit {

/// The same numbers from the same seed with every standard library.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next();
    double uniform(double from = 0, double to = 1);
    /// Both ends included.
    int whole(int from, int to);
    bool chance(double probability) { return uniform() < probability; }
    double normal();
    /// Log-normal: half of them below the median.
    double around(double median, double spread);
    template <class Element>
    const Element& of(const std::vector<Element>& list) {
        return list[static_cast<std::size_t>(next() % list.size())];
    }

private:
    std::uint64_t state_;
};

enum class MachineKind : std::uint8_t { twoFans, fanless, noSensors };
inline constexpr int machineKinds = 3;
const char* nameOf(MachineKind kind);

/// Watts, degrees Celsius, joules and watts per kelvin, revolutions per minute.
struct Machine {
    MachineKind kind = MachineKind::twoFans;
    bool isMac = true;
    int performanceCores = 8;
    int efficiencyCores = 4;
    double memoryBytes = 16e9;
    double performanceWatts = 5;
    double efficiencyWatts = 0.7;
    double graphicsWatts = 40;
    double restWatts = 5;
    double ambient = 23;
    double dieCapacity = 12;
    double dieToSink = 0.35;
    double sinkCapacity = 110;
    double sinkBare = 0.5;
    double sinkByFans = 1.4;
    double fansBegin = 54;
    double fansFull = 90;
    double fanFloor = 1350;
    double fanCeiling = 5800;
    bool tellsProcessorWatts = true;
    bool tellsSystemWatts = true;

    int cores() const { return performanceCores + efficiencyCores; }
};
Machine drawMachine(MachineKind kind, Random& random);

/// Who a process is, as a list names it.
struct Program {
    std::string name;
    /// "userApp", "helper", "commandLine", "systemDaemon" or "kernel".
    std::string kind = "commandLine";
    /// The application or job that its rows say it belongs to; empty for none.
    std::string owner = {};
    std::string user = "sam";
    double memoryBytes = 40e6;
};

using Course = std::function<double(double seconds)>;
inline double at(const Course& course, double now, double otherwise = 0) {
    return course ? course(now) : otherwise;
}

/// Short-lived processes, so many at a time, each of which needs so much processor time.
struct Spawning {
    int atOnce = 1;
    std::vector<Program> programs;
    double cpuSeconds = 1;
    double spread = 0.5;
    /// The part of the work that the leader itself does.
    double leaderShare = 0.02;
};

/// Something that runs: one process, several side by side, or a leader that starts short ones.
struct Work {
    /// Whose energy it is; several can have one owner.
    int owner = 0;
    double starts = -1e9;
    double ends = 1e9;
    /// Processors wanted.
    Course cores = nullptr;
    /// Parts of the graphics processor wanted, 0 to 1: its shaders and its video engine.
    Course graphics = nullptr;
    Course video = nullptr;
    double wander = 0.12;
    double weight = 1;
    /// Power beside ordinary code's at the same processor time.
    double intensity = 1;
    double systemShare = 0.12;
    bool isOnEfficiencyCores = false;
    /// Counted as busy, but draws nothing: a processor held idle.
    bool isPause = false;
    /// What a list shows of its graphics work is refused.
    bool isUnreadable = false;
    /// No list shows it at all.
    bool isHidden = false;
    /// The first is the leader of what is spawned.
    std::vector<Program> programs;
    /// How the processes that stay share the work; evenly when empty.
    std::vector<double> parts = {};
    std::optional<Spawning> spawning = {};
};

/// What one owner did.
struct Account {
    std::string name;
    /// What a list may call it: its own name, its programs' names.
    std::vector<std::string> names;
    /// Joules in every second since the beginning; processor seconds up to every sample.
    std::vector<double> joules;
    std::vector<double> processorSeconds;
};

/// What heats or stifles the machine besides its programs.
struct Surroundings {
    Course adapterWatts = nullptr;
    /// Heat that comes from the battery or from outside into the heat sink, watts.
    Course heatWatts = nullptr;
    /// What is left of the way the heat goes out, 0 to 1.
    Course ventilation = nullptr;
    Course ambientRise = nullptr;
    /// Held memory beyond the programs' own, and how much of the time work waits for memory or the disk, per cent.
    Course memoryStall = nullptr;
    Course diskStall = nullptr;
    /// From so many degrees on the system slows the processors down.
    double slowsAt = 97;
};

class World {
public:
    World(const Machine& machine, Random random);

    const Machine& machine() const { return machine_; }
    Random& random() { return random_; }
    Surroundings& surroundings() { return surroundings_; }

    int addOwner(std::string name);
    void add(Work work);
    /// What runs the program of this name; null when there is none. Good until the next one is added.
    Work* find(const std::string& program);
    /// Lives through so many seconds; the recording's lines afterwards are the header and one line per sample from
    /// `opened` on.
    void live(double seconds, double opened);

    const std::vector<std::string>& lines() const { return lines_; }
    const std::vector<Account>& accounts() const { return accounts_; }
    const std::vector<double>& sampleTimes() const { return sampleTimes_; }
    /// Joules in every second that came from no program or could not leave.
    const std::vector<double>& foreignJoules() const { return foreignJoules_; }
    /// Whether anybody would notice: fans at a quarter of their range, a chip of 68 degrees, or, where neither can be
    /// measured, a quarter of the processors or of the graphics processor busy.
    bool isNoticed() const;

private:
    struct Process {
        int pid = 0;
        std::size_t work = 0;
        Program program;
        double used = 0;
        double shown = 0;
        bool isSeen = false;
    };
    struct Running {
        Work work;
        std::vector<Process> staying;
        std::vector<Process> passing;
        std::vector<double> needs;
        double wander = 0;
        double granted = 0;
        double graphics = 0;
        double video = 0;
        /// What ended members had used and no list has shown.
        double owed = 0;
        Process leader;
        bool isBegun = false;
        bool isLeaderGone = false;
    };
    struct Row;

    void begin(Running& running, std::size_t index);
    void finish(Running& running);
    void startChild(Running& running, std::size_t index, std::size_t slot);
    void share(double now);
    void spend(double now, double seconds);
    void heat(double now, double seconds, double watts, double graphicsWatts);
    void settle();
    void sample(double now, bool isRecorded);
    std::vector<Row> rows(double elapsed);
    std::string header() const;
    std::string line(double now, double elapsed, std::vector<Row> rows);
    double conductance() const;
    double speedFactor() const;
    int nextPid() { return pid_ += random_.whole(1, 3); }

    Machine machine_;
    Random random_;
    Surroundings surroundings_;
    std::vector<Running> running_;
    std::vector<Account> accounts_;
    std::vector<double> foreignJoules_;
    std::vector<std::string> lines_;
    std::vector<double> sampleTimes_;
    int pid_ = 400;
    double die_ = 30;
    double sink_ = 28;
    double chipHeat_ = 0;
    double fanShare_ = 0;
    double fanTarget_ = 0;
    double fanTargetFrom_ = 0;
    double ventilation_ = 1;
    double slowing_ = 1;
    double processorWatts_ = 0;
    double graphicsWatts_ = 0;
    double graphicsBusy_ = 0;
    double busyPerformance_ = 0;
    double busyEfficiency_ = 0;
    double queue_ = 0;
    double loadAverage_ = 1;
    double userSeconds_ = 0;
    double systemSeconds_ = 0;
    double performanceSeconds_ = 0;
    double efficiencySeconds_ = 0;
    double graphicsSeconds_ = 0;
    double processorJoules_ = 0;
    double graphicsJoules_ = 0;
    double swapOuts_ = 0;
    double lastSample_ = 0;
    std::vector<double> recentBusy_;
};

} // namespace culprit
