// Unpacks a release into a folder that nothing can leave.
#pragma once

#include "Model/Text/Outcome.h"

#include <functional>
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

} // namespace vantoro
