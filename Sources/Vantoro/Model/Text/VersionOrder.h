// Which of two versions is the newer one.
#pragma once

#include <string_view>

namespace vantoro {

/// Below 0 when `version` is older than `other`, 0 when they are equal, above 0 when it is newer. The order of
/// Sparkle's standard comparator: runs of digits compare as numbers of any length, words by their letters, separators
/// do not count; where one ends early it is the older one ("1.0" < "1.0.1"), unless the other goes on with a word
/// ("1.0b1" < "1.0"); a number beats a word in the same place.
int compareVersions(std::string_view version, std::string_view other);

} // namespace vantoro
