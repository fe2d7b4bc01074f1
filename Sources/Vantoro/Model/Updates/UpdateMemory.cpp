// What is remembered of the update that was found last, so that it is announced after a restart too.
#include "Model/Live/Settings.h"
#include "Model/Updates/Updates.h"

namespace vantoro {

namespace {

constexpr std::string_view availableKey = "vantoro.updates.available";
/// The build of it where there is only something to read.
constexpr std::string_view informationKey = "vantoro.updates.information";

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

} // namespace vantoro
