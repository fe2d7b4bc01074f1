#include "Model/Text/VersionOrder.h"

#include <algorithm>
#include <cctype>

namespace vantoro {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isSeparator(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 && std::isalnum(byte) == 0;
}

/// A run of digits or of letters; empty at the end.
std::string_view takePart(std::string_view& rest) {
    rest.remove_prefix(static_cast<std::size_t>(std::ranges::find_if_not(rest, isSeparator) - rest.begin()));
    if (rest.empty())
        return {};
    const bool isNumber = isDigit(rest.front());
    const auto end =
        std::ranges::find_if(rest, [isNumber](char c) { return isSeparator(c) || isDigit(c) != isNumber; });
    const std::string_view part = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    rest.remove_prefix(part.size());
    return part;
}

int compareNumbers(std::string_view one, std::string_view other) {
    const auto significant = [](std::string_view digits) {
        return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
    };
    one = significant(one);
    other = significant(other);
    if (one.size() != other.size())
        return one.size() < other.size() ? -1 : 1;
    return one.compare(other);
}

} // namespace

int compareVersions(std::string_view version, std::string_view other) {
    for (;;) {
        const std::string_view one = takePart(version);
        const std::string_view two = takePart(other);
        if (one.empty() && two.empty())
            return 0;
        // A word at the end names something that comes before the release.
        if (one.empty())
            return isDigit(two.front()) ? -1 : 1;
        if (two.empty())
            return isDigit(one.front()) ? 1 : -1;
        if (isDigit(one.front()) != isDigit(two.front()))
            return isDigit(one.front()) ? 1 : -1;
        const int order = isDigit(one.front()) ? compareNumbers(one, two) : one.compare(two);
        if (order != 0)
            return order;
    }
}

} // namespace vantoro
