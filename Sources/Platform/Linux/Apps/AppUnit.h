// Which application a control group is named for. Pure.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// The ids of desktop entries that the innermost unit of a control group may stand for, likeliest first; empty when the
/// unit is not an application's. Known are systemd's convention for desktops, app[-LAUNCHER]-ID[-RANDOM].scope and
/// app[-LAUNCHER]-ID[@RANDOM].service with "-" in a part written as \x2d, and snap's snap.NAME.APP[-RANDOM].scope.
std::vector<std::string> applicationIds(std::string_view controlGroup);

} // namespace vantoro
