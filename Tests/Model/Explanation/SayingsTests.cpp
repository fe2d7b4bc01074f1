// What must and must not be said of any machine: every text of many made-up histories, looked through.
#include "Model/Explanation/Reports.h"
#include "Support/HistoryBuilder.h"

#include <array>
#include <cctype>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace vantoro {
namespace {

using namespace vantoro::testing;

constexpr std::array coolings{Cooling::fans, Cooling::passive, Cooling::heat, Cooling::load};
constexpr std::array systems{SystemKind::macos, SystemKind::gnuLinux};

/// Draws machines of every kind, with and without each of the figures that a machine may not have.
class Dice {
public:
    double between(double low, double high) { return low + (high - low) * share_(engine_); }
    bool coin() { return share_(engine_) < 0.5; }
    template <class Choices>
    auto oneOf(const Choices& choices) {
        return choices[static_cast<std::size_t>(between(0, static_cast<double>(std::size(choices)) - 0.001))];
    }

    std::vector<ProcessSample> processes() {
        static const std::vector<const char*> names{"Editor",           "make",        "kswapd0",        "gnome-shell",
                                                    "systemd-journald", "kernel_task", "photoanalysisd", "bird",
                                                    "cc1plus",          "worker"};
        std::vector<ProcessSample> rows;
        for (int count = static_cast<int>(between(0, 6)); count > 0; --count)
            rows.push_back(process(100 + count, plainNames ? "worker " + std::to_string(count) : oneOf(names),
                                   coin() ? between(0, 6) : between(0, 800),
                                   static_cast<ProcessKind>(static_cast<int>(between(0, 4.999)))));
        return rows;
    }

    Snapshot machine(Cooling cooling) {
        Snapshot now{.timestamp = builtNow, .processes = processes(), .cooling = cooling};
        const double busy = coin() ? between(0, 100) : coin() ? 100 : 0;
        now.cpu = {.userPercent = busy * 0.8, .systemPercent = busy * 0.2, .idlePercent = 100 - busy};
        if (cooling == Cooling::fans)
            for (int index = 0; index < static_cast<int>(between(0, 3)); ++index)
                now.fans.push_back(fanAt(between(0, 1), index));
        if (cooling == Cooling::heat)
            for (int index = 0; index < static_cast<int>(between(0, 7)); ++index)
                now.fans.push_back({.index = index, .rpm = coin() ? between(0, 3000) : 0});
        if (cooling != Cooling::load && coin())
            now.temps = {.soc = between(20, 105), .socMean = between(20, 100), .battery = coin() ? 30.0 : 0.0};
        now.chipHeat = cooling == Cooling::load ? 0 : coin() ? between(20, 105) : 0;
        if (coin())
            now.power = {.systemWatts = coin() ? between(0, 200) : 0,
                         .adapterWatts = coin() ? between(0, 200) : 0,
                         .batteryWatts = coin() ? between(0, 60) : 0,
                         .gpuWatts = coin() ? between(0, 300) : 0};
        now.memory.totalBytes = coin() ? 16'000'000'000 : 0;
        now.memory.swapOutEvents = coin() ? 1 : 0;
        now.memory.wiredBytes = static_cast<std::uint64_t>(between(0, 16e9));
        if (coin())
            now.memory.availableBytes = static_cast<std::uint64_t>(between(0, 16e9));
        now.thermalPressure = coin() ? ThermalPressure::nominal : oneOf(allThermalPressures);
        if (coin())
            now.stalls = {.cpu = between(0, 100), .memory = between(0, 100), .io = between(0, 100)};
        if (coin())
            now.gpuPercent = between(0, 100);
        return now;
    }

    bool plainNames = false;

private:
    std::mt19937 engine_{1}; // NOLINT(*-msc51-cpp): the same machines every time
    std::uniform_real_distribution<double> share_{0, 1};
};

struct Told {
    Verdict verdict;
    /// All that a person may come to read.
    std::string text;
};

Told tell(const Snapshot& now, SystemKind system, int rampSeconds = 60) {
    History history = historyEndingIn(now, rampSeconds);
    history.setSystem(system);
    const DefaultFormatContext context;
    const Conclusion all = conclude(history, Format(context));
    return {all.verdict, std::string(all.verdict.stateLabel()) + '\n' + all.verdict.statePhrase() + '\n' +
                             all.verdict.cause + '\n' + textReport(all.verdict, all.explanation, 100000, false) +
                             jsonReport(history, all.verdict, all.suspects, all.explanation, {})};
}

using Words = std::vector<std::string>;

/// Where any of the words, in lower case, stands for itself in the text; empty where none does.
std::string found(std::string text, const Words& words) {
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    const auto isPartOf = [&text](std::size_t at, bool isNumber) {
        return at < text.size() &&
               (std::isalnum(static_cast<unsigned char>(text[at])) != 0 || (isNumber && text[at] == '.'));
    };
    for (const std::string& word : words)
        for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
            if (!isPartOf(at - 1, word[0] == '0') && !isPartOf(at + word.size(), false))
                return text.substr(at - std::min<std::size_t>(at, 60), word.size() + 80);
    return {};
}

TEST(Sayings, AComputerIsNotSpokenOfAsAMac) {
    Dice dice;
    for (int i = 0; i < 150; ++i) {
        Snapshot now = dice.machine(dice.oneOf(coolings));
        if (dice.coin())
            now.throttle = {{static_cast<ThrottleReason>(i % 5)}};
        const std::string text = tell(now, SystemKind::gnuLinux).text;
        EXPECT_EQ(found(text, {"mac", "macs", "macbook", "macbooks", "macos", "apple", "ioreport", "smc", "setuid",
                               "spotlight", "finder"}),
                  "")
            << i;
    }
}

TEST(Sayings, WhereOnlyWorkIsKnownNoWordIsSaidOfHeat) {
    Dice dice;
    dice.plainNames = true;
    for (int i = 0; i < 150; ++i) {
        const Told told = tell(dice.machine(Cooling::load), dice.oneOf(systems));
        EXPECT_EQ(
            found(told.text.substr(0, told.text.find("{\"vitals\"")),
                  {"heat", "heated", "heating", "heats", "fan", "fans", "airflow", "floor", "vent", "vents", "warm",
                   "warmer", "hot", "cool", "cooler", "cooling", "temperature", "temperatures", "thermal"}),
            "")
            << i;
    }
}

TEST(Sayings, SpeedsAreNoSharesAndNoFanIsNotSaidToBeMissing) {
    Dice dice;
    for (int i = 0; i < 150; ++i) {
        const Told told = tell(dice.machine(Cooling::heat), SystemKind::gnuLinux);
        EXPECT_EQ(found(told.text,
                        {"no fans", "without fans", "fanless", "of the way", "ceiling", "their floor", "fan state"}),
                  "")
            << i;
    }
}

TEST(Sayings, NothingIsClaimedThatIsNotKnown) {
    Dice dice;
    for (int i = 0; i < 150; ++i) {
        Snapshot now = dice.machine(dice.oneOf(coolings));
        if (now.processes.empty() && dice.coin())
            now.throttle.emplace();
        const std::string text = tell(now, SystemKind::gnuLinux).text;
        EXPECT_EQ(found(text, {"slowed down", "slowing", "throttling"}), "") << i;
        EXPECT_EQ(found(text, {"0 w"}), "") << i;
        EXPECT_TRUE(now.power.batteryWatts != 0 || found(text, {"on battery"}).empty()) << i;
        EXPECT_TRUE(now.power.batteryWatts != 0 || now.temps.battery != 0 ||
                    found(text, {"charging", "battery or", "the battery"}).empty())
            << i;
    }
    Snapshot slowed = fanMachine(0.5, {process(1, "Editor", 90)});
    slowed.throttle = {{ThrottleReason::firmware}};
    EXPECT_NE(found(tell(slowed, SystemKind::gnuLinux).text, {"slowed down: its firmware is holding it back"}), "");
}

TEST(Sayings, AnIdleMachineIsNeverAboveLightAndABusyOneNeverQuiet) {
    Dice dice;
    for (int i = 0; i < 150; ++i) {
        Snapshot now = dice.machine(dice.oneOf(coolings));
        now.cpu = {.userPercent = 100, .idlePercent = 0};
        const Told busy = tell(now, SystemKind::gnuLinux);
        if (now.thermalPressure < ThermalPressure::serious) {
            EXPECT_EQ(
                found(std::string(busy.verdict.stateLabel()) + "; " + busy.verdict.headline + "; " + busy.verdict.cause,
                      {"quiet", "quietly", "silent", "cool", "mild", "idle", "light", "comfortably", "nothing"}),
                "")
                << i;
        }
        EXPECT_EQ(found(busy.text, {"nothing is working", "is idling", "plenty to spare", "nothing needs doing"}), "")
            << i;
        EXPECT_GT(busy.verdict.state, StressLevel::idle) << i;

        now.cpu = {.userPercent = 2, .idlePercent = 98};
        now.gpuPercent = now.gpuPercent ? std::optional(3.0) : std::nullopt;
        now.chipHeat = dice.between(0, 50);
        for (FanReading& fan : now.fans)
            fan.rpm = fan.minRPM + (fan.maxRPM - fan.minRPM) * dice.between(0, 0.21);
        for (const SystemKind system : systems)
            EXPECT_LE(tell(now, system).verdict.state, StressLevel::light) << i;
    }
}

/// Every "N%" of a text.
std::vector<double> percentages(const std::string& text) {
    std::vector<double> found;
    for (std::size_t end = text.find('%'); end != std::string::npos; end = text.find('%', end + 1)) {
        std::size_t begin = end;
        while (begin > 0 && (std::isdigit(static_cast<unsigned char>(text[begin - 1])) != 0 || text[begin - 1] == '.'))
            --begin;
        if (begin < end)
            found.push_back(std::stod(text.substr(begin, end - begin)));
    }
    return found;
}

TEST(Sayings, NoShareIsSaidThatNoSnapshotHeld) {
    Dice dice;
    for (int i = 0; i < 24; ++i) {
        const Cooling cooling = dice.oneOf(coolings);
        const int workers = static_cast<int>(dice.between(1, 12));
        History history;
        history.setSystem(dice.oneOf(systems));
        history.setProcessorCount(12);
        double most = 100;
        for (int second = 0; second < 120; ++second) {
            Snapshot now = dice.machine(cooling);
            // Short jobs, each a process of its own, of one or of many names.
            for (int job = 0; job < workers; ++job)
                now.processes.push_back(process(1000 + second * workers + job, i % 2 == 0 ? "cc1plus" : "job",
                                                dice.between(0, 100), ProcessKind::commandLine,
                                                i % 3 == 0 ? std::optional<std::string>("make") : std::nullopt));
            double sum = 0;
            for (const ProcessSample& row : now.processes)
                sum += row.cpuPercent;
            most = std::max({most, sum, now.cpu.busyPercent() * 12});
            history.append(at(builtNow + second, now));
        }
        const DefaultFormatContext context;
        const Conclusion all = conclude(history, Format(context));
        for (const double percent : percentages(textReport(all.verdict, all.explanation, 100000, false)))
            EXPECT_LE(percent, std::ceil(most)) << i << all.verdict.detail;
    }
}

} // namespace
} // namespace vantoro
