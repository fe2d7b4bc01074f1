#include "Platform/Linux/Proc/ProcJobs.h"

#include "Platform/Linux/Proc/ProgramSubject.h"

#include <algorithm>
#include <memory>

namespace vantoro {

namespace {

/// After how many readings the origin is asked for again: at first, then, and at most.
constexpr std::uint64_t soon = 2;
constexpr std::uint64_t later = 8;
constexpr std::uint64_t latest = 16;
constexpr int mostAncestors = 64;
constexpr std::size_t mostNames = 1024;
constexpr std::uint64_t roundsRemembered = 64;
constexpr std::size_t mostCommandLineBytes = 65'536; // a class path can be long

std::uint64_t workOf(const ScannedProcess& process) {
    return process.totalTicks() + process.childTicks;
}

/// Sessions hold whole desktops: there a process group says little.
bool isInSession(const std::string& controlGroup) {
    return controlGroup.find("/session-") != std::string::npos;
}

std::string programName(const std::string& path, const std::string& name) {
    return path.empty() ? name : std::string(baseName(path));
}

} // namespace

ScannedProcess::Told& ProcJobs::told(ScannedProcess& process) {
    if (!process.told_)
        process.told_ = std::make_unique<ScannedProcess::Told>();
    return *process.told_;
}

const ProcessOrigin& ProcJobs::origin(ScannedProcess& process) {
    ScannedProcess::Told& told = this->told(process);
    const bool isNew = told.next == 0;
    if (!isNew && (process.readings < told.next || process.isKernelThread() || process.ended))
        return told.origin;
    told.next = process.readings + (isNew ? soon : std::clamp(process.readings, later, latest));
    if (process.isKernelThread()) {
        told.origin.path = "[" + process.name + "]";
        return told.origin;
    }
    told.origin.path = scan_.path(process);
    if (told.origin.path.empty())
        told.origin.path.append("(").append(process.name).append(")");
    if (!process.ended) {
        told.origin.subject = readSubject(process);
        controlGroup(process);
        askAncestors(process);
    }
    return told.origin;
}

const std::string& ProcJobs::controlGroup(ScannedProcess& process) {
    ScannedProcess::Told& told = this->told(process);
    if (process.readings >= told.nextGroup) {
        told.nextGroup = process.readings + (told.nextGroup == 0 ? soon : std::clamp(process.readings, later, latest));
        constexpr std::size_t mostBytes = 16'384;
        // One that has ended keeps the group that it was last seen in.
        if (const auto text = scan_.readFile(process, "cgroup", mostBytes))
            told.origin.controlGroup = parseControlGroup(*text);
        else if (ScannedProcess* const parent = told.origin.controlGroup.empty() ? scan_.parentOf(process) : nullptr)
            // One that ended before it was asked was most likely where its parent is.
            if (const auto parents = scan_.readFile(*parent, "cgroup", mostBytes))
                told.origin.controlGroup = parseControlGroup(*parents);
    }
    return told.origin.controlGroup;
}

std::string ProcJobs::readSubject(ScannedProcess& process) {
    const std::string& executable = scan_.path(process);
    const std::string program = programName(executable, process.name);
    constexpr int mostGenerations = 4;
    std::string subject;
    ScannedProcess* each = hasSubject(program) ? &process : nullptr;
    for (int generation = 0; generation < mostGenerations && each != nullptr && subject.empty(); ++generation) {
        if (const auto text = scan_.readFile(*each, "cmdline", mostCommandLineBytes))
            subject = subjectOf(program, *text);
        // A script's workers are started with code of the interpreter's own.
        each = isShell(program) || executable.empty() ? nullptr : scan_.parentOf(*each);
        if (each != nullptr && scan_.path(*each) != executable)
            each = nullptr;
    }
    return subject;
}

void ProcJobs::askAncestors(ScannedProcess& process) {
    ProcessOrigin& origin = told(process).origin;
    using enum ProcessOrigin::Shell;
    origin.shell = none;
    const bool isInPodman = origin.controlGroup.find("libpod-") != std::string::npos;
    bool isInside = true;
    ScannedProcess* each = &process;
    for (int generation = 0; generation < mostAncestors && each != nullptr && (isInside || isInPodman); ++generation) {
        ScannedProcess* const parent = scan_.parentOf(*each);
        const bool parentIsInside = parent != nullptr && controlGroup(*parent) == origin.controlGroup;
        if (isInside && roleOf(*each) == Role::shell && origin.shell != inner)
            origin.shell = !takesCommands(*each) ? script : parentIsInside ? inner : first;
        isInside = isInside && parentIsInside;
        // Podman's monitor was started with the container's name.
        if (isInPodman && each != &process && each->name == "conmon") {
            origin.container = readSubject(*each);
            break;
        }
        each = parent;
    }
    const Job job = jobOf(process);
    using enum Job::Above;
    const bool hasJob = job.top != nullptr && (job.above != unknown || !isInSession(origin.controlGroup));
    origin.job = hasJob ? nameOf(job) : std::string();
    if (job.hasGap && (job.above == shell || job.above == formerShell) &&
        (origin.shell == none || origin.shell == script))
        origin.shell = first;
}

ProcJobs::Role ProcJobs::roleOf(ScannedProcess& process) {
    Role& role = told(process).role;
    if (role == Role::unknown)
        role = isShell(process.name) ? Role::shell : isDoor(process.name) ? Role::door : Role::program;
    return role;
}

bool ProcJobs::takesCommands(ScannedProcess& process) {
    if (roleOf(process) != Role::shell)
        return false;
    std::optional<bool>& known = told(process).takesCommands;
    if (!known) {
        const auto text = scan_.readFile(process, "cmdline", mostCommandLineBytes);
        known = !text || vantoro::takesCommands(*text);
    }
    return *known;
}

/// One that lives and was read.
ScannedProcess* ProcJobs::livingAt(std::int32_t pid) {
    ScannedProcess* const process = pid > 0 ? scan_.find(pid) : nullptr;
    return process != nullptr && process->readings != 0 ? process : nullptr;
}

ProcJobs::Job ProcJobs::jobOf(ScannedProcess& process) {
    using enum Job::Above;
    if (process.isKernelThread() || roleOf(process) == Role::door)
        return {};
    Job job{.top = &process};
    ScannedProcess* topOfGroup = &process;
    for (int generation = 0; generation < mostAncestors; ++generation) {
        ScannedProcess& top = *job.top;
        ScannedProcess* parent = scan_.parentOf(top);
        // Sessions are inherited, and left only by beginning one's own: this is a parent by adoption.
        if (parent == nullptr || (parent->sessionPid != top.sessionPid && top.sessionPid != top.pid)) {
            ScannedProcess* const leader = livingAt(top.groupPid);
            ScannedProcess* const sessionLeader = livingAt(top.sessionPid);
            const bool isLed = leader != nullptr && leader != &top && leader->groupPid == leader->pid &&
                               roleOf(*leader) != Role::door && generation < mostAncestors / 2;
            job.hasGap = job.hasGap || parent != nullptr || top.parentPid == 1;
            if (isLed) {
                job.top = leader;
                topOfGroup = leader->groupPid == process.groupPid ? leader : topOfGroup;
                continue;
            }
            parent = sessionLeader != &top ? sessionLeader : nullptr;
            if (parent == nullptr) {
                if (top.sessionPid == 0 || top.groupPid == top.sessionPid)
                    break;
                // Only a shell that manages jobs divides its session into groups.
                job.above = formerShell;
                return job;
            }
        }
        if (roleOf(*parent) == Role::door) {
            job.above = door;
            return job;
        }
        if (parent->groupPid != top.groupPid && takesCommands(*parent)) {
            job.above = shell;
            return job;
        }
        if (top.pid == top.groupPid && takesCommands(top))
            return job;
        job.top = parent;
        topOfGroup = parent->groupPid == process.groupPid ? parent : topOfGroup;
    }
    return {.top = topOfGroup};
}

/// Whether it is there for somebody else's sake: a wrapper, the shell of a command line, or a shell that a shell split
/// off without starting anything.
bool ProcJobs::onlyRunsOthers(ScannedProcess& process) {
    if (!isShell(process.name))
        return isWrapper(process.name);
    const auto text = scan_.readFile(process, "cmdline", mostCommandLineBytes);
    if (!text || subjectOf(process.name, *text).empty())
        return true;
    ScannedProcess* const parent = scan_.parentOf(process);
    return parent != nullptr && parent->name == process.name &&
           scan_.readFile(*parent, "cmdline", mostCommandLineBytes) == text;
}

/// Who does what a process is there for: itself, or the one that it runs.
ScannedProcess& ProcJobs::doerOf(ScannedProcess& process) {
    constexpr int mostWrappers = 8;
    ScannedProcess* doer = &process;
    for (int depth = 0; depth < mostWrappers && onlyRunsOthers(*doer); ++depth) {
        // A shell's jobs are their own.
        const bool inGroupOnly = isShell(doer->name);
        ScannedProcess* busiest = nullptr;
        const auto lookAmong = [&](std::span<ScannedProcess> processes) {
            for (ScannedProcess& child : processes)
                if (child.parentPid == doer->pid && child.readings != 0 && child.pid != doer->pid &&
                    (!inGroupOnly || child.groupPid == doer->groupPid) &&
                    (busiest == nullptr || workOf(child) > workOf(*busiest)))
                    busiest = &child;
        };
        lookAmong(scan_.processesFrom(doer->pid));
        // Pids begin anew some day.
        if (busiest == nullptr && !inGroupOnly)
            lookAmong(scan_.processes());
        if (busiest == nullptr)
            break;
        doer = busiest;
    }
    return *doer;
}

ScannedProcess& ProcJobs::namesakeOf(const Job& job, bool isGroup) {
    ScannedProcess* best = nullptr;
    // The members of a pipeline are siblings.
    if (isGroup)
        for (ScannedProcess& member : scan_.processesFrom(job.top->groupPid))
            if (member.groupPid == job.top->groupPid && member.parentPid == job.top->parentPid && member.readings != 0)
                if (ScannedProcess& doer = doerOf(member); best == nullptr || workOf(doer) > workOf(*best))
                    best = &doer;
    return best != nullptr ? *best : doerOf(*job.top);
}

const std::string& ProcJobs::nameOf(const Job& job) {
    // A new namesake has worked twice as much, and some time more.
    constexpr std::uint64_t moreTicks = 200;
    ScannedProcess& top = *job.top;
    const ScannedProcess* const parent = scan_.parentOf(top);
    const bool isGroup = top.groupPid > 0 && (parent == nullptr || parent->groupPid != top.groupPid);
    const std::int32_t key = isGroup ? top.groupPid : top.pid;
    const ScannedProcess* const leader = livingAt(key);

    const std::uint64_t now = scan_.rounds();
    if (names_.size() >= mostNames)
        std::erase_if(names_, [now](const auto& each) { return each.second.lastRound + roundsRemembered < now; });
    Name& name = names_[key];
    if (leader != nullptr && name.leaderStart != leader->startTicks)
        name = {.leaderStart = leader->startTicks};
    name.lastRound = now;
    if (now < name.next || (leader == nullptr && !name.isPreliminary))
        return name.text;
    name.next = now + (name.next == 0 ? soon : later);

    ScannedProcess& doer = namesakeOf(job, isGroup);
    const bool isSame = doer.pid == name.namesake;
    // One that only waits for another is a name for as long as there is no better one.
    const bool isPreliminary = isShell(doer.name) || isWrapper(doer.name);
    const bool isBetter = name.isPreliminary || (!isPreliminary && workOf(doer) > 2 * name.work + moreTicks);
    if (name.text.empty() || isSame || isBetter) {
        const std::string& path = scan_.path(doer);
        name.text = nameOfWork(path, readSubject(doer)).value_or(programName(path, doer.name));
        name.namesake = doer.pid;
        name.work = workOf(doer);
        name.isPreliminary = isPreliminary;
    }
    return name.text;
}

std::vector<ProcJobs::Unseen> ProcJobs::unseenWork() {
    std::vector<Unseen> unseen;
    for (const ReapedWork::Credit& credit : scan_.settle())
        if (ScannedProcess* const row = rowOf(credit)) {
            const auto known = std::ranges::find(unseen, row, &Unseen::process);
            if (known != unseen.end())
                known->ticks += credit.ticks;
            else
                unseen.push_back({row, credit.ticks});
        }
    return unseen;
}

ScannedProcess* ProcJobs::rowOf(const ReapedWork::Credit& credit) {
    ScannedProcess* const reaper = livingAt(credit.reaperPid);
    if (reaper == nullptr)
        return nullptr;
    ScannedProcess* const member = credit.endedPid != 0 ? scan_.findEnded(credit.endedPid) : nullptr;
    const Job job = jobOf(*reaper);
    const bool hasJobsOfItsOwn = job.top == reaper && takesCommands(*reaper);
    if (job.above != Job::Above::unknown && !hasJobsOfItsOwn)
        return job.top;
    if (member == nullptr)
        return job.top != nullptr && !isInSession(controlGroup(*reaper)) ? job.top : reaper;
    ScannedProcess* leader = livingAt(member->groupPid);
    if (leader != nullptr && leader->groupPid == leader->pid)
        return leader;
    // Nobody can be asked any more whose it was.
    leader = scan_.findEnded(member->groupPid);
    return leader != nullptr && leader->uid ? leader : member->uid ? member : reaper;
}

} // namespace vantoro
