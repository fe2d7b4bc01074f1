#include "Model/Live/Quits.h"
#include "Model/Live/Replay.h"

#include "Support/EventLoop.h"
#include "Support/ScriptedProcesses.h"
#include "Support/Testing.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace vantoro {
namespace {

using testing::ScriptedProcesses;
using testing::waitUntil;

class ReplayTest : public ::testing::Test {
protected:
    std::string record(const std::vector<std::string>& lines) {
        const std::string path = folder.filePath("recording.jsonl").toStdString();
        std::ofstream file(path);
        file << R"({"format":"vantoro-recording","version":1,"machine":"Another Mac","created":"2026-03-01T09:14:00Z"})"
             << '\n';
        for (const std::string& line : lines)
            file << line << '\n';
        return path;
    }

    QTemporaryDir folder;
    Settings settings{folder.filePath("settings.ini").toStdString()};
    std::shared_ptr<ScriptedProcesses> processes = std::make_shared<ScriptedProcesses>();
    SensorHub hub{{.processControl = processes}, {}, settings, {.now = [] { return 5000.0; }}};
};

TEST_F(ReplayTest, KeepsTheRecordedPaceAndTheHubStaysOutOfIt) {
    Replay replay(hub, record({R"({"timestamp":1000,"temps":{"soc":50},"cooling":"passive","chipHeat":50})",
                               R"({"timestamp":1000.1,"temps":{"soc":51},"cooling":"passive","chipHeat":51})",
                               R"({"timestamp":1000.25,"temps":{"soc":52},"cooling":"passive","chipHeat":52})"}));
    const QSignalSpy finished(&replay, &Replay::finished);
    ASSERT_FALSE(replay.error().has_value());
    QElapsedTimer clock;
    clock.start();
    replay.start();
    EXPECT_EQ(hub.snapshot().timestamp, 1000) << "the first at once";
    EXPECT_TRUE(hub.isReady() && hub.sensorsAvailable() && hub.processesReady());
    EXPECT_EQ(hub.cooling(), Cooling::passive);
    EXPECT_TRUE(waitUntil([&] { return finished.count() == 1; }));
    EXPECT_GE(clock.elapsed(), 245);
    EXPECT_EQ(hub.history().snapshots().size(), 3U);
    EXPECT_EQ(hub.machineName(), "Another Mac");
    EXPECT_EQ(hub.sensorSummary(), "No fans · 1 sensors");

    hub.start();
    settings.store(Setting::sampleInterval, 1);
    hub.tick();
    EXPECT_EQ(hub.history().snapshots().size(), 3U) << "nothing of this machine comes between";
    EXPECT_FALSE(hub.quits().question({.members = {{.pid = 12345}}}).has_value());
    hub.quits().begin({.key = "App", .processes = {{.pid = 12345, .birth = 1}}});
    EXPECT_TRUE(processes->sent.empty()) << "the recorded number is another process's by now";
}

TEST_F(ReplayTest, RefusesTheWholeOfABadRecordingBeforeItBegins) {
    const Replay replay(hub, record({R"({"timestamp":1000})", R"({"timestamp":999})"}));
    ASSERT_TRUE(replay.error().has_value());
    EXPECT_EQ(replay.error()->line, 3U);
    EXPECT_FALSE(hub.isReplay());
}

} // namespace
} // namespace vantoro
