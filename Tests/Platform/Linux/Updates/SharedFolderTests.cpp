// An update in a folder that others use too: other instances, people who save files there, a disk that is full.
#include "Model/Live/Settings.h"
#include "Model/Updates/Updates.h"
#include "Platform/Linux/Updates/AppcastEngine.h"
#include "Platform/Linux/Updates/ReleaseMaker.h"
#include "Platform/Linux/Updates/UpdateServer.h"
#include "Support/EventLoop.h"
#include "Support/Folders.h"
#include "Support/Golden.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace vantoro {
namespace {

namespace fs = std::filesystem;
using Kind = UpdatePhase::Kind;
using testing::ArchiveItem;
using testing::waitUntil;

/// A program that runs from the copy, as far as updates are concerned.
struct Instance {
    Instance(const UpdateSetup& setup, const std::string& settingsFile) : settings(settingsFile) {
        UpdateSetup own = setup;
        own.recall = [this](std::string_view name) { return settings.storedText(name).value_or(""); };
        own.remember = [this](std::string_view name, const std::string& text) { settings.storeText(name, text); };
        own.relaunch = [this](const std::string& program) { relaunched = program; };
        engine = std::make_shared<AppcastEngine>(own, VANTORO_UPDATE_PROGRAM, [] { return 0.5; });
        updates = std::make_unique<Updates>(
            engine, settings, UpdatesEnvironment{.now = setup.now, .after = [](double, const auto& action) {
                                                     QTimer::singleShot(0, action);
                                                 }});
        updates->start();
    }

    void install() {
        updates->install(UpdateOrigin::controlBar);
        awaitEnd();
    }
    void awaitEnd() const {
        EXPECT_TRUE(waitUntil([&] { return !relaunched.empty() || updates->phase().kind == Kind::failed; }));
    }

    Settings settings;
    std::string relaunched;
    std::shared_ptr<AppcastEngine> engine;
    std::unique_ptr<Updates> updates;
};

class SharedFolder : public ::testing::Test {
protected:
    SharedFolder() {
        server.resources["/archive.tar.gz"].body = archive;
        server.resources["/appcast.xml"] = {.body =
                                                testing::feedOf({{.version = "2.0",
                                                                  .build = "200",
                                                                  .url = "archive.tar.gz",
                                                                  .length = static_cast<std::uint64_t>(archive.size()),
                                                                  .signature = key.signatureOver(archive)}})};
        fs::create_directory(place());
    }

    /// Where the copy lies, and nothing of the test's.
    std::string place() const { return folder.path() + "/place"; }
    std::string beside(const std::string& name) const { return place() + "/" + name; }
    std::string copy() const { return beside("Vantoro"); }
    void unpackVersionOne() const {
        for (const ArchiveItem& item : testing::release("1.0", "100")) {
            const std::string name = "/Vantoro" + item.path.substr(item.path.find('/'));
            folder.write("place" + name, item.content);
            fs::permissions(place() + name, fs::perms(item.mode & 0755));
        }
    }
    Instance instance(const std::string& build) {
        return {{.version = build == "100" ? "1.0" : "2.0",
                 .build = build,
                 .feed = server.address("/appcast.xml"),
                 .publicKey = key.publicKey(),
                 .authorities = testing::UpdateServer::authorities(),
                 .program = copy() + "/bin/vantoro",
                 .now = [] { return 1'700'000'000.0; }},
                folder.path() + "/settings-" + std::to_string(++instances)};
    }
    std::string installedBuild() const {
        const auto manifest = manifestOfWholeCopy(copy());
        return manifest ? manifest->build : "";
    }
    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : fs::directory_iterator(place()))
            all.insert(entry.path().filename());
        return all;
    }

    const QByteArray archive = testing::archiveOf(testing::release("2.0", "200"));
    const std::string unfinished = "The update didn't finish.";
    const std::string immovable = "Vantoro can't replace itself here.";
    testing::TemporaryFolder folder;
    testing::UpdateServer server;
    testing::SigningKey key;
    int instances = 0;
};

TEST_F(SharedFolder, ASecondInstanceDoesNotDisturbAnUpdateInAnyPhase) {
    unpackVersionOne();
    Instance first = instance("100");
    Instance rival = instance("100");
    int looks = 0;
    for (Instance* const one : {&first, &rival})
        QObject::connect(one->updates.get(), &Updates::changed, [&] {
            for (const char* const build : {"100", "200"})
                instance(build).updates->windowWasSeen();
            if (++looks == 1)
                rival.updates->install(UpdateOrigin::controlBar);
        });
    first.install();
    rival.awaitEnd();
    EXPECT_GT(looks, 10) << "the progress of unpacking included";
    // Whichever came first has done it; the other one found it held, or done.
    for (const Instance* const one : {&first, &rival})
        EXPECT_EQ(one->relaunched.empty() ? one->updates->phase().message : unfinished, unfinished);
    EXPECT_FALSE(first.relaunched.empty() && rival.relaunched.empty());
    EXPECT_EQ(installedBuild(), "200");
    EXPECT_EQ(server.requestsFor("/archive.tar.gz"), 1);
    // An old instance keeps the old copy for the new one, which may yet have to go back to it.
    for (Instance* const one : {&first, &rival}) {
        one->updates.reset();
        one->engine.reset();
    }
    instance("100").updates->windowWasSeen();
    EXPECT_EQ(names(), (std::set<std::string>{".Vantoro.previous", "Vantoro"}));
    // What is installed already is started, not fetched once more.
    Instance late = instance("100");
    {
        const auto held = InstalledCopy(copy() + "/bin/vantoro").lock();
        late.install();
        EXPECT_EQ(late.updates->phase().message, unfinished);
    }
    late.updates->install(UpdateOrigin::controlBar);
    EXPECT_TRUE(waitUntil([&] { return !late.relaunched.empty(); }));
    EXPECT_EQ(server.requestsFor("/archive.tar.gz"), 1);
    instance("200").updates->windowWasSeen();
    EXPECT_EQ(names(), std::set<std::string>{"Vantoro"});
}

TEST_F(SharedFolder, OnlyTheInstanceThatHandedOverSettlesIt) {
    unpackVersionOne();
    const pid_t ended = ::fork();
    if (ended == 0)
        ::_exit(0);
    ::waitpid(ended, nullptr, 0);
    const std::string program = copy() + "/bin/vantoro";
    for (const auto& [by, settles] :
         {std::pair{std::to_string(::getpid()) + " " + program, true}, std::pair{"1 " + program, false},
          std::pair{std::to_string(ended) + " " + program, true},
          std::pair{std::to_string(ended) + " /elsewhere/bin/vantoro", false}}) {
        Instance started = instance("200");
        started.settings.storeText("vantoro.updates.relaunch", R"({"fromBuild":"100","at":1699999999})");
        started.settings.storeText("vantoro.updates.handedOverBy", by);
        EXPECT_EQ(started.updates->consumeRelaunch(), settles) << by;
        EXPECT_EQ(started.settings.storedText("vantoro.updates.relaunch").has_value(), !settles) << by;
    }
}

TEST_F(SharedFolder, CleaningUpRemovesNothingButWhatAnUpdateLeft) {
    unpackVersionOne();
    const std::string otherMarker =
        R"({"format":"vantoro-update-1","copy":"Vantoro.beta","from":"","to":"","version":"","starts":0})";
    std::set<std::string> kept{"Vantoro"};
    for (const auto& [name, file, text] :
         std::vector<std::array<std::string, 3>>{{".Vantoro.my-update-notes", "", "mine"},
                                                 {".Vantoro.settings.downloads", "", "mine"},
                                                 {".Vantoro.update-AbCdEf", "/notes", "mine"},
                                                 {".Vantoro.update-toolong1", "/vantoro-update.json", "{}"},
                                                 {".Vantoro.previous", "/share/vantoro/manifest.json", "{}"},
                                                 {".Vantoro.0123456789abcdef.download.txt", "", "mine"},
                                                 {".Vantoro.0123456789ABCDEF.download", "", "mine"},
                                                 {".Vantoro.beta.update-AbCdEf", "/vantoro-update.json", otherMarker},
                                                 {".Vantoro.update-GhIjKl", "/vantoro-update.json", otherMarker}}) {
        folder.write("place/" + name + file, text);
        kept.insert(name);
    }
    const InstalledCopy installed(copy() + "/bin/vantoro");
    const std::string notes = installed.makeStagingFolder().path();
    std::ofstream(notes + "/notes") << "mine";
    kept.insert(fs::path(notes).filename());
    // Of an attempt that was killed, and of a release that is no longer offered.
    fs::create_directories(installed.makeStagingFolder().copy() + "/bin");
    folder.write("place/.Vantoro.0123456789abcdef.download", "half");
    const std::string manifest = testing::fileText(copy() + "/share/vantoro/manifest.json");
    fs::remove(copy() + "/share/vantoro/manifest.json");
    const auto before = names();
    instance("100").updates->windowWasSeen();
    EXPECT_EQ(names(), before) << "no archive made this copy";
    folder.write("place/Vantoro/share/vantoro/manifest.json", manifest);
    {
        Instance first = instance("100");
        first.install();
        EXPECT_EQ(first.relaunched, copy() + "/bin/vantoro") << "a taken name is no obstacle";
    }
    instance("200").updates->windowWasSeen();
    EXPECT_EQ(names(), kept);
    EXPECT_TRUE(fs::exists(notes + "/notes"));
}

TEST_F(SharedFolder, AFileSavedIntoTheCopyMeanwhileStays) {
    for (const Kind moment : {Kind::downloading, Kind::installing}) {
        unpackVersionOne();
        Instance first = instance("100");
        QObject::connect(first.updates.get(), &Updates::changed, [&] {
            if (first.updates->phase().kind == moment)
                folder.write("place/Vantoro/share/report.txt", "mine");
        });
        first.install();
        EXPECT_EQ(first.updates->phase().message, immovable);
        EXPECT_EQ(testing::fileText(copy() + "/share/report.txt"), "mine");
        EXPECT_EQ(names(), std::set<std::string>{"Vantoro"});
        folder.remove("place/Vantoro");
    }
}

TEST_F(SharedFolder, AStagedCopyIsLookedAtAgainBeforeTheExchange) {
    unpackVersionOne();
    Instance first = instance("100");
    QObject::connect(first.updates.get(), &Updates::changed, [&] {
        if (first.updates->phase().kind == Kind::installing)
            for (const std::string& path : UpdateFolder::namedLikeOne(place(), "Vantoro"))
                fs::remove(path + "/copy/share/vantoro/data");
    });
    first.install();
    EXPECT_EQ(first.updates->phase().message, "Not installed: it couldn't be verified.");
    EXPECT_EQ(installedBuild(), "100");
    EXPECT_EQ(names(), std::set<std::string>{"Vantoro"});
}

TEST_F(SharedFolder, TheNewCopyHasTheOldOnesRightsWhateverTheMask) {
    unpackVersionOne();
    const gid_t group = ::geteuid() == 0 ? 1 : ::getegid();
    const auto set = [&](const std::string& name, mode_t mode) {
        EXPECT_EQ(::chown((copy() + name).c_str(), static_cast<uid_t>(-1), group), 0);
        EXPECT_EQ(::chmod((copy() + name).c_str(), mode), 0);
    };
    // A copy that a group shares; the manifest was there under another mode than the data, and is still.
    const std::vector<std::pair<std::string, mode_t>> rights{
        {"", 02775}, {"/bin", 0750}, {"/bin/vantoro", 0750}, {"/share/vantoro/data", 0664}};
    for (const auto& [name, mode] : rights)
        set(name, mode);
    const mode_t mask = ::umask(077);
    Instance first = instance("100");
    first.install();
    ::umask(mask);
    EXPECT_EQ(installedBuild(), "200");
    for (const auto& [name, mode] : rights) {
        struct stat status = {};
        ASSERT_EQ(::stat((copy() + name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode) << name;
        EXPECT_EQ(status.st_gid, group) << name;
    }
}

TEST_F(SharedFolder, AFullDiskIsCalledOneAndGetsItsRoomBack) {
    // Of this process alone; each test is one of its own.
    const int spaces = ::geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
    if (::unshare(spaces) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        GTEST_SKIP() << "no disk of its own can be had here";
    // Room for the copy and half an archive; for the archive and half of what it holds.
    for (const char* const size : {"size=600k", "size=1100k"}) {
        ASSERT_EQ(::mount("tmpfs", place().c_str(), "tmpfs", 0, size), 0) << std::strerror(errno);
        unpackVersionOne();
        const auto room = fs::space(place()).available;
        Instance first = instance("100");
        first.install();
        EXPECT_EQ(first.updates->phase().message, unfinished) << size;
        EXPECT_EQ(first.updates->phase().detail,
                  "The disk is full. Nothing was changed: make some room and try again.");
        EXPECT_EQ(names(), std::set<std::string>{"Vantoro"});
        EXPECT_EQ(fs::space(place()).available, room) << size;
        EXPECT_EQ(installedBuild(), "100");
        ::umount(place().c_str());
    }
}

TEST_F(SharedFolder, AUserWhoMayNotWriteThereChangesNothing) {
    unpackVersionOne();
    for (const char* const name : {"", "/place", "/place/Vantoro"})
        fs::permissions(folder.path() + name, fs::perms(0755));
    if (::geteuid() != 0)
        fs::permissions(copy(), fs::perms(0555));
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
            ::_exit(1);
        const InstalledCopy installed(copy() + "/bin/vantoro");
        if (!installed.canBeReplaced().failed())
            ::_exit(2);
        if (::geteuid() == nobody && (installed.makeStagingFolder() || errno != EACCES))
            ::_exit(3);
        installed.cleanUp("100");
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(installedBuild(), "100");
    fs::permissions(copy(), fs::perms(0755));
}

} // namespace
} // namespace vantoro
