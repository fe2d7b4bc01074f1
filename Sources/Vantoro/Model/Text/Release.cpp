#include "Model/Text/Release.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <utility>

namespace vantoro {

namespace {

using Json = nlohmann::json;

constexpr std::array<std::pair<UpdateOrigin, std::string_view>, 3> origins{{{UpdateOrigin::controlBar, "controlBar"},
                                                                            {UpdateOrigin::settings, "settings"},
                                                                            {UpdateOrigin::menuBar, "menuBar"}}};

std::string_view name(UpdatePhase::Kind kind) {
    using Kind = UpdatePhase::Kind;
    switch (kind) {
    case Kind::idle:
        return "idle";
    case Kind::checking:
        return "checking";
    case Kind::current:
        return "current";
    case Kind::updated:
        return "updated";
    case Kind::available:
        return "available";
    case Kind::needsNewerSystem:
        return "needsNewerSystem";
    case Kind::downloading:
        return "downloading";
    case Kind::installing:
        return "installing";
    case Kind::failed:
        return "failed";
    }
    return "";
}

Json parsed(std::string_view text) {
    return Json::parse(text, nullptr, false);
}

std::optional<std::string> textUnder(const Json& object, const char* key) {
    if (!object.is_object() || !object.contains(key) || !object[key].is_string())
        return std::nullopt;
    return object[key].get<std::string>();
}

/// Names and numbers come from a feed that may hold any bytes.
std::string dumped(const Json& value) {
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

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

std::string plainVersion(std::string_view text) {
    std::string plain;
    for (const char c : text)
        if (c >= ' ' && c <= '~' && plain.size() < longestVersion)
            plain += c;
    return plain;
}

bool isPlainVersion(std::string_view text) {
    return !text.empty() && plainVersion(text) == text;
}

std::string_view rawValue(UpdateOrigin origin) {
    return std::ranges::find(origins, origin, &std::pair<UpdateOrigin, std::string_view>::first)->second;
}

std::optional<UpdateOrigin> updateOrigin(std::string_view rawValue) {
    const auto found = std::ranges::find(origins, rawValue, &std::pair<UpdateOrigin, std::string_view>::second);
    return found == origins.end() ? std::nullopt : std::optional(found->first);
}

std::string logText(const UpdatePhase& phase) {
    std::string text(name(phase.kind));
    if (phase.release)
        text += fmt::format(" {} ({})", phase.release->version, phase.release->build);
    if (!phase.message.empty())
        text += fmt::format(": {}", phase.message);
    return text;
}

std::string encoded(const Release& release) {
    return dumped({{"version", release.version}, {"build", release.build}});
}

std::optional<Release> decodedRelease(std::string_view text) {
    const Json object = parsed(text);
    const auto version = textUnder(object, "version");
    const auto build = textUnder(object, "build");
    if (!version || !build || !isPlainVersion(*version) || !isPlainVersion(*build))
        return std::nullopt;
    return Release{.version = *version, .build = *build, .notes = {}};
}

std::string encoded(const Relaunch& relaunch) {
    Json object{{"fromBuild", relaunch.fromBuild}, {"at", relaunch.at}};
    if (relaunch.origin)
        object["origin"] = rawValue(*relaunch.origin);
    return dumped(object);
}

std::optional<Relaunch> decodedRelaunch(std::string_view text) {
    const Json object = parsed(text);
    const auto fromBuild = textUnder(object, "fromBuild");
    if (!fromBuild || !object.contains("at") || !object["at"].is_number())
        return std::nullopt;
    const std::optional<std::string> origin = textUnder(object, "origin");
    return Relaunch{.fromBuild = *fromBuild,
                    .at = object["at"].get<double>(),
                    .origin = origin ? updateOrigin(*origin) : std::nullopt};
}

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
