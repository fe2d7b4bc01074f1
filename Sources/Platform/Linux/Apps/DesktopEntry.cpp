#include "Platform/Linux/Apps/DesktopEntry.h"

#include <algorithm>
#include <iterator>

namespace vantoro {

namespace {

std::string_view withoutBlanks(std::string_view text) {
    const auto isBlank = [](char character) { return character == ' ' || character == '\t' || character == '\r'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Resolves the escapes that every value may hold.
std::string unescaped(std::string_view value) {
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] != '\\' || at + 1 == value.size()) {
            text += value[at];
            continue;
        }
        switch (value[++at]) {
        case 's':
            text += ' ';
            break;
        case 'n':
            text += '\n';
            break;
        case 't':
            text += '\t';
            break;
        case 'r':
            text += '\r';
            break;
        case '\\':
            text += '\\';
            break;
        default: // left for the command line's own quoting
            text += '\\';
            text += value[at];
        }
    }
    return text;
}

/// The words of an Exec value. Empty when its quotes do not close.
std::vector<std::string> commandWords(std::string_view exec) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    bool inQuotes = false;
    const auto finish = [&] {
        const bool isFieldCode = word.size() == 2 && word[0] == '%' && word[1] != '%';
        if (inWord && !isFieldCode)
            words.push_back(word);
        word.clear();
        inWord = false;
    };
    for (std::size_t at = 0; at < exec.size(); ++at) {
        const char character = exec[at];
        if (character == '"') {
            inQuotes = !inQuotes;
            inWord = true;
        } else if (character == '\\' && at + 1 < exec.size()) {
            word += exec[++at];
            inWord = true;
        } else if (!inQuotes && (character == ' ' || character == '\t' || character == '\n')) {
            finish();
        } else {
            if (character == '%' && at + 1 < exec.size() && exec[at + 1] == '%')
                ++at;
            word += character;
            inWord = true;
        }
    }
    if (inQuotes)
        return {};
    finish();
    return words;
}

template <std::size_t count>
bool isOneOf(const std::string_view (&names)[count], std::string_view name) {
    return std::ranges::find(names, name) != std::end(names);
}

/// "python3.11" is python3's.
std::string_view withoutVersion(std::string_view name) {
    const std::size_t last = name.find_last_not_of("0123456789.-");
    return last == std::string_view::npos ? name : name.substr(0, last + 1);
}

} // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string_view text) {
    if (text.find('\0') != std::string_view::npos)
        return {};
    std::optional<std::string_view> name, exec, type, terminal, noDisplay, hidden;
    struct Key {
        std::string_view title;
        std::optional<std::string_view>* value;
    };
    const Key keys[] = {{"Name", &name},         {"Exec", &exec},           {"Type", &type},
                        {"Terminal", &terminal}, {"NoDisplay", &noDisplay}, {"Hidden", &hidden}};
    bool inGroup = false;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t newline = text.find('\n', start);
        const std::string_view line = withoutBlanks(text.substr(start, newline - start));
        start = newline == std::string_view::npos ? text.size() : newline + 1;
        if (line.starts_with('[')) {
            if (inGroup)
                break;
            inGroup = line == "[Desktop Entry]";
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inGroup || line.starts_with('#') || equals == std::string_view::npos)
            continue;
        const std::string_view title = withoutBlanks(line.substr(0, equals));
        for (const Key& key : keys)
            if (key.title == title && !*key.value)
                *key.value = withoutBlanks(line.substr(equals + 1));
    }
    if (!name || type != "Application")
        return {};
    DesktopEntry entry;
    std::ranges::copy_if(unescaped(*name), std::back_inserter(entry.name), [](char character) {
        return static_cast<unsigned char>(character) >= ' ' && character != '\x7f';
    });
    if (entry.name.empty())
        return {};
    if (exec)
        entry.command = commandWords(unescaped(*exec));
    entry.terminal = terminal == "true";
    entry.hidden = noDisplay == "true" || hidden == "true";
    return entry;
}

std::string_view commandProgram(const std::vector<std::string>& command) {
    std::size_t at = 0;
    if (at < command.size() && baseName(command[at]) == "env")
        for (++at; at < command.size() && (command[at].starts_with('-') || command[at].find('=') != std::string::npos);)
            ++at;
    if (at == command.size())
        return {};
    if (baseName(command[at]) != "flatpak")
        return command[at];
    constexpr std::string_view option = "--command=";
    for (const std::string& word : command)
        if (word.starts_with(option))
            return std::string_view(word).substr(option.size());
    return {};
}

bool isLauncher(std::string_view programName) {
    static constexpr std::string_view launchers[] = {
        "busybox", "bwrap",       "dbus-launch", "electron", "env",     "flatpak", "flatpak-spawn",
        "gjs",     "gjs-console", "java",        "lua",      "mono",    "node",    "nodejs",
        "perl",    "php",         "pkexec",      "python",   "qemu",    "ruby",    "snap",
        "sudo",    "systemd",     "systemd-run", "wine",     "xdg-open"};
    return isShell(programName) || isOneOf(launchers, programName) || isOneOf(launchers, withoutVersion(programName));
}

} // namespace vantoro
