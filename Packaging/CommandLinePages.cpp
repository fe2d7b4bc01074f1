// Prints what goes with the program's command line, from the table that `--help` is printed from: its manual page, or
// the completions of a shell.

#include "Model/CommandLine/CommandLineTable.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fmt/format.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

using vantoro::CommandLineSwitch;
using Value = CommandLineSwitch::Value;

/// The text with each character that `marks` holds led in by `escape`.
std::string escaped(std::string_view text, std::string_view marks, char escape) {
    std::string safe;
    for (const char c : text) {
        if (marks.find(c) != std::string_view::npos)
            safe += escape;
        safe += c;
    }
    return safe;
}

/// Text of a manual page. A bare hyphen is typeset as one, which nobody can copy into a shell, and a control character
/// at the start of a line begins a request.
std::string roff(std::string_view text) {
    std::string safe;
    for (const char c : text)
        safe += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    return !safe.empty() && (safe[0] == '.' || safe[0] == '\'') ? "\\&" + safe : safe;
}

std::string sentence(std::string_view text) {
    std::string whole(text);
    whole[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(whole[0])));
    return roff(whole) + ".\n";
}

/// Arguments of a call: switches bold, values (the words in capitals) in italics.
std::string typesetForm(std::string_view arguments) {
    const auto isLetter = [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; };
    const auto isCapital = [](char c) { return std::isupper(static_cast<unsigned char>(c)) != 0; };
    std::string text;
    for (std::size_t at = 0; at < arguments.size();) {
        const auto start = arguments.begin() + static_cast<std::ptrdiff_t>(at);
        const auto end = std::find_if_not(start, arguments.end(), [&](char c) { return isLetter(c) || c == '-'; });
        const std::string_view word(start, end);
        if (word.empty())
            text += arguments[at++];
        else
            text += fmt::format("\\f{}{}\\fR", std::ranges::all_of(word, isCapital) ? 'I' : 'B', roff(word));
        at += word.size();
    }
    return text;
}

std::string manualPage(std::string_view version, std::string_view date) {
    std::string page = fmt::format(".TH VANTORO 1 \"{}\" \"vantoro {}\" \"User Commands\"\n", date, version);
    page += ".nh\n.ad l\n"; // a switch must not be broken over two lines
    page += fmt::format(".SH NAME\nvantoro \\- {}\n", roff(vantoro::programPurpose()));
    page += ".SH SYNOPSIS\n.nf\n";
    for (const std::string_view form : vantoro::commandLineForms())
        page += fmt::format("\\fBvantoro\\fR {}\n", typesetForm(form));
    page += ".fi\n"
            ".SH DESCRIPTION\n"
            "Vantoro says which program the heat comes from, since when, whether that is normal, and what can be done\n"
            "about it.\n"
            "It measures fans, temperatures, power, processors, memory and processes, keeps half an hour of them, and\n"
            "concludes in plain sentences.\n"
            "Nothing leaves the machine, and no special rights are needed.\n"
            ".PP\n"
            "Without a switch it opens its window and the item in the menu bar; a second launch raises the window of\n"
            "the first.\n"
            "With\n"
            ".B \\-\\-explain\n"
            "it answers in the terminal.\n"
            ".SH OPTIONS\n"
            "A value follows its switch as the next argument or after an equals sign.\n";
    for (const CommandLineSwitch& option : vantoro::commandLineSwitches()) {
        page += fmt::format(".TP\n\\fB{}\\fR", roff(option.name));
        page += option.value == Value::none ? "\n" : fmt::format(" \\fI{}\\fR\n", option.valueName);
        page += sentence(option.help);
    }
    page += ".SH ENVIRONMENT\n";
    for (const vantoro::EnvironmentVariable& variable : vantoro::environmentVariables())
        page += fmt::format(".TP\n.B {}\n{}", variable.name, sentence(variable.help));
    page += ".SH EXIT STATUS\n";
    for (const vantoro::ExitCode& exit : vantoro::exitCodes())
        page += fmt::format(".TP\n.B {}\n{}", exit.code, sentence(exit.help));
    page += ".SH FILES\n"
            ".TP\n"
            ".I ~/.config/Brisel/Vantoro.conf\n"
            "The settings.\n"
            ".PP\n"
            ".BR vantoro\\-top (1)\n"
            "is looked for in the folder that the program itself lies in.\n"
            ".SH SEE ALSO\n"
            ".BR vantoro\\-top (1),\n"
            ".BR top (1)\n";
    return page;
}

std::string bashCompletion() {
    std::string names;
    std::map<Value, std::string> switchesWith;
    for (const CommandLineSwitch& option : vantoro::commandLineSwitches()) {
        names += fmt::format("{}{}", names.empty() ? "" : " ", option.name);
        std::string& group = switchesWith[option.value];
        group += fmt::format("{}{}", group.empty() ? "" : " | ", option.name);
    }
    return fmt::format(R"(# bash completion for vantoro
_vantoro() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}}
    # "--replay=x" comes as three words.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${{COMP_WORDS[COMP_CWORD - 2]}}
    fi
    COMPREPLY=()
    case $before in
    {0})
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        ;;
    {1}) ;;
    *) mapfile -t COMPREPLY < <(compgen -W '{2}' -- "$word") ;;
    esac
}}
complete -F _vantoro vantoro
)",
                       switchesWith[Value::file], switchesWith[Value::seconds], names);
}

std::string zshCompletion() {
    std::string text = "#compdef vantoro\n\n_arguments -S";
    for (const CommandLineSwitch& option : vantoro::commandLineSwitches()) {
        // Within an explanation a bracket or a colon would end it, and the whole stands in single quotes.
        std::string help = escaped(option.help, "[]:\\", '\\');
        for (std::size_t at = 0; (at = help.find('\'', at)) != std::string::npos; at += 4)
            help.replace(at, 1, "'\\''");
        const bool endsProgram = option.name == "--help" || option.name == "--version";
        text += fmt::format(" \\\n    '{}{}", endsProgram ? "(- *)" : "", option.name);
        if (option.value == Value::none)
            text += fmt::format("[{}]'", help);
        else
            text += fmt::format("=[{}]:{}:{}'", help, option.valueName, option.value == Value::file ? "_files" : " ");
    }
    return text + "\n";
}

std::string fishCompletion() {
    std::string text = "complete -c vantoro -f\n";
    for (const CommandLineSwitch& option : vantoro::commandLineSwitches()) {
        const char* const takes = option.value == Value::none ? "" : option.value == Value::file ? " -r -F" : " -x";
        text += fmt::format("complete -c vantoro -l {}{} -d '{}'\n", option.name.substr(2), takes,
                            escaped(option.help, "'\\", '\\'));
    }
    return text;
}

int print(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    if (arguments.size() == 3 && arguments[0] == "man")
        return print(manualPage(arguments[1], arguments[2]));
    if (arguments.size() == 1 && arguments[0] == "bash")
        return print(bashCompletion());
    if (arguments.size() == 1 && arguments[0] == "zsh")
        return print(zshCompletion());
    if (arguments.size() == 1 && arguments[0] == "fish")
        return print(fishCompletion());
    fmt::print(stderr, "Usage: vantoro-command-line-pages man VERSION DATE | bash | zsh | fish\n");
    return 2;
}
