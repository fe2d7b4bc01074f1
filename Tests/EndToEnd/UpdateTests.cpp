// The built program updating itself: version 1 in a folder of its own, version 2 signed and published by the
// maintainer's tool on a server of the test's.
#include "Platform/Linux/Updates/Copy/InstalledCopy.h"
#include "Platform/Linux/Updates/ReleaseMaker.h"
#include "Platform/Linux/Updates/UpdateServer.h"
#include "Support/ChildProgram.h"
#include "Support/EventLoop.h"

#include <fmt/format.h>
#include <QFile>
#include <random>
#include <thread>

namespace vantoro {
namespace {

namespace fs = std::filesystem;
using testing::ArchiveItem;
using testing::ChildProgram;
using testing::fileText;
using testing::waitUntil;

class ProgramUpdate : public ::testing::Test {
protected:
    ProgramUpdate() {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            ::setenv(name, (folder.path() + "/home").c_str(), 1);
        fs::create_directories(folder.path() + "/home");
        fs::permissions(folder.path() + "/home", fs::perms::owner_all);
        // Where a second launch would look for the first one.
        ::setenv("TMPDIR", (folder.path() + "/home").c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::setenv("VANTORO_TEST_FEED", server.address("/appcast.xml").c_str(), 1);
        ::setenv("VANTORO_TEST_AUTHORITIES", testing::UpdateServer::authorities().c_str(), 1);
        ::setenv("VANTORO_TEST_KEY", signUpdate({"make-keys", path("private-key")}).c_str(), 1);
        unpackVersionOne();
    }

    ~ProgramUpdate() override {
        for (const char* name : {"TMPDIR", "VANTORO_TEST_FAULT"})
            ::unsetenv(name);
    }

    void unpackVersionOne() const {
        for (const ArchiveItem& item : program(VANTORO_PROGRAM_1, "1.0", "100")) {
            const std::string name = "Vantoro" + item.path.substr(item.path.find('/'));
            folder.write(name, item.content);
            fs::permissions(path(name), fs::perms(item.mode));
        }
    }

    std::string path(const std::string& name) const { return folder.path() + "/" + name; }

    static std::vector<ArchiveItem> program(const char* file, const std::string& version, const std::string& build) {
        const std::string top = "Vantoro-" + version + "/";
        return {{.path = top + "bin/vantoro", .content = fileText(file), .mode = 0755},
                {.path = top + "bin/vantoro-top", .content = fileText(VANTORO_TOP_PROGRAM), .mode = 0755},
                {.path = top + "bin/vantoro-update", .content = fileText(VANTORO_UPDATE_PROGRAM), .mode = 0755},
                {.path = top + "share/vantoro/manifest.json",
                 .content = fmt::format(R"({{"version":"{}","build":"{}",)"
                                        R"("files":["bin/vantoro","bin/vantoro-top","bin/vantoro-update"]}})",
                                        version, build)}};
    }
    /// What the tool prints, without its end of line.
    static std::string signUpdate(std::vector<std::string> words) {
        words.insert(words.begin(), VANTORO_SIGN_UPDATE);
        ChildProgram tool(words);
        EXPECT_EQ(tool.wait(), 0) << tool.errors();
        const std::string text = tool.output();
        return text.substr(0, text.find('\n'));
    }
    void publish(const QByteArray& archive) {
        folder.write("archive.tar.gz", archive.toStdString());
        folder.write("notes.html", "<ul><li>Cooler & quieter</li></ul>");
        signUpdate({"entry", path("private-key"), path("archive.tar.gz"), "--version", "2.0", "--build", "200", "--url",
                    "archive.tar.gz", "--system", testing::thisSystem(), "--notes", path("notes.html"), "--feed",
                    path("appcast.xml")});
        server.resources["/appcast.xml"].body = QByteArray::fromStdString(fileText(path("appcast.xml")));
        server.resources["/archive.tar.gz"].body = archive;
    }
    std::vector<std::string> command() const {
        return {path("Vantoro/bin/vantoro"), "--simulate", "--check-for-updates", "--install-update",
                "--debug-updates"};
    }

    static bool says(const ChildProgram& program, const std::string& line) {
        return program.output().find(line + "\n") != std::string::npos;
    }
    /// What the copy is, whole and able to run; empty where it is not.
    std::string installedVersion() const {
        const auto manifest = manifestOfWholeCopy(path("Vantoro"));
        ChildProgram version({path("Vantoro/bin/vantoro"), "--version"});
        return version.wait() == 0 && manifest && version.output() == "vantoro " + manifest->version + "\n"
                   ? manifest->version
                   : "";
    }
    std::set<std::string> namesBeside() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder.path()))
            if (entry.path().filename().string().starts_with(".Vantoro"))
                names.insert(entry.path().filename());
        return names;
    }

    testing::TemporaryFolder folder;
    testing::UpdateServer server;
};

TEST_F(ProgramUpdate, VersionOneBecomesVersionTwo) {
    publish(testing::archiveOf(program(VANTORO_PROGRAM_2, "2.0", "200")));
    ChildProgram vantoro(command());
    EXPECT_TRUE(waitUntil([&] { return says(vantoro, "UPDATE phase updated"); }, std::chrono::seconds(60)))
        << vantoro.output() << vantoro.errors();
    for (const char* const line :
         {"UPDATE phase available 2.0 (200)", "UPDATE phase downloading 2.0 (200)", "UPDATE phase installing 2.0 (200)",
          "UPDATE relaunch marker from build 100, origin controlBar", "UPDATE relaunched into 2.0 (from build 100)"})
        EXPECT_TRUE(says(vantoro, line)) << line << "\n" << vantoro.output();
    // The same process, and the only instance, is the new version now; the old copy goes once a window was seen.
    EXPECT_EQ(fs::read_symlink(fmt::format("/proc/{}/exe", vantoro.pid())), path("Vantoro/bin/vantoro"));
    EXPECT_TRUE(waitUntil([&] { return !fs::exists(path(".Vantoro.previous")); }));
    EXPECT_EQ(server.requestsFor("/archive.tar.gz"), 1);
    vantoro.signal(SIGTERM);
    EXPECT_EQ(vantoro.wait(), 0);
    EXPECT_EQ(vantoro.errors(), "");
    EXPECT_EQ(installedVersion(), "2.0");
    // Started once more it has nothing to settle.
    ChildProgram again({path("Vantoro/bin/vantoro"), "--simulate", "--debug-updates"});
    EXPECT_TRUE(waitUntil([&] { return again.output().find("UPDATE started") != std::string::npos; }));
    EXPECT_EQ(again.output().find("relaunch"), std::string::npos);
    again.signal(SIGTERM);
    EXPECT_EQ(again.wait(), 0);
}

TEST_F(ProgramUpdate, KeysThatAreThereAreNeverWrittenOver) {
    const auto make = [&](const std::string& privateKey, const std::string& publicKey) {
        ChildProgram tool({VANTORO_SIGN_UPDATE, "make-keys", path(privateKey), path(publicKey)});
        return tool.wait();
    };
    EXPECT_EQ(make("mine", "mine.public"), 0);
    const std::string privateKey = fileText(path("mine"));
    const std::string publicKey = fileText(path("mine.public"));
    EXPECT_EQ(publicKey.size(), 45U);
    EXPECT_EQ(signUpdate({"public-key", path("mine")}) + "\n", publicKey);
    EXPECT_EQ(fs::status(path("mine")).permissions(), fs::perms(0600));
    EXPECT_NE(make("mine", "other.public"), 0);
    EXPECT_NE(make("other", "mine.public"), 0);
    EXPECT_NE(make("third", "nowhere/public"), 0);
    EXPECT_EQ(fileText(path("mine")), privateKey);
    EXPECT_EQ(fileText(path("mine.public")), publicKey);
    for (const char* const half : {"other", "other.public", "third"})
        EXPECT_FALSE(fs::exists(path(half))) << half;
}

TEST_F(ProgramUpdate, AForgedVersionTwoLeavesVersionOneRunning) {
    const QByteArray archive = testing::archiveOf(program(VANTORO_PROGRAM_2, "2.0", "200"));
    publish(archive);
    QByteArray& served = server.resources["/archive.tar.gz"].body;
    served[served.size() / 2] = static_cast<char>(served[served.size() / 2] ^ 1);
    ChildProgram vantoro(command());
    const std::string refused = "UPDATE phase failed 2.0 (200): Not installed: it couldn't be verified.";
    EXPECT_TRUE(waitUntil([&] { return says(vantoro, refused); }, std::chrono::seconds(60))) << vantoro.output();
    vantoro.signal(SIGTERM);
    EXPECT_EQ(vantoro.wait(), 0);
    EXPECT_EQ(installedVersion(), "1.0");
}

TEST_F(ProgramUpdate, AVersionWithoutAWindowGivesWayToTheOneBefore) {
    publish(testing::archiveOf(program(VANTORO_PROGRAM_2, "2.0", "200")));
    const std::string gaveWay = "UPDATE phase failed 2.0 (200): Vantoro 2.0 didn't start.";
    for (const char* const fault : {"abort", "hang"}) {
        ::setenv("VANTORO_TEST_FAULT", fault, 1);
        ChildProgram vantoro(command());
        EXPECT_TRUE(waitUntil([&] { return says(vantoro, gaveWay); }, std::chrono::seconds(60)))
            << fault << "\n"
            << vantoro.output() << vantoro.errors();
        EXPECT_EQ(fs::read_symlink(fmt::format("/proc/{}/exe", vantoro.pid())), path("Vantoro/bin/vantoro"));
        EXPECT_TRUE(waitUntil([&] { return namesBeside().empty(); })) << fault;
        vantoro.signal(SIGTERM);
        EXPECT_EQ(vantoro.wait(), 0);
        EXPECT_EQ(installedVersion(), "1.0") << fault;
    }
    // One that ends by itself is counted all the same, over as many starts as it takes.
    ::setenv("VANTORO_TEST_FAULT", "exit", 1);
    for (int start = 0; start < 2; ++start) {
        ChildProgram vantoro(command());
        EXPECT_TRUE(waitUntil([&] { return vantoro.hasEnded(); }, std::chrono::seconds(60)));
        EXPECT_EQ(vantoro.wait(), EXIT_FAILURE);
        EXPECT_EQ(installedVersion(), "2.0");
    }
    ChildProgram third(command());
    EXPECT_TRUE(waitUntil([&] { return says(third, gaveWay); }, std::chrono::seconds(60))) << third.output();
    // What did not start is not installed again by the words that asked for it.
    EXPECT_EQ(third.output().find("downloading"), std::string::npos);
}

TEST_F(ProgramUpdate, BeingAskedToStopDuringTheHandOverIsHeard) {
    publish(testing::archiveOf(program(VANTORO_PROGRAM_2, "2.0", "200")));
    ChildProgram vantoro(command());
    EXPECT_TRUE(
        waitUntil([&] { return says(vantoro, "UPDATE phase installing 2.0 (200)"); }, std::chrono::seconds(60)));
    vantoro.signal(SIGTERM);
    EXPECT_TRUE(waitUntil([&] { return vantoro.hasEnded(); }));
    EXPECT_FALSE(says(vantoro, "UPDATE phase updated"));
    EXPECT_NE(installedVersion(), "");
}

/// VANTORO_KILLS=120 kills as often as that, VANTORO_SEED others.
TEST_F(ProgramUpdate, KilledAtAnyMomentTheCopyIsOneOfTheTwo) {
    publish(testing::archiveOf(program(VANTORO_PROGRAM_2, "2.0", "200")));
    const auto number = [](const char* name, int otherwise) {
        const char* const text = std::getenv(name);
        return text != nullptr ? std::atoi(text) : otherwise;
    };
    std::mt19937 random(static_cast<unsigned>(number("VANTORO_SEED", 1)));
    const std::vector<std::string> phases{"started", "phase available", "phase downloading", "phase installing"};
    for (int kill = number("VANTORO_KILLS", 4); kill > 0; --kill) {
        ChildProgram vantoro(command());
        const std::string phase = phases[random() % phases.size()];
        const auto delay = std::chrono::microseconds(random() % (phase == "phase downloading" ? 1'500'000 : 60'000));
        EXPECT_TRUE(waitUntil([&] { return vantoro.output().find("UPDATE " + phase) != std::string::npos; },
                              std::chrono::seconds(60)));
        std::this_thread::sleep_for(delay);
        vantoro.signal(SIGKILL);
        vantoro.wait();
        const std::string version = installedVersion();
        ASSERT_NE(version, "") << phase << " and " << delay.count() << " microseconds";
        if (version == "1.0")
            continue;
        folder.remove("Vantoro");
        unpackVersionOne();
    }
    ChildProgram vantoro(command());
    EXPECT_TRUE(waitUntil([&] { return says(vantoro, "UPDATE phase updated"); }, std::chrono::seconds(60)));
    EXPECT_TRUE(waitUntil([&] { return namesBeside().empty(); })) << "the next update has cleaned up";
}

} // namespace
} // namespace vantoro
