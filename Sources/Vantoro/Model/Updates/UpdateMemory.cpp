// What outlives the program: the update that was found last, so that it is announced after a restart too, and the
// marker that an installation leaves.
#include "Model/Live/Log.h"
#include "Model/Live/Settings.h"
#include "Model/Updates/Updates.h"

#include <fmt/format.h>

namespace vantoro {

namespace {

using Kind = UpdatePhase::Kind;

constexpr std::string_view availableKey = "vantoro.updates.available";
/// The build of it where there is only something to read.
constexpr std::string_view informationKey = "vantoro.updates.information";
constexpr double staleMarkerSeconds = 60;

} // namespace

std::optional<Release> Updates::restoredAvailability() {
    const std::optional<std::string> stored = settings_.storedText(availableKey);
    if (!engine_ || !stored)
        return std::nullopt;
    std::optional<Release> release = decodedRelease(*stored);
    if (!release || engine_->compareVersion(release->build, currentBuild()) <= 0) {
        forgetRemembered();
        return std::nullopt;
    }
    isInformationOnly_ = settings_.storedText(informationKey) == release->build;
    return release;
}

std::optional<Release> Updates::knownRelease() {
    return phase_.release ? phase_.release : restoredAvailability();
}

void Updates::remember(const Release& release) {
    settings_.storeText(availableKey, encoded(release));
    if (isInformationOnly_)
        settings_.storeText(informationKey, release.build);
    else
        settings_.forget(informationKey);
    announcesUpdate_ = true;
}

void Updates::forgetRemembered() {
    settings_.forget(availableKey);
    settings_.forget(informationKey);
}

void Updates::forgetAvailability() {
    forgetRemembered();
    announcesUpdate_ = false;
}

bool Updates::consumeRelaunch() {
    const std::optional<std::string> stored = settings_.storedText(relaunchKey);
    if (!engine_ || !stored || !engine_->settlesHandOver())
        return false;
    const std::optional<Relaunch> marker = decodedRelaunch(*stored);
    settings_.forget(relaunchKey);
    if (!marker)
        return false;
    Log::updates(fmt::format("relaunch marker from build {}, origin {}", marker->fromBuild,
                             marker->origin ? rawValue(*marker->origin) : "none"));
    if (environment_.now() - marker->at >= staleMarkerSeconds)
        return false;
    if (engine_->compareVersion(currentBuild(), marker->fromBuild) <= 0) {
        Log::updates("relaunched but still build " + currentBuild());
        installFailed_ = true;
        setPhase({.kind = Kind::failed,
                  .release = restoredAvailability(),
                  .message = "The update didn't install.",
                  .detail = fmt::format("Vantoro is still on {}. Try again.", currentVersion())});
        return true;
    }
    forgetAvailability();
    setPhase({.kind = Kind::updated});
    Log::updates(fmt::format("relaunched into {} (from build {})", currentVersion(), marker->fromBuild));
    retireLater();
    wantsSettings_ = marker->origin == Origin::settings;
    revealsUpdatesInSettings_ = wantsSettings_;
    return true;
}

void Updates::tellGaveWay(const std::string& version) {
    settings_.forget(relaunchKey);
    installFailed_ = true;
    Log::updates(fmt::format("{} gave way to {}", version, currentVersion()));
    setPhase({.kind = Kind::failed,
              .release = restoredAvailability(),
              .message = fmt::format("Vantoro {} didn't start.", version),
              .detail = fmt::format("This is {} again, as it was before the update.", currentVersion())});
}

} // namespace vantoro
