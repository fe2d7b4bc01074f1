// Texts of Core Foundation's.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace vantoro {

/// Room for one text in UTF-8, of at most 127 bytes.
using CFTextBuffer = std::array<char, 128>;

/// The text of an object, which may be null, written into `buffer`; none when it is no text or does not fit.
std::optional<std::string_view> cfText(CFTypeRef object, CFTextBuffer& buffer);

/// Texts that recur in every sample, kept once for the life of a source.
class KeptTexts {
public:
    /// The same text, valid as long as this object; allocates only for one that is new.
    std::string_view keep(std::string_view text) {
        const auto known = texts_.find(text);
        return known != texts_.end() ? *known : *texts_.emplace(text).first;
    }

private:
    std::set<std::string, std::less<>> texts_;
};

} // namespace vantoro
