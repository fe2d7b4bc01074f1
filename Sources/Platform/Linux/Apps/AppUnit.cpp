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

} // namespace

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

namespace {

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

std::string_view unitOf(std::string_view controlGroup) {
    while (!controlGroup.empty()) {
        const std::size_t slash = controlGroup.rfind('/');
        const std::string_view component =
            slash == std::string_view::npos ? controlGroup : controlGroup.substr(slash + 1);
        if (component.ends_with(".scope") || component.ends_with(".service"))
            return component;
        // a unit may divide its own group further
        controlGroup = controlGroup.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
    return {};
}

std::vector<std::string> applicationIds(std::string_view controlGroup) {
    const std::string_view component = unitOf(controlGroup);
    const std::string_view unit = component.substr(0, component.rfind('.'));
    constexpr std::string_view app = "app-";
    constexpr std::string_view snap = "snap.";
    if (unit.starts_with(app))
        return idsOfAppUnit(unit.substr(app.size()), component.ends_with(".scope"));
    if (unit.starts_with(snap))
        return idsOfSnapUnit(unit.substr(snap.size()));
    return {};
}

std::string containerOf(std::string_view controlGroup) {
    constexpr std::size_t shownDigits = 12;
    constexpr std::size_t leastDigits = 32;
    while (!controlGroup.empty()) {
        const std::size_t slash = controlGroup.rfind('/');
        std::string_view part = slash == std::string_view::npos ? controlGroup : controlGroup.substr(slash + 1);
        controlGroup = controlGroup.substr(0, slash == std::string_view::npos ? 0 : slash);
        const bool isScope = part.ends_with(".scope");
        if (isScope || part.ends_with(".service"))
            part = part.substr(0, part.rfind('.'));
        // docker-ID, libpod-ID, cri-containerd-ID, crio-ID; with cgroupfs the ID alone below docker or a pod
        const std::string_view id = part.substr(part.rfind('-') + 1);
        const bool isMonitor = part.find("-conmon-") != std::string_view::npos;
        if (id.size() >= leastDigits && std::ranges::all_of(id, [](char digit) { return hexDigit(digit) >= 0; })) {
            const bool isNamed = id.size() == part.size()
                                     ? controlGroup.ends_with("docker") || controlGroup.ends_with("libpod_parent") ||
                                           controlGroup.find("kubepods") != std::string_view::npos ||
                                           controlGroup.find("buildkit") != std::string_view::npos
                                     : !isMonitor;
            if (isNamed)
                return std::string(id.substr(0, shownDigits));
        }
        constexpr std::string_view payload = "lxc.payload.";
        constexpr std::string_view nspawn = "systemd-nspawn@";
        constexpr std::string_view machine = "machine-";
        if (part.starts_with(payload))
            return std::string(part.substr(payload.size()));
        if (part.starts_with(nspawn))
            return unescaped(part.substr(nspawn.size()));
        if (isScope && part.starts_with(machine)) {
            const std::string name = unescaped(part.substr(machine.size()));
            return name.starts_with("qemu-") ? std::string() : name;
        }
        if (controlGroup == "/lxc")
            return std::string(part);
    }
    return {};
}

std::string kernelThreadName(std::string_view name) {
    constexpr std::string_view digits = "0123456789";
    constexpr std::string_view instance = "0123456789:/-_";
    const auto without = [&name](std::string_view ending) {
        const std::size_t last = name.find_last_not_of(ending);
        return last == std::string_view::npos ? name : name.substr(0, last + 1);
    };
    constexpr std::string_view worker = "kworker/";
    constexpr std::string_view interrupt = "irq/";
    if (name.starts_with(worker)) {
        const std::size_t mark = name.find_first_of("+-", worker.size());
        if (mark == std::string_view::npos || mark + 1 == name.size())
            return "kworker";
        name.remove_prefix(mark + 1);
        return std::string(worker) + std::string(without(instance));
    }
    if (name.starts_with(interrupt)) {
        const std::size_t dash = name.find('-');
        return dash == std::string_view::npos ? std::string(name)
                                              : std::string(interrupt) + std::string(name.substr(dash + 1));
    }
    if (const std::size_t slash = name.find('/'); slash != std::string_view::npos)
        return std::string(slash + 1 < name.size() && digits.find(name[slash + 1]) != std::string_view::npos
                               ? name.substr(0, slash)
                               : name);
    name = without(instance);
    // md127_resync
    if (const std::size_t end = name.find_first_not_of(digits, 2);
        name.starts_with("md") && end != std::string_view::npos && name[end] == '_')
        return "md" + std::string(name.substr(end));
    return std::string(name);
}

} // namespace vantoro
