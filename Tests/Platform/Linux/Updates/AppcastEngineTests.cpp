// The update engine from the feed to the exchanged folder, and everything that must not get that far: a real server on
// the loopback address, real archives, real folders.
#include "Model/Live/Settings.h"
#include "Model/Updates/Updates.h"
#include "Platform/Linux/Updates/AppcastEngine.h"
#include "Platform/Linux/Updates/ReleaseMaker.h"
#include "Platform/Linux/Updates/UpdateServer.h"
#include "Support/EventLoop.h"
#include "Support/Folders.h"
#include "Support/Golden.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vantoro {
namespace {

namespace fs = std::filesystem;
using Kind = UpdatePhase::Kind;
using testing::ArchiveItem;
using testing::FeedItem;
using testing::Resource;
using testing::waitUntil;

constexpr double today = 1'700'000'000;

class AppcastEngineTest : public ::testing::Test {
protected:
    AppcastEngineTest() {
        for (const ArchiveItem& item : testing::release("1.0", "100")) {
            folder.write("Vantoro" + item.path.substr(item.path.find('/')), item.content);
            fs::permissions(copy() + item.path.substr(item.path.find('/')), fs::perms(item.mode & 0755));
        }
        before = contents();
    }
    ~AppcastEngineTest() override { updates.reset(); }

    std::string copy() const { return folder.path() + "/Vantoro"; }
    /// Every file beside and in the copy, with what it holds.
    std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(folder.path()))
            if (entry.path().filename() != "settings.ini")
                files[entry.path()] = entry.is_regular_file() ? testing::fileText(entry.path()) : "folder";
        return files;
    }

    void start(const std::string& feedPath = "/appcast.xml") {
        engine = std::make_shared<AppcastEngine>(
            UpdateSetup{
                .version = "1.0",
                .build = build,
                .feed = server.address(feedPath),
                .publicKey = key.publicKey(),
                .authorities = trustsServer ? testing::UpdateServer::authorities() : "",
                .program = copy() + "/bin/vantoro",
                .recall = [this](std::string_view name) { return settings.storedText(name).value_or(""); },
                .remember = [this](std::string_view name, const std::string& text) { settings.storeText(name, text); },
                .now =
                    [this] {
                        ++looksAtTheClock;
                        return now;
                    },
                .relaunch = [this](const std::string& program) { relaunched = program; }},
            VANTORO_UPDATE_PROGRAM, [] { return 0.5; });
        updates = std::make_unique<Updates>(
            engine, settings,
            UpdatesEnvironment{.now = [this] { return now; },
                               .after = [](double, const auto& action) { QTimer::singleShot(0, action); }});
        QObject::connect(updates.get(), &Updates::changed, [this] { seen.insert(updates->phase().kind); });
        updates->start();
    }
    void publish(const QByteArray& archive, FeedItem item = {.version = "2.0", .build = "200"}) {
        if (item.url.empty())
            item.url = "archive.tar.gz";
        if (item.length == 0)
            item.length = static_cast<std::uint64_t>(archive.size());
        if (item.signature.empty())
            item.signature = key.signatureOver(archive);
        if (item.signature == "none")
            item.signature.clear();
        server.resources["/archive.tar.gz"].body = archive;
        server.resources["/appcast.xml"] = {.body = testing::feedOf({item})};
    }
    /// Asks for the install and waits for its end, either way.
    void install() {
        if (!updates)
            start();
        updates->install(UpdateOrigin::controlBar);
        EXPECT_TRUE(waitUntil([&] {
            const Kind kind = updates->phase().kind;
            return !relaunched.empty() || kind == Kind::failed || kind == Kind::current ||
                   kind == Kind::needsNewerSystem || kind == Kind::idle;
        }));
        EXPECT_TRUE(relaunched.empty() ? engine->canCheckForUpdates() : true);
    }
    void expectRefused(const std::string& message, const std::string& what) {
        install();
        EXPECT_EQ(updates->phase().message, message) << what;
        EXPECT_EQ(relaunched, "") << what;
        EXPECT_EQ(settings.storedText("vantoro.updates.relaunch"), std::nullopt) << what;
        EXPECT_TRUE(contents() == before) << what;
        archiveRequests = server.requestsFor("/archive.tar.gz");
        updates.reset();
        engine.reset();
        server.resources.clear();
        server.requests.clear();
    }

    const std::string unverified = "Not installed: it couldn't be verified.";
    const std::string unreachable = "Couldn't reach updates.vantoro.example.";
    const std::string unfinished = "The update didn't finish.";
    const std::string immovable = "Vantoro can't replace itself here.";
    const QByteArray good = testing::archiveOf(testing::release("2.0", "200"));
    testing::TemporaryFolder folder;
    Settings settings{folder.path() + "/settings.ini"};
    testing::UpdateServer server;
    testing::SigningKey key;
    bool trustsServer = true;
    double now = today;
    int looksAtTheClock = 0;
    /// In what was refused last.
    int archiveRequests = 0;
    std::string relaunched;
    std::set<Kind> seen;
    std::string build = "100";
    std::map<std::string, std::string> before;
    std::shared_ptr<AppcastEngine> engine;
    std::unique_ptr<Updates> updates;
};

TEST_F(AppcastEngineTest, ANewerReleaseTakesTheCopysPlace) {
    publish(good, {.version = "2.0", .build = "200", .notes = "<p>Cooler</p><script>x</script>"});
    server.resources["/elsewhere"] = {.redirect = server.address("/appcast.xml")};
    start("/elsewhere");
    fs::permissions(copy(), fs::perms(0750));
    install();
    EXPECT_EQ(relaunched, copy() + "/bin/vantoro");
    EXPECT_EQ(seen, (std::set{Kind::idle, Kind::checking, Kind::available, Kind::downloading, Kind::installing}));
    EXPECT_EQ(updates->phase().release->notes, "Cooler");
    EXPECT_EQ(updates->progress(), 0.98);
    EXPECT_TRUE(settings.storedText("vantoro.updates.relaunch"));
    EXPECT_NE(testing::fileText(relaunched).find("vantoro 2.0"), std::string::npos);
    EXPECT_EQ(manifestOfWholeCopy(copy())->build, "200");
    struct stat status = {};
    ASSERT_EQ(::stat(relaunched.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0755U) << "no rights that a release does not need";
    ASSERT_EQ(::stat((copy() + "/share/vantoro/data").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644U);
    ASSERT_EQ(::stat(copy().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0750U);
    // The old copy stays until the new one has shown a window.
    EXPECT_EQ(manifestOfWholeCopy(folder.path() + "/.Vantoro.previous/copy")->build, "100");
    updates.reset();
    start();
    updates->windowWasSeen();
    EXPECT_TRUE(fs::exists(folder.path() + "/.Vantoro.previous")) << "this is the old copy's window";
    updates.reset();
    build = "200";
    start();
    updates->windowWasSeen();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 2)
        << "the copy and the settings";
}

TEST_F(AppcastEngineTest, ServersMayLeaveTheLengthOut) {
    publish(good);
    for (auto& [path, resource] : server.resources)
        resource.hidesLength = true;
    install();
    EXPECT_NE(relaunched, "");
}

TEST_F(AppcastEngineTest, RequestsTellTheVersionAndNothingOfTheMachine) {
    ::setenv("LANG", "de_DE.UTF-8", 1);
    publish(good);
    install();
    ASSERT_EQ(server.requests.size(), 2U);
    for (const std::string& head : server.requests) {
        std::set<std::string> names;
        std::istringstream lines(head);
        std::string line;
        std::getline(lines, line);
        EXPECT_EQ(line.find('?'), std::string::npos);
        while (std::getline(lines, line) && line != "\r")
            names.insert(line.substr(0, line.find(':')));
        EXPECT_EQ(names, (std::set<std::string>{"Accept-Encoding", "Accept-Language", "Cache-Control", "Connection",
                                                "Host", "Pragma", "User-Agent"}));
        EXPECT_NE(head.find("User-Agent: Vantoro/1.0\r\n"), std::string::npos);
        EXPECT_NE(head.find("Accept-Language: *\r\n"), std::string::npos);
    }
}

TEST_F(AppcastEngineTest, ABrokenDownloadGoesOnWhereItStopped) {
    publish(good);
    Resource& archive = server.resources["/archive.tar.gz"];
    archive.cutAfter = 100'000;
    install();
    EXPECT_NE(relaunched, "");
    EXPECT_GE(server.requestsFor("/archive.tar.gz"), 5);
}

TEST_F(AppcastEngineTest, ADownloadGoesOnInTheNextAttempt) {
    publish(good);
    server.resources["/archive.tar.gz"].cutAfter = 10'000;
    install();
    EXPECT_EQ(updates->phase().message, unreachable);
    const auto remains = InstalledCopy(copy() + "/bin/vantoro").downloadPath(key.signatureOver(good));
    const std::uintmax_t kept = fs::file_size(remains);
    EXPECT_GT(kept, 0U);
    EXPECT_EQ(fs::status(remains).permissions(), fs::perms(0600));
    server.resources["/archive.tar.gz"].cutAfter.reset();
    install();
    EXPECT_NE(relaunched, "");
    EXPECT_NE(server.requests.back().find("Range: bytes=" + std::to_string(kept) + "-\r\n"), std::string::npos);
}

TEST_F(AppcastEngineTest, WithoutRangesADownloadStartsOver) {
    publish(good);
    server.resources["/archive.tar.gz"].cutAfter = 150'000;
    server.resources["/archive.tar.gz"].supportsRanges = false;
    install();
    EXPECT_EQ(updates->phase().message, unreachable) << "it never gets further";
    server.resources["/archive.tar.gz"].cutAfter.reset();
    install();
    EXPECT_NE(relaunched, "");
}

TEST_F(AppcastEngineTest, AnotherArchivesRemainsAreNotGoneOnWith) {
    const std::string remains = InstalledCopy(copy() + "/bin/vantoro").downloadPath(key.signatureOver(good));
    publish(good);
    // A link in the download's place would have another file overwritten.
    folder.write("precious", "mine");
    fs::create_symlink(folder.path() + "/precious", remains);
    install();
    EXPECT_EQ(updates->phase().message, immovable);
    EXPECT_EQ(testing::fileText(folder.path() + "/precious"), "mine");
    fs::remove(remains);
    // Bytes that are not the archive's: the signature tells, and they are gone for the next attempt.
    std::ofstream(remains) << std::string(1000, 'x');
    install();
    EXPECT_EQ(updates->phase().message, unverified);
    EXPECT_FALSE(fs::exists(remains));
    install();
    EXPECT_NE(relaunched, "");
}

TEST_F(AppcastEngineTest, FeedsThatAreRefused) {
    const auto serves = [&](const Resource& resource) { server.resources["/appcast.xml"] = resource; };
    publish(good, {.version = "2.0", .build = "200", .signature = "none"});
    expectRefused(unverified, "an unsigned entry");
    publish(good, {.version = "2.0", .build = "200", .length = 600ULL * 1024 * 1024});
    expectRefused(unverified, "an archive without bounds");
    const std::string longest(64, '9');
    for (const auto& [what, version, number] :
         std::vector<std::array<std::string, 3>>{{"no short version", "", "200"},
                                                 {"a line break in the version", "2.0\nUPDATE phase updated", "200"},
                                                 {"a line break in the build", "2.0",
                                                  "200\n"
                                                  "1"},
                                                 {"a version without end", longest + "9", "200"},
                                                 {"a build without end", "2.0", longest + "9"},
                                                 {"letters that turn the line around", "2.0\xE2\x80\xAE", "200"}}) {
        publish(good, {.version = version, .build = number});
        expectRefused(unverified, what);
        EXPECT_EQ(archiveRequests, 0) << what;
    }
    QByteArray attributes = "<rss";
    for (int i = 0; i < 100'000; ++i)
        attributes += " a" + QByteArray::number(i) + "='1'";
    serves({.body = attributes + "/>"});
    expectRefused(unverified, "attributes for minutes");
    serves({.body = "<rss>", .announcedLength = 100'000'000, .isEndless = true});
    expectRefused(unverified, "a feed of 100 MB");
    serves({.body = "<rss><channel>", .isEndless = true});
    expectRefused(unverified, "a feed without end");
    serves({.body = "<html><body>Welcome to the hotel</body></html>"});
    expectRefused(unverified, "no feed");
    serves({.body = "<!DOCTYPE x [<!ENTITY a 'b'>]><rss>&a;</rss>"});
    expectRefused(unverified, "a document type");
    serves({.body = "<rss><channel><item>"});
    expectRefused(unverified, "half a feed");
    serves({.status = 500});
    expectRefused(unreachable, "an error page");
    serves({.redirect = server.plainAddress("/plain.xml")});
    expectRefused(unreachable, "sent on to plain http");
    serves({.redirect = server.address("/appcast.xml")});
    expectRefused(unreachable, "sent round in circles");
    publish(good);
    trustsServer = false;
    expectRefused(unreachable, "a server that nobody vouches for");
    EXPECT_EQ(server.requestsFor("/plain.xml"), 0);
}

TEST_F(AppcastEngineTest, DownloadsThatAreRefused) {
    const auto archive = [&]() -> Resource& { return server.resources["/archive.tar.gz"]; };
    publish(good, {.version = "2.0", .build = "200", .signature = testing::SigningKey().signatureOver(good)});
    expectRefused(unverified, "another key's signature");
    publish(good, {.version = "2.0", .build = "200", .signature = "bm90IGEgc2lnbmF0dXJl"});
    expectRefused(unverified, "no signature");
    publish(good);
    archive().body[1000] = static_cast<char>(archive().body[1000] ^ 1);
    expectRefused(unverified, "one bit");
    publish(good);
    archive().body.chop(1);
    expectRefused(unverified, "one byte short");
    publish(good);
    archive().body += "x";
    expectRefused(unverified, "one byte more");
    publish(good);
    archive().isEndless = true;
    expectRefused(unverified, "no end");
    publish(good);
    archive() = {.status = 404};
    expectRefused(unreachable, "not there");
    publish(good);
    archive().redirect = server.plainAddress("/plain");
    expectRefused(unreachable, "sent on to plain http");
    publish(good, {.version = "2.0", .build = "200", .url = server.plainAddress("/plain")});
    expectRefused(unreachable, "announced at plain http");
    publish(good, {.version = "2.0", .build = "200", .url = "file:///etc/passwd"});
    expectRefused(unreachable, "announced as a file");
    EXPECT_EQ(server.requestsFor("/plain"), 0);
}

TEST_F(AppcastEngineTest, SignedArchivesThatAreRefused) {
    const auto with = [](const ArchiveItem& item) {
        auto items = testing::release("2.0", "200");
        items.push_back(item);
        return testing::archiveOf(items);
    };
    const std::vector<std::pair<std::string, QByteArray>> broken{
        {"climbs", with({.path = "Vantoro-2.0/../../escaped"})},
        {"absolute", with({.path = folder.path() + "/escaped"})},
        {"beside its folder", with({.path = "escaped"})},
        {"in another folder", with({.path = "other/escaped"})},
        {"a link", with({.path = "Vantoro-2.0/link", .link = "/etc"})},
        {"a hard link", with({.path = "Vantoro-2.0/link", .link = "/etc/passwd", .isHardLink = true})},
        {"over a file", with({.path = "Vantoro-2.0/bin/vantoro/x"})},
        {"twice", with({.path = "Vantoro-2.0/bin/vantoro"})},
        {"not an archive", QByteArray(5000, 'x')},
        {"cut", good.left(good.size() / 2)}};
    for (const auto& [what, archive] : broken) {
        publish(archive);
        expectRefused(unfinished, what);
    }
    publish(with({.path = "Vantoro-2.0/stowaway"}));
    expectRefused(unverified, "a file that the manifest does not name");
    publish(good, {.version = "2.1", .build = "200"});
    expectRefused(unverified, "another version than the manifest's");
    auto other = testing::release("2.0", "200");
    other[0].content = "#!/bin/sh\necho vantoro 12.0\n";
    publish(testing::archiveOf(other));
    expectRefused(unfinished, "a program that says another version");
    publish(testing::archiveOf(testing::release("0.9", "90")));
    expectRefused(unverified, "an older release under a newer one's name");
    publish(testing::archiveOf(testing::release("0.9", "90")), {.version = "2.0", .build = "90"});
    install();
    EXPECT_EQ(updates->phase().kind, Kind::current) << "an older release is no update";
    updates.reset();
    auto crippled = testing::release("2.0", "200");
    crippled[0].content = "#!/bin/sh\nexit 127\n";
    publish(testing::archiveOf(crippled));
    expectRefused(unfinished, "a program that does not run here");
}

TEST_F(AppcastEngineTest, CopiesThatCannotBeReplacedStayAsTheyAre) {
    publish(good);
    start();
    EXPECT_TRUE(updates->automaticallyChecksForUpdates());
    updates.reset();
    const std::string manifest = copy() + "/share/vantoro/manifest.json";
    const std::string text = testing::fileText(manifest);
    fs::remove(manifest);
    before = contents();
    start();
    EXPECT_FALSE(updates->automaticallyChecksForUpdates()) << "a package manager looks after it";
    EXPECT_TRUE(updates->isInformationOnly()) << "nor is an install offered";
    expectRefused(immovable, "a package manager's");
    EXPECT_EQ(server.requestsFor("/archive.tar.gz"), 0);
    folder.write("Vantoro/share/vantoro/manifest.json", text);
    // As when an archive was unpacked right into ~/.local.
    folder.write("Vantoro/share/fonts/mine.ttf", "font");
    before = contents();
    publish(good);
    expectRefused(immovable, "a folder with other things in it");
}

TEST_F(AppcastEngineTest, WhatRunsOnNewerSystemsOrOthersIsNotOffered) {
    publish(good, {.version = "2.0", .build = "200", .minimumSystem = "999.0"});
    install();
    EXPECT_EQ(updates->phase().kind, Kind::needsNewerSystem);
    EXPECT_EQ(updates->phase().release->version, "2.0");
    publish(good, {.version = "2.0", .build = "200", .system = "macos"});
    install();
    EXPECT_EQ(updates->phase().kind, Kind::current);
}

TEST_F(AppcastEngineTest, AutomaticChecksComeOnceADayAndNeverUnseenOrUnwanted) {
    const auto next = [&] { return std::stod(settings.storedText("vantoro.updates.nextCheck").value_or("0")); };
    publish(good);
    settings.storeText("vantoro.updates.nextCheck", std::to_string(today - 1));
    start();
    QCoreApplication::processEvents();
    EXPECT_TRUE(server.requests.empty()) << "no window has been seen";
    updates->setAutomaticallyChecksForUpdates(false);
    updates->windowWasSeen();
    updates.reset();
    start();
    updates->windowWasSeen();
    EXPECT_FALSE(updates->automaticallyChecksForUpdates());
    EXPECT_FALSE(waitUntil([&] { return !server.requests.empty(); }, std::chrono::milliseconds(100))) << "switched off";
    updates->setAutomaticallyChecksForUpdates(true);
    EXPECT_TRUE(waitUntil([&] { return updates->phase().kind == Kind::available; }));
    EXPECT_TRUE(waitUntil([&] { return engine->canCheckForUpdates(); }));
    EXPECT_EQ(server.requests.size(), 1U) << "nothing is downloaded unasked";
    EXPECT_EQ(next(), today + 24.5 * 3600);
    EXPECT_EQ(updates->lastUpdateCheckDate(), today);
    // A failure is kept to itself and tried again before a day has passed.
    server.resources.clear();
    updates->checkForUpdatesInBackground();
    EXPECT_TRUE(waitUntil([&] { return engine->canCheckForUpdates(); }));
    EXPECT_EQ(updates->phase().kind, Kind::available);
    EXPECT_EQ(next(), today + 1.5 * 3600);
    // Never checked before: within the hour. A clock that was put back: likewise.
    for (const char* const stored : {"", "9999999999"}) {
        settings.storeText("vantoro.updates.nextCheck", stored);
        updates.reset();
        start();
        updates->windowWasSeen();
        EXPECT_EQ(next(), today + 1800) << stored;
    }
}

/// Never answers.
class Undecided : public Updates {
public:
    using Updates::Updates;

    void showUpdateFound(const AppcastItem&, const UserUpdateState&, UpdateReply) override { hasFound = true; }

    bool hasFound = false;
};

TEST_F(AppcastEngineTest, ACheckThatFallsDueDuringASessionWaitsForItsEnd) {
    publish(good);
    settings.storeText("vantoro.updates.nextCheck", std::to_string(today - 1));
    start();
    Undecided undecided(engine, settings);
    undecided.start();
    undecided.check();
    undecided.windowWasSeen();
    EXPECT_TRUE(waitUntil([&] { return undecided.hasFound; }));
    looksAtTheClock = 0;
    // Timers of full seconds go off at once in the first half of one.
    EXPECT_FALSE(waitUntil([&] { return looksAtTheClock > 2; }, std::chrono::milliseconds(700)));
    EXPECT_EQ(server.requests.size(), 1U);
}

TEST_F(AppcastEngineTest, WhatIsOnlyToBeReadIsShownAndNotInstalled) {
    server.resources["/appcast.xml"].body =
        "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel><item>"
        "<sparkle:version>200</sparkle:version><link>https://updates.vantoro.example/2</link></item></channel></rss>";
    start();
    updates->install(UpdateOrigin::controlBar);
    EXPECT_TRUE(waitUntil([&] { return updates->phase().kind == Kind::available && engine->canCheckForUpdates(); }));
    EXPECT_EQ(updates->phase().release->version, "200");
    EXPECT_TRUE(updates->isInformationOnly());
    EXPECT_EQ(server.requests.size(), 1U);
    updates.reset();
    start();
    EXPECT_EQ(updates->phase().kind, Kind::available);
    EXPECT_TRUE(updates->isInformationOnly()) << "after a restart too";
}

TEST_F(AppcastEngineTest, ADrippingArchiveIsGivenUpAndKept) {
    using namespace std::chrono_literals;
    server.resources["/archive.tar.gz"] = {.body = "drops", .announcedLength = 100'000, .isStuck = true};
    UpdateRequests requests("1.0", testing::UpdateServer::authorities());
    for (const DownloadLimits& limits :
         {DownloadLimits{.altogether = 1h, .span = 300ms}, DownloadLimits{.altogether = 300ms, .span = 1h}}) {
        Outcome<UpdateError> outcome;
        std::uint64_t came = 0;
        const std::string path = folder.path() + "/archive";
        ArchiveDownload download(requests, QUrl(QString::fromStdString(server.address("/archive.tar.gz"))), 100'000,
                                 path,
                                 {.received = [&](std::uint64_t bytes) { came += bytes; },
                                  .startedOver = [] {},
                                  .finished = [&](const Outcome<UpdateError>& ended) { outcome = ended; }},
                                 limits);
        download.start();
        EXPECT_TRUE(waitUntil([&] { return outcome.failed(); }));
        EXPECT_EQ(outcome.fault().code, SparkleCode::download);
        EXPECT_EQ(testing::fileText(path), std::string("drops").substr(0, came));
        fs::remove(path);
    }
}

/// Takes every offer and keeps the newest cancellation.
class Canceller : public Updates {
public:
    using Updates::Updates;

    void showUserInitiatedUpdateCheck(UpdateAction cancellation) override { cancel = std::move(cancellation); }
    void showDownloadInitiated(UpdateAction cancellation) override { cancel = std::move(cancellation); }

    UpdateAction cancel;
};

TEST_F(AppcastEngineTest, ACancelledSessionSaysNothingMore) {
    publish(good);
    start();
    auto canceller = std::make_unique<Canceller>(engine, settings);
    canceller->start();
    for (const std::string until : {"/appcast.xml", "/archive.tar.gz"}) {
        canceller->install(UpdateOrigin::controlBar);
        const int asked = server.requestsFor(until);
        EXPECT_TRUE(waitUntil([&] { return server.requestsFor(until) > asked; }));
        canceller->cancel();
        EXPECT_TRUE(engine->canCheckForUpdates());
        EXPECT_FALSE(waitUntil([&] { return !engine->canCheckForUpdates(); }, std::chrono::milliseconds(50)));
        canceller->cancel();
    }
    EXPECT_EQ(relaunched, "");
    const UpdateAction late = canceller->cancel;
    canceller.reset();
    updates.reset();
    engine.reset();
    late();
}

TEST_F(AppcastEngineTest, ItEndsAtAnyPointWithoutAWord) {
    publish(good);
    server.resources["/archive.tar.gz"].isEndless = true;
    for (const Kind kind : {Kind::checking, Kind::available, Kind::downloading}) {
        start();
        updates->install(UpdateOrigin::controlBar);
        EXPECT_TRUE(waitUntil([&] { return updates->phase().kind == kind; }));
        updates.reset();
        engine.reset();
        QCoreApplication::processEvents();
    }
}

} // namespace
} // namespace vantoro
