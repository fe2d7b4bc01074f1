// The update controller, driven by a scripted engine and a clock of the test's own.
#include "Model/Live/Log.h"
#include "Model/Live/Settings.h"
#include "Model/Updates/Updates.h"
#include "Support/Folders.h"
#include "Support/ScriptedUpdateEngine.h"

namespace vantoro {
namespace {

using PhaseKind = UpdatePhase::Kind;
using testing::ScriptedUpdateEngine;

constexpr double launchTime = 1'700'000'000;
const std::string relaunchKey = "vantoro.updates.relaunch";
const std::string availableKey = "vantoro.updates.available";

UpdateError sparkle(int code) {
    return {.domain = std::string(sparkleErrorDomain), .code = code, .description = "it broke"};
}

class UpdatesTest : public ::testing::Test {
protected:
    Updates& updates() {
        if (!updates_) {
            updates_ =
                std::make_unique<Updates>(engine, settings,
                                          UpdatesEnvironment{.now = [this] { return now; },
                                                             .after =
                                                                 [this](double seconds, auto action) {
                                                                     planned.emplace(now + seconds, std::move(action));
                                                                 }});
            updates_->start();
        }
        return *updates_;
    }
    /// The program is started anew with what is stored.
    Updates& relaunched(const std::string& build) {
        updates_.reset();
        planned.clear();
        engine = std::make_shared<ScriptedUpdateEngine>();
        engine->build = build;
        return updates();
    }
    void pass(double seconds) {
        const double end = now + seconds;
        while (!planned.empty() && planned.begin()->first <= end) {
            auto next = planned.extract(planned.begin());
            now = next.key();
            next.mapped()();
        }
        now = end;
    }
    int calls(const std::string& name) const { return static_cast<int>(std::ranges::count(engine->calls, name)); }
    const UpdatePhase& phase() { return updates().phase(); }
    void expectFailure(const std::string& message, const std::string& detail) {
        EXPECT_EQ(phase().kind, PhaseKind::failed);
        EXPECT_EQ(phase().message, message);
        EXPECT_EQ(phase().detail, detail);
    }

    testing::TemporaryFolder folder;
    Settings settings{folder.path() + "/settings.ini"};
    std::shared_ptr<ScriptedUpdateEngine> engine = std::make_shared<ScriptedUpdateEngine>();
    double now = launchTime;
    std::multimap<double, std::function<void()>> planned;
    const AppcastItem newer{.versionString = "200",
                            .displayVersionString = "2.0",
                            .itemDescription = "<p>Fans &amp; heat</p>",
                            .contentLength = 10'000'000};

private:
    std::unique_ptr<Updates> updates_;
};

TEST_F(UpdatesTest, EveryFailureHasItsWords) {
    const std::string host = "Couldn't reach updates.vantoro.example.";
    const std::string connection = "Check your connection and try again.";
    const std::string unfinished = "The update didn't finish.";
    const std::string nothing = "Nothing was changed. Try again in a moment.";
    EXPECT_EQ(Updates::describe({.domain = std::string(urlErrorDomain), .code = -1009}),
              (Updates::Words{host, connection}));
    EXPECT_EQ(Updates::describe({.domain = "NSCocoaErrorDomain", .code = 4000}), (Updates::Words{unfinished, nothing}));
    const std::vector<std::pair<std::vector<int>, Updates::Words>> rows{
        {{4000, 4001, 4012},
         {"Vantoro can't replace itself here.", "Move Vantoro to your Applications folder and try again."}},
        {{4007, 4008}, {"The update was cancelled.", "Nothing was changed."}},
        {{1003, 1005},
         {"Move Vantoro to Applications first.", "macOS runs a downloaded app from a temporary copy until it's moved, "
                                                 "so there's nothing here to update."}},
        {{2, 1000, 3001, 3002},
         {"Not installed: it couldn't be verified.",
          "Every update is signed by Brisel. This one's signature didn't match, so nothing was changed."}},
        {{1002, 2001}, {host, connection}},
        {{1, 3, 3000, 4005, -7}, {unfinished, nothing}}};
    for (const auto& [codes, words] : rows)
        for (const int code : codes)
            EXPECT_EQ(Updates::describe(sparkle(code)), words) << code;
}

TEST_F(UpdatesTest, AnInstallGoesThroughEveryPhaseToTheHandOver) {
    updates().install(UpdateOrigin::menuBar);
    EXPECT_EQ(phase().kind, PhaseKind::checking);
    EXPECT_EQ(calls("check"), 1);
    engine->find(newer);
    EXPECT_EQ(phase().kind, PhaseKind::available);
    EXPECT_EQ(phase().release->notes, "Fans & heat");
    EXPECT_TRUE(updates().announcesUpdate());
    EXPECT_EQ(calls("install"), 0);
    pass(0.5);
    EXPECT_EQ(calls("install"), 1);
    engine->driver->showDownloadInitiated({});
    EXPECT_EQ(phase().kind, PhaseKind::downloading);
    const auto after = [&](const auto& tell) {
        tell();
        return updates().progress();
    };
    UpdateDriver& driver = *engine->driver;
    driver.showDownloadDidReceiveExpectedContentLength(0);
    EXPECT_EQ(after([&] { driver.showDownloadDidReceiveData(5); }), 0);
    driver.showDownloadDidReceiveExpectedContentLength(10'000'000);
    EXPECT_EQ(after([&] { driver.showDownloadDidReceiveData(4'999'995); }), 0.45);
    EXPECT_EQ(after([&] { driver.showDownloadDidReceiveData(9'000'000); }), 0.9);
    EXPECT_EQ(after([&] { driver.showDownloadDidStartExtractingUpdate(); }), 0.94);
    EXPECT_EQ(after([&] { driver.showExtractionReceivedProgress(0.5); }), 0.96);
    EXPECT_EQ(after([&] { driver.showExtractionReceivedProgress(-1); }), 0.94);
    EXPECT_EQ(after([&] { driver.showExtractionReceivedProgress(7); }), 0.98);
    EXPECT_EQ(settings.storedText(relaunchKey), std::nullopt);
    UpdateChoice choice = UpdateChoice::skip;
    driver.showReadyToInstallAndRelaunch([&](UpdateChoice chosen) { choice = chosen; });
    EXPECT_EQ(choice, UpdateChoice::install);
    EXPECT_EQ(phase().kind, PhaseKind::installing);
    EXPECT_EQ(decodedRelaunch(*settings.storedText(relaunchKey)),
              (Relaunch{.fromBuild = "120", .at = now, .origin = UpdateOrigin::menuBar}));
    driver.dismissUpdateInstallation();
    EXPECT_EQ(phase().kind, PhaseKind::installing) << "handed over: no cancellation";
}

TEST_F(UpdatesTest, ACheckOnlyTells) {
    updates().check();
    updates().check();
    EXPECT_EQ(calls("check"), 1);
    engine->find(newer);
    pass(0.5);
    EXPECT_EQ(calls("dismiss"), 1);
    engine->driver->dismissUpdateInstallation();
    EXPECT_EQ(phase().kind, PhaseKind::available);
    // Found again when the feed is asked anew for the install.
    updates().install(UpdateOrigin::controlBar);
    engine->find(newer);
    pass(0.5);
    EXPECT_EQ(calls("install"), 1);
    updates().check();
    EXPECT_EQ(phase().kind, PhaseKind::downloading) << "ignored while an update is under way";
    // The engine lets go before anything was handed over.
    engine->driver->dismissUpdateInstallation();
    expectFailure("The update was cancelled.", "Nothing was changed.");
    EXPECT_EQ(phase().release->version, "2.0");
}

TEST_F(UpdatesTest, AClickBetweenFindingAndFollowingUpInstallsAtOnce) {
    updates().check();
    engine->find(newer);
    updates().install(UpdateOrigin::settings);
    EXPECT_EQ(calls("install"), 1);
    pass(0.5);
    EXPECT_EQ(calls("install") + calls("dismiss"), 1) << "answered once";
}

TEST_F(UpdatesTest, InstallsUnaskedOnlyWhereToldSo) {
    updates().setInstallsWhenFound(true);
    updates().checkForUpdatesInBackground();
    engine->find(newer);
    pass(0.5);
    EXPECT_EQ(calls("install"), 1);
    engine->driver->dismissUpdateInstallation();
    AppcastItem toRead = newer;
    toRead.isInformationOnlyUpdate = true;
    engine->find(toRead);
    updates().install(UpdateOrigin::settings);
    pass(0.5);
    EXPECT_EQ(calls("install"), 1) << "there is nothing to install in it";
    updates().setInstallsWhenFound(false);
    engine->find(newer);
    pass(0.5);
    EXPECT_EQ(calls("install"), 1) << "what was asked for then is not meant for what comes later";
}

TEST_F(UpdatesTest, ADownloadCanBeCancelledAndTriedAgain) {
    updates().install(UpdateOrigin::menuBar);
    engine->find(newer);
    EXPECT_FALSE(updates().canCancel());
    pass(0.5);
    int cancelled = 0;
    const auto cancel = [&] {
        ++cancelled;
        engine->driver->dismissUpdateInstallation();
    };
    engine->driver->showDownloadInitiated(cancel);
    engine->driver->showDownloadDidReceiveData(5'000'000);
    EXPECT_TRUE(updates().canCancel());
    updates().cancel();
    expectFailure("The update was cancelled.", "Nothing was changed.");
    updates().cancel();
    EXPECT_EQ(cancelled, 1);
    updates().tryAgain(UpdateOrigin::menuBar);
    engine->find(newer);
    pass(0.5);
    EXPECT_EQ(calls("install"), 2);
    engine->driver->showDownloadInitiated(cancel);
    engine->driver->showDownloadDidStartExtractingUpdate();
    EXPECT_FALSE(updates().canCancel()) << "it was the download's";
}

TEST_F(UpdatesTest, TextsFromAFeedAreBoundedBeforeTheyAreKeptOrLogged) {
    updates().check();
    AppcastItem hostile = newer;
    hostile.displayVersionString = "2.0\nUPDATE phase updated\x1B[2J" + std::string(5000, '9');
    engine->find(hostile);
    EXPECT_EQ(phase().release->version, "2.0UPDATE phase updated[2J" + std::string(38, '9'));
    EXPECT_EQ(decodedRelease(*settings.storedText(availableKey))->version, phase().release->version);
    Log::updatesEnabled = true;
    ::testing::internal::CaptureStdout();
    Log::updates("one\r\ntwo\x1B");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "UPDATE one??two?\n");
    Log::updatesEnabled = false;
}

TEST_F(UpdatesTest, NothingFound) {
    const auto notFound = [&](std::optional<AppcastItem> latest, std::optional<int> reason) {
        updates().check();
        UpdateError none = sparkle(1001);
        none.latestItem = std::move(latest);
        none.noUpdateReason = reason;
        bool isAcknowledged = false;
        engine->driver->showUpdateNotFoundWithError(none, [&] { isAcknowledged = true; });
        EXPECT_TRUE(isAcknowledged);
    };
    settings.storeText(availableKey, encoded(Release{.version = "2.0", .build = "200", .notes = {}}));
    EXPECT_EQ(phase().kind, PhaseKind::available) << "remembered from the last run";
    notFound(newer, 1);
    EXPECT_EQ(phase().kind, PhaseKind::current);
    EXPECT_EQ(settings.storedText(availableKey), std::nullopt);
    pass(7.9);
    EXPECT_EQ(phase().kind, PhaseKind::current);
    pass(0.1);
    EXPECT_EQ(phase().kind, PhaseKind::idle);
    notFound(std::nullopt, reasonSystemIsTooOld);
    EXPECT_EQ(phase().kind, PhaseKind::current);
    notFound(newer, reasonSystemIsTooOld);
    EXPECT_EQ(phase().kind, PhaseKind::needsNewerSystem);
    EXPECT_EQ(phase().release->version, "2.0");
    pass(60);
    EXPECT_EQ(phase().kind, PhaseKind::needsNewerSystem) << "an earlier phase's retirement is not this one's";
}

TEST_F(UpdatesTest, ABusyUpdaterIsWaitedForAndThenGivenUp) {
    engine->canCheck = false;
    updates().check();
    pass(5);
    EXPECT_EQ(phase().kind, PhaseKind::checking);
    engine->canCheck = true;
    pass(0.25);
    EXPECT_EQ(calls("check"), 1);
    engine->driver->didFinishUpdateCycleFor(UpdateCheck::byUser, {});
    EXPECT_EQ(phase().kind, PhaseKind::idle) << "a check that ends without a word";
    engine->canCheck = false;
    updates().install(UpdateOrigin::controlBar);
    pass(9.75);
    EXPECT_EQ(phase().kind, PhaseKind::checking);
    pass(0.25);
    expectFailure("The update didn't start.", "The updater stayed busy. Try again in a moment.");
    engine->canCheck = true;
    pass(60);
    EXPECT_EQ(calls("check"), 1);
}

TEST_F(UpdatesTest, WaitingForAnUpdaterThatIsBusyWithTheSameUpdateDoesNotBreakItsDownload) {
    engine->canCheck = false; // an automatic check runs
    updates().install(UpdateOrigin::controlBar);
    pass(1);
    engine->find(newer);
    pass(0.5);
    ASSERT_EQ(calls("install"), 1);
    engine->driver->showDownloadInitiated({});
    engine->driver->showDownloadDidReceiveData(5'000'000);
    pass(60);
    EXPECT_EQ(phase().kind, PhaseKind::downloading);
    engine->canCheck = true;
    pass(60);
    EXPECT_EQ(calls("check"), 0) << "nobody waits for that check any more";
}

TEST_F(UpdatesTest, AnErrorAfterTheHandOverTakesTheMarkerBack) {
    updates().install(UpdateOrigin::controlBar);
    engine->find(newer);
    pass(0.5);
    engine->driver->showReadyToInstallAndRelaunch([](UpdateChoice) {});
    engine->driver->showUpdaterError(sparkle(4000), {});
    expectFailure("Vantoro can't replace itself here.", "Move Vantoro to your Applications folder and try again.");
    EXPECT_EQ(phase().release->build, "200");
    EXPECT_EQ(settings.storedText(relaunchKey), std::nullopt);
}

TEST_F(UpdatesTest, AMarkerIsSettledOnce) {
    const Release known{.version = "2.0", .build = "200", .notes = {}};
    const auto leave = [&](double age, std::optional<UpdateOrigin> origin) {
        settings.storeText(availableKey, encoded(known));
        settings.storeText(relaunchKey, encoded(Relaunch{.fromBuild = "120", .at = now - age, .origin = origin}));
    };
    leave(59, UpdateOrigin::settings);
    EXPECT_TRUE(relaunched("120").consumeRelaunch());
    expectFailure("The update didn't install.", "Vantoro is still on 1.2. Try again.");
    EXPECT_EQ(phase().release, known);
    EXPECT_FALSE(updates().takeWantsSettings());
    EXPECT_FALSE(updates().consumeRelaunch());

    leave(60, UpdateOrigin::settings);
    EXPECT_FALSE(relaunched("120").consumeRelaunch());
    EXPECT_EQ(phase().kind, PhaseKind::available);
    EXPECT_EQ(settings.storedText(relaunchKey), std::nullopt);

    leave(3, UpdateOrigin::settings);
    EXPECT_TRUE(relaunched("200").consumeRelaunch());
    EXPECT_EQ(phase().kind, PhaseKind::updated);
    EXPECT_EQ(settings.storedText(availableKey), std::nullopt);
    EXPECT_TRUE(updates().revealsUpdatesInSettings());
    EXPECT_TRUE(updates().takeWantsSettings());
    pass(8);
    EXPECT_EQ(phase().kind, PhaseKind::idle);

    leave(3, std::nullopt);
    EXPECT_TRUE(relaunched("200").consumeRelaunch());
    EXPECT_FALSE(updates().takeWantsSettings());
    for (const char* const broken : {"", "{", "[]", R"({"fromBuild":7,"at":1})", R"({"fromBuild":"7","at":"1"})"}) {
        settings.storeText(relaunchKey, broken);
        EXPECT_FALSE(relaunched("200").consumeRelaunch()) << broken;
        EXPECT_EQ(settings.storedText(relaunchKey), std::nullopt) << broken;
    }
}

TEST_F(UpdatesTest, WhatIsRememberedIsForgottenOnceItIsNotNewer) {
    const std::vector<std::pair<std::string, PhaseKind>> cases{
        {R"({"version":"2.0","build":"121"})", PhaseKind::available},
        {R"({"version":"2.0","build":"120"})", PhaseKind::idle},
        {R"({"version":"2.0","build":"9"})", PhaseKind::idle},
        {R"({"version":"2.0"})", PhaseKind::idle},
        {R"({"version":"2\n0","build":"121"})", PhaseKind::idle},
        {"garbage", PhaseKind::idle}};
    for (const auto& [stored, kind] : cases) {
        settings.storeText(availableKey, stored);
        EXPECT_EQ(relaunched("120").phase().kind, kind) << stored;
        EXPECT_EQ(settings.storedText(availableKey).has_value(), kind == PhaseKind::available) << stored;
    }
    // What was withdrawn from the feed is no longer announced.
    settings.storeText(availableKey, cases[0].first);
    relaunched("120");
    engine->driver->updaterDidNotFindUpdate(sparkle(1001));
    EXPECT_EQ(phase().kind, PhaseKind::idle);
    EXPECT_FALSE(updates().announcesUpdate());
}

TEST_F(UpdatesTest, WithoutAFeedOrAnUpdaterNothingIsOffered) {
    engine->feed.reset();
    updates().check();
    updates().install(UpdateOrigin::settings);
    EXPECT_FALSE(updates().hasUpdater());
    EXPECT_TRUE(engine->calls.empty());
    relaunched("120");
    engine = nullptr;
    Updates none(nullptr, settings);
    none.start();
    none.check();
    EXPECT_FALSE(none.consumeRelaunch());
    EXPECT_EQ(none.phase().kind, PhaseKind::idle);
}

} // namespace
} // namespace vantoro
