// The update engine from the feed to the exchanged folder: a real server on the loopback address, real archives, real
// folders.
#include "Platform/Linux/Updates/AppcastEngineTest.h"

#include <sys/stat.h>

namespace vantoro {
namespace {

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
