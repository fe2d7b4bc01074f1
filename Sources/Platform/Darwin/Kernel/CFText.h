// Texts of Core Foundation's.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <optional>
#include <string_view>

namespace vantoro {

/// Room for one text in UTF-8, of at most 127 bytes.
using CFTextBuffer = std::array<char, 128>;

/// The text of an object, which may be null, written into `buffer`; none when it is no text or does not fit.
std::optional<std::string_view> cfText(CFTypeRef object, CFTextBuffer& buffer);

} // namespace vantoro
