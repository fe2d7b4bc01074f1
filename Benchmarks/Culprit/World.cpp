#include "World.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace culprit {

namespace {

constexpr double tickSeconds = 0.05;
constexpr double samplingSeconds = 2;

} // namespace

std::uint64_t Random::next() { // splitmix64
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
}

double Random::uniform(double from, double to) {
    return from + (to - from) * static_cast<double>(next() >> 11U) * 0x1p-53;
}

int Random::whole(int from, int to) {
    return from + static_cast<int>(next() % static_cast<std::uint64_t>(to - from + 1));
}

double Random::normal() {
    double sum = -6;
    for (int i = 0; i < 12; ++i)
        sum += uniform();
    return sum;
}

double Random::around(double median, double spread) {
    return median * std::exp(spread * normal());
}

const char* nameOf(MachineKind kind) {
    return kind == MachineKind::twoFans ? "two fans" : kind == MachineKind::fanless ? "fanless" : "no sensors";
}

Machine drawMachine(MachineKind kind, Random& random) {
    Machine machine{.kind = kind};
    machine.isMac = kind != MachineKind::noSensors && random.chance(0.5);
    machine.ambient = random.uniform(19, 30);
    machine.sinkCapacity = random.uniform(80, 240);
    if (kind == MachineKind::twoFans) {
        machine.performanceCores = random.of<int>({6, 8, 8, 10, 12});
        machine.efficiencyCores = random.of<int>({4, 4, 6, 8});
        if (!machine.isMac && random.chance(0.5)) {
            machine.performanceCores += machine.efficiencyCores;
            machine.efficiencyCores = 0;
        }
        machine.performanceWatts = random.uniform(4.2, 7.5);
        machine.graphicsWatts = random.uniform(38, 75);
        machine.sinkByFans = random.uniform(1.1, 1.7);
        machine.fansBegin = random.uniform(46, 56);
        machine.fansFull = machine.fansBegin + random.uniform(28, 38);
        machine.fanFloor = machine.isMac || random.chance(0.6) ? random.uniform(1200, 1900) : 0;
        machine.fanCeiling = random.uniform(4600, 6800);
        machine.memoryBytes = random.of<double>({16, 32, 32}) * 1073741824.0;
    } else if (kind == MachineKind::fanless) {
        machine.performanceCores = 4;
        machine.efficiencyCores = machine.isMac || random.chance(0.5) ? random.of<int>({4, 4, 6}) : 0;
        machine.performanceWatts = random.uniform(3.8, 5.2);
        machine.graphicsWatts = random.uniform(11, 17);
        machine.restWatts = random.uniform(2, 3.5);
        machine.dieCapacity = random.uniform(12, 20);
        machine.dieToSink = random.uniform(1.9, 2.8);
        machine.sinkCapacity = random.uniform(220, 380);
        machine.sinkBare = random.uniform(0.42, 0.6);
        machine.sinkByFans = 0;
        machine.memoryBytes = random.of<double>({8, 16, 16}) * 1073741824.0;
    } else {
        machine.performanceCores = random.of<int>({2, 4, 4, 8, 12});
        machine.efficiencyCores = 0;
        machine.graphicsWatts = random.uniform(30, 60);
        machine.memoryBytes = random.of<double>({8, 16, 32}) * 1073741824.0;
    }
    machine.efficiencyWatts = random.uniform(0.5, 0.9);
    machine.tellsProcessorWatts = random.chance(0.6);
    machine.tellsSystemWatts = machine.isMac || random.chance(0.5);
    return machine;
}

World::World(const Machine& machine, Random random) : machine_(machine), random_(random) {}

int World::addOwner(std::string name) {
    accounts_.push_back({.name = name, .names = {name}});
    return static_cast<int>(accounts_.size()) - 1;
}

void World::add(Work work) {
    std::vector<std::string>& names = accounts_[static_cast<std::size_t>(work.owner)].names;
    const auto note = [&names](const std::vector<Program>& programs) {
        for (const Program& program : programs)
            if (program.kind != "kernel" && std::find(names.begin(), names.end(), program.name) == names.end())
                names.push_back(program.name);
    };
    note(work.programs);
    if (work.spawning)
        note(work.spawning->programs);
    running_.push_back({.work = std::move(work)});
}

Work* World::find(const std::string& program) {
    for (Running& running : running_)
        if (!running.work.programs.empty() && running.work.programs.front().name == program)
            return &running.work;
    return nullptr;
}

void World::begin(Running& running, std::size_t index) {
    running.isBegun = true;
    for (const Program& program : running.work.programs)
        running.staying.push_back({.pid = nextPid(), .work = index, .program = program});
    if (!running.work.spawning)
        return;
    running.passing.resize(static_cast<std::size_t>(running.work.spawning->atOnce));
    running.needs.resize(running.passing.size());
    for (std::size_t slot = 0; slot < running.passing.size(); ++slot)
        startChild(running, index, slot);
}

void World::startChild(Running& running, std::size_t index, std::size_t slot) {
    const Spawning& spawning = *running.work.spawning;
    running.passing[slot] = {.pid = nextPid(), .work = index, .program = random_.of(spawning.programs)};
    running.needs[slot] = std::max(0.002, random_.around(spawning.cpuSeconds, spawning.spread));
}

/// What a process had used since it was last shown is owed to its job's leader.
void World::finish(Running& running) {
    if (running.isLeaderGone || !running.isBegun)
        return;
    for (const std::vector<Process>* list : {&running.staying, &running.passing})
        for (const Process& process : *list)
            running.owed += process.used - process.shown;
    running.leader = running.staying.front();
    running.isLeaderGone = true;
    running.staying.clear();
    running.passing.clear();
}

/// Every work gets what it wants, or, when that is more than there is, its fair part by weight.
void World::share(double now) {
    std::vector<double> wanted(running_.size(), 0);
    for (std::size_t i = 0; i < running_.size(); ++i) {
        Running& running = running_[i];
        const Work& work = running.work;
        running.granted = running.graphics = running.video = 0;
        if (now >= work.ends) {
            finish(running);
            continue;
        }
        if (now < work.starts)
            continue;
        if (!running.isBegun)
            begin(running, i);
        const double mood = std::exp(work.wander * running.wander);
        wanted[i] = std::max(0.0, at(work.cores, now) * mood);
        if (work.isPause)
            wanted[i] *= std::clamp((die_ - surroundings_.slowsAt) / 4 + 1, 0.0, 1.0);
        if (work.isOnEfficiencyCores)
            wanted[i] = std::min(wanted[i], static_cast<double>(machine_.efficiencyCores));
        if (work.spawning)
            wanted[i] = std::min(wanted[i], static_cast<double>(work.spawning->atOnce) + 0.2);
        running.graphics = std::clamp(at(work.graphics, now) * (1 + 0.03 * running.wander), 0.0, 1.0);
        running.video = std::clamp(at(work.video, now) * (1 + 0.03 * running.wander), 0.0, 1.0);
    }
    double left = machine_.cores();
    queue_ = std::accumulate(wanted.begin(), wanted.end(), 0.0);
    for (int round = 0; round < 8 && left > 1e-6; ++round) {
        double weights = 0;
        for (std::size_t i = 0; i < running_.size(); ++i)
            if (running_[i].granted < wanted[i])
                weights += running_[i].work.weight * wanted[i];
        if (weights <= 0)
            break;
        const double portion = left / weights;
        for (std::size_t i = 0; i < running_.size(); ++i) {
            Running& running = running_[i];
            const double more = std::min(wanted[i] - running.granted, portion * running.work.weight * wanted[i]);
            if (more <= 0)
                continue;
            running.granted += more;
            left -= more;
        }
    }
    double graphics = 0;
    double video = 0;
    for (const Running& running : running_) {
        graphics += running.graphics;
        video += running.video;
    }
    for (Running& running : running_) {
        running.graphics /= std::max(1.0, graphics);
        running.video /= std::max(1.0, video);
    }
    graphicsBusy_ = std::max(std::min(1.0, graphics), std::min(1.0, video));
}

/// A processor that works alone runs faster, and draws more, than one among many.
double World::speedFactor() const {
    const double busy = (busyPerformance_ + busyEfficiency_) / machine_.cores();
    return (1.35 - 0.5 * std::min(1.0, busy)) * slowing_;
}

void World::spend(double now, double seconds) {
    double onEfficiency = 0;
    double anywhere = 0;
    for (const Running& running : running_)
        (running.work.isOnEfficiencyCores ? onEfficiency : anywhere) += running.granted;
    const double onPerformance = std::min(anywhere, static_cast<double>(machine_.performanceCores));
    const double performancePart = anywhere > 0 ? onPerformance / anywhere : 0;
    busyPerformance_ = onPerformance;
    busyEfficiency_ = onEfficiency + anywhere - onPerformance;
    const double factor = speedFactor();
    const auto second = static_cast<std::size_t>(now);
    double watts = 0;
    double graphicsWatts = 0.15 + (machine_.kind == MachineKind::twoFans && !machine_.isMac ? 1.5 : 0);
    for (std::size_t i = 0; i < running_.size(); ++i) {
        Running& running = running_[i];
        Work& work = running.work;
        Account& account = accounts_[static_cast<std::size_t>(work.owner)];
        if (running.isBegun && std::fmod(now + 1e-9, 0.5) < tickSeconds)
            running.wander = 0.85 * running.wander + 0.53 * random_.normal();
        const double used = running.granted * seconds;
        const double core = work.isOnEfficiencyCores ? machine_.efficiencyWatts
                                                     : performancePart * machine_.performanceWatts +
                                                           (1 - performancePart) * machine_.efficiencyWatts;
        const double itsWatts = work.isPause ? 0 : running.granted * core * factor * work.intensity;
        const double itsGraphics = running.graphics * machine_.graphicsWatts + running.video * 2.2;
        watts += itsWatts;
        graphicsWatts += itsGraphics;
        account.joules.resize(std::max(account.joules.size(), second + 1), 0);
        account.joules[second] += (itsWatts + itsGraphics) * seconds;
        account.processorSeconds.resize(sampleTimes_.size() + 1, 0);
        account.processorSeconds.back() += work.isPause ? 0 : used;
        systemSeconds_ += used * work.systemShare;
        userSeconds_ += used * (1 - work.systemShare);
        if (used <= 0 || running.staying.empty())
            continue;
        double rest = used;
        if (work.spawning) {
            const double leads = used * work.spawning->leaderShare;
            running.staying.front().used += leads;
            rest -= leads;
            const double each = rest / static_cast<double>(running.passing.size());
            for (std::size_t slot = 0; slot < running.passing.size(); ++slot) {
                double share = each;
                while (share >= running.needs[slot]) {
                    Process& child = running.passing[slot];
                    share -= running.needs[slot];
                    child.used += running.needs[slot];
                    running.owed += child.used - child.shown;
                    startChild(running, i, slot);
                }
                running.passing[slot].used += share;
                running.needs[slot] -= share;
            }
            continue;
        }
        double parts = 0;
        for (std::size_t j = 0; j < running.staying.size(); ++j)
            parts += j < work.parts.size() ? work.parts[j] : 1;
        for (std::size_t j = 0; j < running.staying.size(); ++j)
            running.staying[j].used += rest * (j < work.parts.size() ? work.parts[j] : 1) / parts;
    }
    const double interrupts = 0.004 * machine_.cores() + 0.01 * (busyPerformance_ + busyEfficiency_);
    systemSeconds_ += interrupts * seconds;
    performanceSeconds_ += busyPerformance_ * seconds;
    efficiencySeconds_ += busyEfficiency_ * seconds;
    graphicsSeconds_ += graphicsBusy_ * seconds;
    // Leakage grows with the heat.
    watts += 0.04 * machine_.cores() * std::exp((die_ - 50) / 45) + 0.3;
    processorJoules_ += watts * seconds;
    graphicsJoules_ += graphicsWatts * seconds;
    heat(now, seconds, watts, graphicsWatts);
}

double World::conductance() const {
    return (machine_.sinkBare + machine_.sinkByFans * std::pow(fanShare_, 0.8)) * ventilation_;
}

/// Two masses: the die, and the sink that the fans or the case cool. The fans follow the die's heat with hysteresis.
void World::heat(double now, double seconds, double watts, double graphicsWatts) {
    const double air = machine_.ambient + at(surroundings_.ambientRise, now);
    const double foreign = at(surroundings_.heatWatts, now);
    ventilation_ = at(surroundings_.ventilation, now, 1);
    const double kept = (conductance() / std::max(ventilation_, 0.01) - conductance()) * std::max(0.0, sink_ - air);
    const auto second = static_cast<std::size_t>(std::max(0.0, now));
    foreignJoules_.resize(std::max(foreignJoules_.size(), second + 1), 0);
    foreignJoules_[second] += (foreign + kept + at(surroundings_.ambientRise, now) * machine_.sinkBare) * seconds;
    const double flow = (die_ - sink_) / machine_.dieToSink;
    die_ += (watts + 0.85 * graphicsWatts - flow) / machine_.dieCapacity * seconds;
    sink_ += (flow + 0.15 * graphicsWatts + 0.3 * machine_.restWatts + foreign - (sink_ - air) * conductance()) /
             machine_.sinkCapacity * seconds;
    if (die_ > surroundings_.slowsAt)
        slowing_ = std::max(0.35, slowing_ - 0.04 * seconds * (die_ - surroundings_.slowsAt));
    else
        slowing_ = std::min(1.0, slowing_ + 0.02 * seconds);
    const double pull = std::clamp((die_ - machine_.fansBegin) / (machine_.fansFull - machine_.fansBegin), 0.0, 1.0);
    if (die_ > fanTargetFrom_ + 1.5 || die_ < fanTargetFrom_ - 4) {
        fanTarget_ = pull;
        fanTargetFrom_ = die_;
    }
    const double change = fanTarget_ - fanShare_;
    fanShare_ += std::clamp(change, -0.025 * seconds, 0.06 * seconds);
}

/// As the machine stood after a long while of what runs at the beginning.
void World::settle() {
    share(0);
    double watts = 0.04 * machine_.cores() * 0.7 + 0.3;
    double graphicsWatts = 0.3;
    for (const Running& running : running_) {
        const bool isSmall = running.work.isOnEfficiencyCores || machine_.performanceCores == 0;
        watts += running.granted * 1.3 * (isSmall ? machine_.efficiencyWatts : machine_.performanceWatts);
        graphicsWatts += running.graphics * machine_.graphicsWatts;
    }
    for (int i = 0; i < 6000; ++i)
        heat(0, 0.5, watts, graphicsWatts);
    foreignJoules_.clear();
    chipHeat_ = die_;
}

void World::live(double seconds, double opened) {
    settle();
    lines_.push_back(header());
    const auto ticks = static_cast<long>(std::lround(seconds / tickSeconds));
    double nextSample = samplingSeconds;
    for (long tick = 0; tick < ticks; ++tick) {
        const double now = static_cast<double>(tick) * tickSeconds;
        share(now);
        spend(now, tickSeconds);
        loadAverage_ += (queue_ - loadAverage_) * tickSeconds / 60;
        if (now + tickSeconds >= nextSample) {
            sample(now + tickSeconds, now >= opened);
            nextSample += samplingSeconds + random_.uniform(-0.03, 0.03);
        }
    }
    for (Account& account : accounts_) {
        account.joules.resize(foreignJoules_.size(), 0);
        account.processorSeconds.resize(sampleTimes_.size(), 0);
    }
}

bool World::isNoticed() const {
    if (machine_.kind == MachineKind::twoFans)
        return fanShare_ >= 0.25;
    if (machine_.kind == MachineKind::fanless)
        return chipHeat_ >= 68;
    const std::size_t count = std::min<std::size_t>(5, recentBusy_.size());
    const double busy = std::accumulate(recentBusy_.end() - static_cast<std::ptrdiff_t>(count), recentBusy_.end(), 0.0);
    return count > 0 && (busy / static_cast<double>(count) >= 0.25 || graphicsBusy_ >= 0.25);
}

} // namespace culprit
