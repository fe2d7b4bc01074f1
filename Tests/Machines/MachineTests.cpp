// The program on other machines' trees: what --dump, --check and --explain say of each, idle and busy. A program in the
// place of the process list prints the one and the other. What must and must not be said of a machine stand in the
// `expect` lines of its fixture (Tests/Fixtures/README.md). VANTORO_MACHINE=NAME looks at one alone and prints it all.
#include "Machines/ExpectedMachine.h"
#include "Model/Recording/RecordingFile.h"
#include "Support/ChildProgram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <sys/inotify.h>

namespace vantoro::testing {
namespace {

constexpr std::string_view processList = R"(#!/bin/sh
[ "$1" = --paths ] && exec echo "4194303 /opt/burner/burner"
left=$2
while :; do
    echo "Processes: 2 total, 1 running, 1 sleeping, 4 threads
Load Avg: 2.00, 2.00, 2.00
CPU usage: $BUSY% user, 0.00% sys, $IDLE% idle
PhysMem: 4000000K used (1000000K wired, 0K compressor), 12000000K unused.
VM: 0(0) swapins, 0(0) swapouts.

PID     COMMAND          %CPU     MEM          POWER USER
4194303 burner           $SHARE 20068K       0.0   root
1       init             0.0      20068K       0.0   root"
    left=$((left - 1))
    [ $left = 0 ] && exit
    [ $left -gt 0 ] || sleep 0.2
done
)";

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// What stands between "|".
Words split(const std::string& text) {
    Words parts;
    std::istringstream rest(text);
    for (std::string part; std::getline(rest, part, '|');)
        parts.push_back(part);
    return parts;
}

/// The texts of a report, without the names of its fields.
std::string textsOf(std::string_view json) {
    std::string texts;
    for (std::size_t at = json.find('"'); at != std::string_view::npos; at = json.find('"', at)) {
        std::size_t end = at + 1;
        while (end < json.size() && json[end] != '"')
            end += json[end] == '\\' ? 2 : 1;
        if (end + 1 < json.size() && json[end + 1] != ':')
            texts += std::string(json.substr(at + 1, end - at - 1)) + '\n';
        at = end + 1;
    }
    return texts;
}

std::string fieldOf(std::string_view json, std::string_view name) {
    const std::string before = "\"" + std::string(name) + "\":\"";
    const std::size_t start = json.find(before, json.find("\"verdict\":{"));
    return start == std::string_view::npos
               ? ""
               : std::string(
                     json.substr(start + before.size(), json.find('"', start + before.size()) - start - before.size()));
}

/// What this computer's own processes are called is no saying of ours.
std::string withoutBusiest(std::string text) {
    const std::size_t start = text.find("  Busiest of yours right now:");
    return start == std::string::npos ? text : text.erase(start, text.find("\n\n", start) - start);
}

/// Tells which of a folder's files were read, but for what a driver knows by heart.
class Watch {
public:
    explicit Watch(const std::string& folder) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        EXPECT_GE(::inotify_add_watch(events_, folder.c_str(), IN_ACCESS), 0) << folder;
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() { ::close(events_); }

    std::string read() const {
        std::string names;
        alignas(inotify_event) std::array<char, 65536> room{};
        for (ssize_t size = 0; (size = ::read(events_, room.data(), room.size())) > 0;)
            for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
                const auto* const event = reinterpret_cast<const inotify_event*>(&room.at(at));
                const std::string_view name = event->len > 0 ? event->name : "";
                if (!name.empty() && name != "name" && !name.ends_with("_label") && !contains(names, name))
                    names += " " + std::string(name);
                at += sizeof(inotify_event) + event->len;
            }
        return names;
    }

private:
    int events_;
};

/// A machine's tree and its process list.
class Running {
public:
    Running(const ExpectedMachine& machine, bool isBusy) : machine_(&machine), isBusy_(isBusy) {
        const std::string unpack = VANTORO_UNPACK " " VANTORO_FIXTURES "/linux-machines/" + machine.name + ".txt " +
                                   folder_.path() + "/root" + (isBusy ? " busy" : "");
        EXPECT_EQ(std::system(unpack.c_str()), 0);
        folder_.write("list", processList);
        std::filesystem::permissions(folder_.path() + "/list", std::filesystem::perms::owner_all);
    }

    std::unique_ptr<ChildProgram> start(const Words& arguments) const {
        const double share =
            isBusy_ ? 100.0 * (machine_->processors.performance + machine_->processors.efficiency) : 0.1;
        Words command = {"/usr/bin/env",
                         "-u",
                         "VANTORO_PROCESS_MODE",
                         "HOME=" + folder_.path(),
                         "XDG_CONFIG_HOME=" + folder_.path(),
                         "XDG_DATA_HOME=" + folder_.path(),
                         "XDG_STATE_HOME=" + folder_.path(),
                         "LANG=C.UTF-8",
                         "VANTORO_SYSFS_ROOT=" + folder_.path() + "/root",
                         "VANTORO_TOP=" + folder_.path() + "/list",
                         "VANTORO_INTERVAL=0.25",
                         isBusy_ ? "BUSY=100.00" : "BUSY=1.00",
                         isBusy_ ? "IDLE=0.00" : "IDLE=99.00",
                         fmt::format("SHARE={:<8.1f}", share),
                         VANTORO_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return std::make_unique<ChildProgram>(std::move(command));
    }

    std::string path(const std::string& name) const { return folder_.path() + "/root/" + name; }
    std::string recording() const { return folder_.path() + "/recording.jsonl"; }

private:
    TemporaryFolder folder_;
    const ExpectedMachine* machine_;
    bool isBusy_;
};

/// What was said wrongly, with whom it was said of.
class Faults {
public:
    void speakOf(const std::string& machine, const std::string& when) { about_ = machine + ", " + when + ": "; }

    void expect(bool isTrue, const std::string& otherwise) {
        if (!isTrue)
            list_ += "  " + about_ + otherwise + "\n";
    }

    void expectWithin(std::string_view what, Range range, double got) {
        constexpr double tolerance = 0.01;
        expect(got >= range.least - tolerance && got <= range.most + tolerance,
               fmt::format("{} is {:.4g}, not {:.4g} to {:.4g}", what, got, range.least, range.most));
    }

    void expectNowhere(std::string_view texts, const Words& words) {
        for (const std::string& word : words)
            if (const std::size_t at = texts.find(word); at != std::string_view::npos) {
                const std::size_t start = at == 0 ? 0 : texts.rfind('\n', at - 1) + 1;
                std::string line(texts.substr(start, texts.find('\n', at + word.size()) - start));
                std::ranges::replace(line, '\n', ' ');
                expect(false, "says \"" + line.substr(0, 200) + "\"");
            }
    }

    const std::string& list() const { return list_; }

private:
    std::string about_;
    std::string list_;
};

std::string finished(const std::unique_ptr<ChildProgram>& program, Faults& faults) {
    const int status = program->wait();
    faults.expect(status == 0 && program->errors().empty(),
                  fmt::format("ends with {} and {}", status, program->errors()));
    return program->output();
}

void expectFans(const ExpectedMachine& machine, const Snapshot& snapshot, bool isBusy, Faults& faults) {
    const auto isLike = [](const ExpectedFan& expected, const FanReading& fan) {
        return std::abs(fan.rpm - expected.rpm) < 1 && std::abs(fan.minRPM - expected.minRPM) < 1 &&
               std::abs(fan.maxRPM - expected.maxRPM) < 1;
    };
    std::string all;
    for (const FanReading& fan : snapshot.fans) {
        faults.expect((fan.maxRPM == 0 || snapshot.cooling == Cooling::fans) && fan.rpm < 30000,
                      fmt::format("a fan at {} rpm reaches {}", fan.rpm, fan.maxRPM));
        all += fmt::format(" {}/{}-{}", fan.rpm, fan.minRPM, fan.maxRPM);
    }
    for (const ExpectedFan& expected : isBusy ? std::vector<ExpectedFan>() : machine.fans)
        faults.expect(std::ranges::any_of(snapshot.fans, [&](const FanReading& fan) { return isLike(expected, fan); }),
                      fmt::format("no fan at {}/{}-{} rpm but{}", expected.rpm, expected.minRPM, expected.maxRPM, all));
}

void expectFigures(const ExpectedMachine& machine, const std::string& recording, bool isBusy, Faults& faults) {
    std::optional<Snapshot> last;
    const RecordingResult result = readRecording(recording, [&last](Snapshot&& each) { last = std::move(each); });
    if (result.error || !last)
        return faults.expect(false, "a recording that is none");
    faults.expect(machine.called.empty() || result.header.machine == machine.called,
                  "it is called " + result.header.machine);
    const RecordedProcessors processors = result.header.processors.value_or(RecordedProcessors());
    faults.expect(processors == machine.processors,
                  fmt::format("{} large and {} small processors", processors.performance, processors.efficiency));
    faults.expect(machine.hasCooling(last->cooling),
                  fmt::format("cooling is {}", ExpectedMachine::coolings.at(static_cast<std::size_t>(last->cooling))));
    const std::pair<const char*, double> figures[] = {{isBusy ? "busy-chip" : "chip", last->temps.soc},
                                                      {"enclosure", last->temps.enclosure},
                                                      {isBusy ? "" : "graphics", last->temps.gpu},
                                                      {"battery", last->temps.battery},
                                                      {"system-watts", last->power.systemWatts},
                                                      {"adapter-watts", last->power.adapterWatts},
                                                      {"processor-watts", last->power.cpuWatts.value_or(0)}};
    for (const auto& [name, figure] : figures)
        if (const std::optional<Range> range = machine.figure(name))
            faults.expectWithin(name, *range, figure);
    expectFans(machine, *last, isBusy, faults);
    const std::vector<CoreReading> cores = last->cores.value_or(std::vector<CoreReading>());
    const auto differs = [](int expected, const CoreReading& core) { return std::abs(core.megahertz - expected) > 1; };
    const auto [clock, core] = std::ranges::mismatch(machine.megahertz, cores, std::not_fn(differs));
    if (clock != machine.megahertz.end())
        faults.expect(false, fmt::format("core {} of {} runs at {} MHz, not {}", clock - machine.megahertz.begin(),
                                         cores.size(), core == cores.end() ? 0 : core->megahertz, *clock));
}

void expectVerdict(const std::string& json, bool isBusy, Faults& faults) {
    const std::string state = fieldOf(json, "state");
    const std::string texts = textsOf(json);
    if (isBusy) {
        faults.expect(state != "idle", "is told to be at rest: " + fieldOf(json, "headline"));
        faults.expect(contains(texts, "burner"), "nobody is named");
        faults.expectNowhere(
            texts, {"All quiet", "is idling", "is idle", "Nothing needs doing", "machine is cool", "\nSilent\n"});
    } else {
        faults.expect(state == "idle" || state == "light", "is told to be at work: " + fieldOf(json, "headline"));
        faults.expectNowhere(texts, {"oaring", "lat out", "because of", "\nHot\n"});
    }
    const std::string cooling = fieldOf(json, "cooling");
    if (cooling != "passive")
        faults.expectNowhere(texts, {"no fans", "No fans", "anless", "without fans"});
    if (cooling == "load")
        faults.expectNowhere(texts, {"heat", " fan", "Fan", "airflow", "floor", " vent", "warm", "hot ", "cool"});
    if (cooling == "heat")
        faults.expectNowhere(texts, {"ceiling", "floor", "of its range"});
    faults.expectNowhere(texts, {"\n0 W\n"});
}

struct Machine {
    explicit Machine(ExpectedMachine machine)
        : expected(std::move(machine)), idle(expected, false), busy(expected, true) {
        if (!expected.asleep.empty())
            watch.emplace(idle.path(expected.asleep));
        check = idle.start({"--check"});
    }

    ExpectedMachine expected;
    Running idle;
    Running busy;
    std::optional<Watch> watch;
    std::unique_ptr<ChildProgram> check;
};

/// What a handful of machines is said to be, beside the faults that are found at once.
std::vector<std::string> runAndExplain(const std::vector<std::unique_ptr<Machine>>& runs, Faults& faults) {
    std::vector<std::vector<std::unique_ptr<ChildProgram>>> programs(runs.size());
    for (std::size_t at = 0; at < runs.size(); ++at) {
        programs[at].push_back(runs[at]->idle.start({"--dump"}));
        for (const Running* each : {&runs[at]->idle, &runs[at]->busy}) {
            programs[at].push_back(each->start({"--explain", "--seconds", "0.8", "--json"}));
            programs[at].push_back(each->start({"--record", each->recording(), "--seconds", "0.8"}));
        }
    }
    std::vector<std::string> said;
    for (std::size_t at = 0; at < runs.size(); ++at) {
        const ExpectedMachine& machine = runs[at]->expected;
        faults.speakOf(machine.name, "dumped");
        said.push_back(finished(programs[at][0], faults));
        for (const bool isBusy : {false, true}) {
            faults.speakOf(machine.name, isBusy ? "busy" : "idle");
            const std::string json = finished(programs[at][isBusy ? 3 : 1], faults);
            finished(programs[at][isBusy ? 4 : 2], faults);
            expectVerdict(json, isBusy, faults);
            expectFigures(machine, (isBusy ? runs[at]->busy : runs[at]->idle).recording(), isBusy, faults);
            said.back() += textsOf(json);
        }
    }
    return said;
}

TEST(Machines, AreToldTruly) {
    const char* const only = std::getenv("VANTORO_MACHINE");
    // The check takes its seconds, most of them asleep: some at once, and the others meanwhile in handfuls.
    constexpr std::size_t handful = 4;
    Faults faults;
    std::vector<std::vector<std::unique_ptr<Machine>>> handfuls;
    std::set<std::filesystem::path> fixtures;
    for (const auto& entry : std::filesystem::directory_iterator(VANTORO_FIXTURES "/linux-machines"))
        if (only == nullptr || entry.path().stem() == only)
            fixtures.insert(entry);
    EXPECT_FALSE(fixtures.empty()) << only << " has no fixture";
    for (const std::filesystem::path& fixture : fixtures) {
        if (handfuls.empty() || handfuls.back().size() == handful)
            handfuls.emplace_back();
        handfuls.back().push_back(std::make_unique<Machine>(ExpectedMachine(fixture)));
    }
    for (const auto& runs : handfuls) {
        const std::vector<std::string> said = runAndExplain(runs, faults);
        for (std::size_t at = 0; at < runs.size(); ++at) {
            const ExpectedMachine& machine = runs[at]->expected;
            faults.speakOf(machine.name, "anywhere");
            const std::string texts = said[at] + withoutBusiest(finished(runs[at]->check, faults));
            if (only != nullptr)
                std::cout << texts;
            const std::string woken = runs[at]->watch ? runs[at]->watch->read() : "";
            faults.expect(woken.empty(), "is woken to read" + woken);
            for (const std::string& choices : machine.says)
                faults.expect(
                    std::ranges::any_of(split(choices), [&](const auto& one) { return contains(texts, one); }),
                    "does not say \"" + choices + "\"");
            faults.expectNowhere(texts, machine.never);
            faults.expectNowhere(texts, split("This Mac|this Mac|Your Mac|your Mac|macOS|Apple silicon|Apple Silicon|"
                                              "AppleSMC|IOReport|setuid|host_processor_info|charger brick| nan|-nan|"
                                              " inf|eft fan|Left\n|ight fan|Right\n| 0E | 0 efficiency|-0 |"
                                              "\x1b|\x9b|\xff|\x07"));
            if (!machine.onBattery)
                faults.expectNowhere(texts, {"on battery"});
            if (!machine.isBuiltWithoutFans && !machine.hasCooling(Cooling::passive))
                faults.expectNowhere(texts, {"no fans", "No fans", "has none", "anless"});
        }
    }
    EXPECT_TRUE(faults.list().empty()) << faults.list();
}

} // namespace
} // namespace vantoro::testing
