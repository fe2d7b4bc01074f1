#include "Platform/Linux/Apps/AppUnit.h"

#include <algorithm>
#include <cstdint>

namespace vantoro {

namespace {

int hexDigit(char character) {
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return -1;
}

/// Resolves the service manager's \xNN.
std::string unescaped(std::string_view part) {
    std::string text;
    for (std::size_t at = 0; at < part.size(); ++at) {
        const bool isEscape = part[at] == '\\' && at + 3 < part.size() && part[at + 1] == 'x' &&
                              hexDigit(part[at + 2]) >= 0 && hexDigit(part[at + 3]) >= 0;
        if (isEscape) {
            text += static_cast<char>(hexDigit(part[at + 2]) * 16 + hexDigit(part[at + 3]));
            at += 3;
        } else {
            text += part[at];
        }
    }
    return text;
}

void add(std::vector<std::string>& ids, std::string_view escaped) {
    constexpr std::string_view fileEnding = ".desktop";
    std::string id = unescaped(escaped);
    if (id.ends_with(fileEnding))
        id.erase(id.size() - fileEnding.size());
    if (!id.empty() && std::ranges::find(ids, id) == ids.end())
        ids.push_back(std::move(id));
}

/// Without and with its first part, which names the launcher or begins the id.
void addWithoutLauncher(std::vector<std::string>& ids, std::string_view parts) {
    if (const std::size_t dash = parts.find('-'); dash != std::string_view::npos)
        add(ids, parts.substr(dash + 1));
    add(ids, parts);
}

std::vector<std::string> idsOfAppUnit(std::string_view parts, bool isScope) {
    std::vector<std::string> ids;
    if (!isScope)
        parts = parts.substr(0, parts.find('@'));
    const std::size_t lastDash = parts.rfind('-');
    const bool hasEnding = lastDash != std::string_view::npos && lastDash != 0;
    if (isScope && hasEnding)
        addWithoutLauncher(ids, parts.substr(0, lastDash));
    addWithoutLauncher(ids, parts);
    if (!isScope && hasEnding)
        addWithoutLauncher(ids, parts.substr(0, lastDash));
    return ids;
}

/// 8-4-4-4-12 hexadecimal digits.
bool isUuid(std::string_view text) {
    constexpr std::string_view shape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return std::ranges::equal(text, shape, [](char character, char wanted) {
        return wanted == '-' ? character == '-' : hexDigit(character) >= 0;
    });
}

std::vector<std::string> idsOfSnapUnit(std::string_view parts) {
    constexpr std::size_t uuidCharacters = 36;
    std::string name = unescaped(parts);
    if (name.size() > uuidCharacters + 1 && isUuid(std::string_view(name).substr(name.size() - uuidCharacters)))
        name.erase(name.size() - uuidCharacters - 1);
    std::vector<std::string> ids;
    // Snap writes its entries as NAME_APP.desktop.
    if (const std::size_t dot = name.find('.'); dot != std::string::npos && dot != 0 && dot + 1 != name.size()) {
        name[dot] = '_';
        ids.push_back(std::move(name));
    }
    return ids;
}

} // namespace

std::vector<std::string> applicationIds(std::string_view controlGroup) {
    while (!controlGroup.empty()) {
        const std::size_t slash = controlGroup.rfind('/');
        const std::string_view component =
            slash == std::string_view::npos ? controlGroup : controlGroup.substr(slash + 1);
        controlGroup = controlGroup.substr(0, slash == std::string_view::npos ? 0 : slash);
        const bool isScope = component.ends_with(".scope");
        if (!isScope && !component.ends_with(".service"))
            continue; // a unit may divide its own group further
        const std::string_view unit = component.substr(0, component.rfind('.'));
        constexpr std::string_view app = "app-";
        constexpr std::string_view snap = "snap.";
        if (unit.starts_with(app))
            return idsOfAppUnit(unit.substr(app.size()), isScope);
        if (unit.starts_with(snap))
            return idsOfSnapUnit(unit.substr(snap.size()));
        return {};
    }
    return {};
}

} // namespace vantoro
