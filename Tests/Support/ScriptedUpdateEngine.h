// An update engine that does what a test tells it, and notes what it was asked for.
#pragma once

#include "Model/Text/Release.h"
#include "Platform/UpdateEngine.h"
#include "Support/Testing.h"

namespace vantoro::testing {

class ScriptedUpdateEngine : public UpdateEngine {
public:
    std::optional<std::string> feedAddress() const override { return feed; }
    std::string currentVersion() const override { return version; }
    std::string currentBuild() const override { return build; }
    int compareVersion(const std::string& one, const std::string& other) const override {
        return compareVersions(one, other);
    }
    bool canInstallUpdates() const override { return canInstall; }
    Outcome<UpdateError> startUpdater(UpdateDriver& told) override {
        calls.emplace_back("start");
        if (!startOutcome.failed())
            driver = &told;
        return startOutcome;
    }
    bool canCheckForUpdates() const override { return canCheck; }
    void checkForUpdates() override { calls.emplace_back("check"); }
    void checkForUpdatesInBackground() override { calls.emplace_back("check in background"); }
    bool automaticallyChecksForUpdates() const override { return isAutomatic; }
    void setAutomaticallyChecksForUpdates(bool automatic) override { isAutomatic = automatic; }
    std::optional<double> lastUpdateCheckDate() const override { return lastCheck; }
    void windowWasSeen() override { calls.emplace_back("seen"); }

    /// Tells the driver of an update; what it answers is noted.
    void find(const AppcastItem& item) {
        driver->showUpdateFound(item, {}, [this](UpdateChoice choice) {
            calls.emplace_back(choice == UpdateChoice::install ? "install" : "dismiss");
        });
    }

    std::optional<std::string> feed = "https://updates.vantoro.example/appcast.xml";
    std::string version = "1.2";
    std::string build = "120";
    Outcome<UpdateError> startOutcome;
    bool canCheck = true;
    bool canInstall = true;
    bool isAutomatic = true;
    std::optional<double> lastCheck;
    std::vector<std::string> calls;
    /// Set while it runs.
    UpdateDriver* driver = nullptr;
};

} // namespace vantoro::testing
