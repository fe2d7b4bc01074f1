// From a downloaded archive to a folder that can take the place of the running copy.
#pragma once

#include "Model/Text/Outcome.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Updates/Copy/InstalledCopy.h"
#include "Platform/UpdateEngine.h"

#include <functional>
#include <optional>
#include <string>

namespace vantoro {

struct UnpackLimits {
    std::uint64_t bytes = 2'000'000'000;
    int entries = 20'000;
};

/// Why an archive could not be unpacked.
struct UnpackFault {
    std::string text;
    /// What the system gave as its reason, an errno; 0 where it is the archive's fault.
    int systemError = 0;
};

/// Unpacks the tar archive (gzip, xz, zstd or plain) in the open file into the folder, which must be there and empty,
/// without the one folder that everything in it lies in. Only folders and plain files are taken; their modes are
/// 755 and 644. `progress` is told the share of the archive's bytes that was read, and returns false to have it end.
/// It fails for a path that is absolute, climbs or leads over a link, a link, a device, a second file
/// of that name, more than the limits allow, a damaged archive, a disk that is full. The folder then holds a part.
Outcome<UnpackFault> unpackArchive(int archive, const std::string& folder,
                                   const std::function<bool(double share)>& progress, UnpackLimits limits = {});

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
