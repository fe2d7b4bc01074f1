// From a downloaded archive to a folder that can take the place of the running copy.
#pragma once

#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Updates/Copy/InstalledCopy.h"
#include "Platform/UpdateEngine.h"

#include <functional>
#include <optional>
#include <string>

namespace vantoro {

/// What an archive has to be.
struct ExpectedRelease {
    std::string publicKey;
    std::string signature;
    std::string version;
    std::string build;
    /// The running copy's, which it has to be newer than.
    std::string currentBuild;
};

/// Checks the signature over the whole archive; then unpacks it into the folder, which it makes; then checks that it is
/// the release it was announced as, whole, and newer; then gives it the old copy's rights and has its program say its
/// version, so that one that cannot run here takes no place. The folder is the caller's to
/// remove. Slow. `progress`: 0 to 1; false ends it.
Outcome<UpdateError> prepareRelease(const Descriptor& archive, const ExpectedRelease& expected,
                                    const InstalledCopy& copy, const std::string& folder,
                                    const std::function<bool(double share)>& progress);

} // namespace vantoro
