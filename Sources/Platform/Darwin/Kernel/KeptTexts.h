// Texts that recur in every sample, kept once for the life of a source.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace vantoro {

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
