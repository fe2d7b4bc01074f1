// A copy of the program in a folder of its own, and a server on the loopback address with releases for it.
#pragma once

#include "Model/Live/Settings.h"
#include "Model/Updates/Updates.h"
#include "Platform/Linux/Updates/AppcastEngine.h"
#include "Platform/Linux/Updates/ReleaseMaker.h"
#include "Platform/Linux/Updates/UpdateServer.h"
#include "Support/EventLoop.h"
#include "Support/Folders.h"
#include "Support/Golden.h"

namespace vantoro {

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
    /// Also that nothing is changed, and starts afresh.
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

} // namespace vantoro
