// The Mac's update engine: Sparkle's SPUUpdater, which checks, verifies, installs and relaunches by itself.
#pragma once

#include "Platform/UpdateEngine.h"

#include <memory>

namespace vantoro {

/// The feed and the key that archives are signed with are those of the main bundle; Sparkle reads them itself.
class DarwinUpdateEngine : public UpdateEngine {
public:
    /// Version and build of a program that lies in no bundle.
    DarwinUpdateEngine(std::string version, std::string build);
    ~DarwinUpdateEngine() override;

    std::optional<std::string> feedAddress() const override;
    std::string currentVersion() const override;
    std::string currentBuild() const override;
    int compareVersion(const std::string& version, const std::string& other) const override;

    Outcome<UpdateError> startUpdater(UpdateDriver& driver) override;
    bool canCheckForUpdates() const override;
    void checkForUpdates() override;
    void checkForUpdatesInBackground() override;

    bool automaticallyChecksForUpdates() const override;
    void setAutomaticallyChecksForUpdates(bool automatic) override;
    std::optional<double> lastUpdateCheckDate() const override;
    void windowWasSeen() override;

private:
    class Session;

    std::string version_;
    std::string build_;
    /// Once the updater runs.
    std::unique_ptr<Session> session_;
    bool windowWasSeen_ = false;
};

} // namespace vantoro
