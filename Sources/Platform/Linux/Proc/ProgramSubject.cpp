#include "Platform/Linux/Proc/ProgramSubject.h"

#include "Model/Text/TerminalText.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace vantoro {

namespace {

using Arguments = std::vector<std::string_view>;

constexpr std::size_t mostSubjectBytes = 200;
/// More than anyone types, and as many as are worth looking at.
constexpr std::size_t mostArguments = 512;

/// How an interpreter's arguments lead to what it runs. Lists have blanks between their words.
struct Interpreter {
    /// Without versions.
    std::string_view names;
    /// Letters: code follows instead of a script; a value follows; the rest of the word is a value; what it names is
    /// what runs.
    std::string_view code, valued, attached, subject;
    /// The same of options of several letters.
    std::string_view longCode = {}, longValued = {}, longSubject = {};
    /// Commands that stand before the script.
    std::string_view commands = {};
    /// A single dash begins a long option.
    bool hasSingleDash = false;
};

constexpr Interpreter interpreters[] = {
    {"python pypy python3-dbg", "c", "WXQ", "", "m", "", "--check-hash-based-pycs"},
    {"bash sh dash ash zsh ksh mksh fish yash rbash ksh93", "cs", "oO", "", "", "--command", "--rcfile --init-file"},
    {"node nodejs", "ep", "rC", "", "", "--eval --print",
     "--require --import --loader --experimental-loader --conditions", "", "inspect"},
    {"bun deno", "e", "cr", "", "", "--eval", "--config --cwd --import-map --preload", "",
     "run x exec test bench serve"},
    {"perl", "eE", "I", "MmFiDxCl0dVT", ""},
    {"ruby jruby", "e", "ICrE", "FKTWix0", ""},
    {"php", "rBREi", "dcztS", "", "f", "--run", "--define --php-ini --server --docroot", "--file"},
    {"lua luajit texlua", "", "elj", "", ""},
    {"R Rscript", "e", "g", "", "f", "", "", "--file"},
    {"julia", "eE", "JpLtCH", "", "", "--eval --print", "--load --procs --threads"},
    {"tclsh wish expect guile gjs gjs-console", "ce", "ILlC", "", "m", "--command"},
    {"mono mono-sgen dotnet", "", "", "", "", "", "--fx-version --depsfile --runtimeconfig --additionalprobingpath", "",
     "exec run", true},
    {"java", "", "", "", "", "",
     "-cp -classpath --class-path -p --module-path --add-modules --add-exports --add-opens --add-reads --limit-modules "
     "--upgrade-module-path --patch-module --source",
     "-jar -m --module", "", true},
};

std::string_view withoutVersion(std::string_view name) {
    const std::size_t last = name.find_last_not_of("0123456789.-");
    return last == std::string_view::npos ? name : name.substr(0, last + 1);
}

bool isAmong(std::string_view list, std::string_view word) {
    for (std::size_t at = list.find(word); !word.empty() && at != std::string_view::npos; at = list.find(word, at + 1))
        if ((at == 0 || list[at - 1] == ' ') && (at + word.size() == list.size() || list[at + word.size()] == ' '))
            return true;
    return false;
}

const Interpreter* interpreterNamed(std::string_view program) {
    const auto found = std::ranges::find_if(interpreters, [program](const Interpreter& each) {
        return isAmong(each.names, program) || isAmong(each.names, withoutVersion(program));
    });
    return found != std::end(interpreters) ? &*found : nullptr;
}

std::string_view at(const Arguments& arguments, std::size_t index) {
    return index < arguments.size() ? arguments[index] : std::string_view();
}

/// What an interpreter was started to run: empty for code in the arguments themselves, none where it was given nothing.
std::optional<std::string_view> runBy(const Interpreter& interpreter, const Arguments& arguments) {
    constexpr std::string_view code;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const std::string_view argument = arguments[index];
        if (argument == "--")
            return at(arguments, index + 1);
        if (argument.empty() || argument == "-" || isAmong(interpreter.commands, argument))
            continue;
        if (argument.starts_with("--") || (interpreter.hasSingleDash && argument.starts_with('-'))) {
            const std::size_t equals = argument.find('=');
            const std::string_view name = argument.substr(0, equals);
            const bool isWhole = equals == std::string_view::npos;
            if (isAmong(interpreter.longCode, name))
                return code;
            if (isAmong(interpreter.longSubject, name))
                return isWhole ? at(arguments, index + 1) : argument.substr(equals + 1);
            index += isWhole && isAmong(interpreter.longValued, name) ? 1 : 0;
            continue;
        }
        if (argument[0] != '-' && argument[0] != '+')
            return argument;
        for (std::size_t letter = 1; letter < argument.size(); ++letter) {
            const char option = argument[letter];
            const bool isLast = letter + 1 == argument.size();
            if (interpreter.code.find(option) != std::string_view::npos)
                return code;
            if (interpreter.subject.find(option) != std::string_view::npos)
                return isLast ? at(arguments, index + 1) : argument.substr(letter + 1);
            if (interpreter.valued.find(option) != std::string_view::npos) {
                index += isLast ? 1 : 0;
                // Shells take the rest as more letters, and everybody else as the value.
                if (isLast || !isShell(interpreter.names.substr(0, interpreter.names.find(' '))))
                    break;
            }
            if (interpreter.attached.find(option) != std::string_view::npos)
                break;
        }
    }
    return {};
}

/// The last part of a class's name, unless half of all programs call theirs so.
std::string_view className(std::string_view name) {
    const std::string_view last = name.substr(name.rfind('.') + 1);
    return isAmong("Main App Application Launcher Bootstrap Server Start Program Runner Client", last) || last.empty()
               ? name
               : last;
}

std::string_view scriptOf(const Interpreter& interpreter, std::string_view program, const Arguments& arguments) {
    std::string_view script = runBy(interpreter, arguments).value_or("");
    const bool isJava = interpreter.names == "java";
    if (script.empty() && arguments.size() == 1) {
        // Some lay a title of their own over their arguments: "npm run build", "gunicorn: worker [shop]".
        const std::size_t end = arguments[0].find_first_of(" :");
        const std::string_view word = baseName(arguments[0].substr(0, end));
        return end != std::string_view::npos && withoutVersion(word) != withoutVersion(program) ? word
                                                                                                : std::string_view();
    }
    if (interpreter.names.starts_with("mono") && !script.ends_with(".dll") && !script.ends_with(".exe"))
        return {};
    script = script.substr(0, script.find('?'));
    if (isJava && !script.ends_with(".jar") && !script.ends_with(".java"))
        return className(script.substr(script.find('/') + 1));
    while (script.ends_with('/'))
        script.remove_suffix(1);
    return baseName(script);
}

std::string_view valueOf(const Arguments& arguments, std::string_view names) {
    for (std::size_t index = 1; index < arguments.size(); ++index)
        if (isAmong(names, arguments[index]))
            return at(arguments, index + 1);
    return {};
}

std::string_view machineName(const Arguments& arguments) {
    std::string_view value = valueOf(arguments, "-name --comment -comment");
    // guest=NAME,debug-threads=on, the first key being optional; a comma in the name is written twice
    if (constexpr std::string_view key = "guest="; value.starts_with(key))
        value.remove_prefix(key.size());
    return value.substr(0, value.find(','));
}

std::string_view windowsProgram(const Arguments& arguments) {
    constexpr std::string_view ending = ".exe";
    for (const std::string_view argument : arguments) {
        const auto isSame = [](char left, char right) {
            return (left >= 'A' && left <= 'Z' ? static_cast<char>(left - 'A' + 'a') : left) == right;
        };
        const auto* const found = std::search(argument.begin(), argument.end(), ending.begin(), ending.end(), isSame);
        if (found != argument.end())
            return argument.substr(0, static_cast<std::size_t>(found - argument.begin()) + ending.size());
    }
    return {};
}

Arguments argumentsIn(std::string_view commandLine) {
    while (commandLine.ends_with('\0'))
        commandLine.remove_suffix(1);
    Arguments arguments;
    for (std::size_t start = 0; start <= commandLine.size() && arguments.size() < mostArguments;) {
        const std::size_t end = std::min(commandLine.find('\0', start), commandLine.size());
        arguments.push_back(commandLine.substr(start, end - start));
        start = end + 1;
    }
    return arguments;
}

} // namespace

std::string_view baseName(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

bool isShell(std::string_view programName) {
    if (programName.starts_with('-')) // a login shell
        programName.remove_prefix(1);
    return isAmong("ash bash csh dash elvish fish ksh ksh93 mksh nu osh oil pwsh rbash sh tcsh xonsh yash zsh",
                   programName);
}

bool takesCommands(std::string_view commandLine) {
    // All of them take their options alike, as far as that goes.
    return !runBy(*interpreterNamed("bash"), argumentsIn(commandLine));
}

bool isWrapper(std::string_view programName) {
    return isAmong(
        "bwrap catatonit cgexec chroot chrt dbus-run-sessio docker-init doas dumb-init eatmydata env fakeroot "
        "faketime firejail flock gtimeout ionice ltrace nice nohup nsenter numactl perf pkexec prlimit proot "
        "rlwrap runuser script setsid stdbuf strace su sudo systemd-run taskset time timeout tini unbuffer "
        "unshare xvfb-run",
        programName);
}

bool isDoor(std::string_view programName) {
    constexpr std::string_view names[] = {
        "sshd",    "sshd-session", "dropbear",    "login",        "cron",    "crond",           "CRON",   "CROND",
        "anacron", "atd",          "at-server",   "tmux: server", "tmux",    "screen",          "SCREEN", "dtach",
        "abduco",  "zellij",       "mosh-server", "conmon",       "systemd", "containerd-shim", "init"};
    return std::ranges::find(names, programName) != std::end(names);
}

bool isWine(std::string_view programName) {
    return isAmong("wine wine64 wine-preloader wine64-preloader", programName);
}

bool isVirtualMachine(std::string_view programName) {
    return programName.starts_with("qemu-system-") || isAmong("qemu-kvm kvm VBoxHeadless VirtualBoxVM", programName);
}

bool hasSubject(std::string_view programName) {
    return interpreterNamed(programName) != nullptr || isWine(programName) || isVirtualMachine(programName) ||
           programName == "busybox" || programName == "conmon";
}

std::string subjectOf(std::string_view programName, std::string_view commandLine) {
    Arguments arguments = argumentsIn(commandLine);
    std::string_view subject;
    if (programName == "busybox") {
        // One program under many names.
        if (baseName(arguments.front()) == "busybox")
            arguments.erase(arguments.begin());
        programName = arguments.empty() ? std::string_view() : baseName(arguments.front());
        subject = programName;
    }
    if (isVirtualMachine(programName)) {
        subject = machineName(arguments);
    } else if (isWine(programName)) {
        subject = windowsProgram(arguments);
    } else if (programName == "conmon") {
        subject = valueOf(arguments, "-n --name");
    } else if (const Interpreter* interpreter = interpreterNamed(programName)) {
        const std::string_view script = scriptOf(*interpreter, programName, arguments);
        subject = script.empty() ? subject : script;
    }
    std::string text;
    appendTerminalText(text, subject, mostSubjectBytes);
    return text.find_first_not_of(' ') != std::string::npos ? text : std::string();
}

std::optional<std::string> nameOfWork(std::string_view executablePath, std::string_view subject) {
    const auto shown = [](std::string_view name) { return shortened(terminalText(name), longestShownName); };
    const std::string_view program = baseName(executablePath);
    if (!subject.empty() && program != "conmon") {
        if (isVirtualMachine(program))
            return "virtual machine " + shown(subject);
        return shown(isWine(program) ? subject.substr(subject.find_last_of("\\/") + 1) : subject);
    }
    // Nix lays a script of the program's name over it.
    constexpr std::string_view wrapped = "-wrapped";
    if (program.starts_with('.') && program.ends_with(wrapped) && program.size() > wrapped.size() + 1)
        return std::string(program.substr(1, program.size() - 1 - wrapped.size()));
    return std::nullopt;
}

std::string_view pathInCommandLine(std::string_view text) {
    std::string_view first = text.substr(0, text.find('\0'));
    if (!first.starts_with('/'))
        return {};
    // A program may lay its whole command line over the first argument.
    return first.substr(0, first.find(" -"));
}

} // namespace vantoro
