#include "VantoroTop/Arguments.h"

#include <charconv>
#include <string_view>

namespace vantoro::top {

namespace {

constexpr std::string_view help =
    "Usage: vantoro-top -l SAMPLES -s SECONDS -n ROWS -o cpu -stats pid,command,cpu,mem,power,user[,origin]\n"
    "                   -ncols COLUMNS\n"
    "       vantoro-top --paths | --help | --version\n"
    "\n"
    "Prints what the processes of this machine do, for programs to read: SAMPLES blocks (0: without end), one every\n"
    "SECONDS, of the ROWS busiest processes in lines of at most COLUMNS bytes. With \"origin\" each row is followed "
    "by\n"
    "a line of whatever length that begins with a tab: the process's executable, what it runs, its control group, its\n"
    "container, whether a shell started it and the job it belongs to, with tabs between them. The CPU time of "
    "children\n"
    "that ended counts for the job that started them. --paths prints each process's executable: a path, [NAME] for a\n"
    "thread of the kernel's, (NAME) where it is unknown.\n";

constexpr std::string_view version = "vantoro-top " VANTORO_VERSION "\n";

struct Number {
    std::string_view option;
    std::uint32_t least;
    std::uint32_t most;
    std::uint32_t StreamRequest::*value;
};

struct Word {
    std::string_view option;
    std::string_view value;
    /// May stand behind the value, and is then noted.
    std::string_view more = {};
};

BadRequest unknown(std::string_view argument) {
    return {"unknown argument \"" + std::string(argument) + "\""};
}

} // namespace

Request parseArguments(std::span<const char* const> arguments) {
    if (arguments.size() == 1) {
        const std::string_view only = arguments[0];
        if (only == "--paths")
            return PathsRequest{};
        if (only == "--help")
            return TextRequest{std::string(help)};
        if (only == "--version")
            return TextRequest{std::string(version)};
    }
    using Option = std::variant<Number, Word>;
    static constexpr Option options[] = {Number{"-l", 0, 1'000'000'000, &StreamRequest::samples},
                                         Number{"-s", 1, 86'400, &StreamRequest::intervalSeconds},
                                         Number{"-n", 0, 1'000'000, &StreamRequest::rows},
                                         Word{"-o", "cpu"},
                                         Word{"-stats", "pid,command,cpu,mem,power,user", ",origin"},
                                         Number{"-ncols", 1, 10'000, &StreamRequest::columns}};
    StreamRequest request;
    std::size_t at = 0;
    for (const Option& option : options) {
        const std::string_view name = std::visit([](const auto& each) { return each.option; }, option);
        if (at == arguments.size())
            return BadRequest{"missing " + std::string(name)};
        if (arguments[at] != name)
            return unknown(arguments[at]);
        if (++at == arguments.size())
            return BadRequest{"missing value of " + std::string(name)};
        const std::string_view value = arguments[at++];
        bool good = false;
        if (const Number* number = std::get_if<Number>(&option)) {
            std::uint32_t read = 0;
            const auto [rest, error] = std::from_chars(value.data(), value.data() + value.size(), read);
            good = error == std::errc{} && rest == value.data() + value.size() && read >= number->least &&
                   read <= number->most;
            request.*number->value = read;
        } else {
            const Word& word = std::get<Word>(option);
            const std::string_view rest = value.starts_with(word.value) ? value.substr(word.value.size()) : " ";
            good = rest.empty() || rest == word.more;
            request.origins = request.origins || (good && !rest.empty());
        }
        if (!good)
            return BadRequest{"bad value of " + std::string(name) + ": \"" + std::string(value) + "\""};
    }
    if (at != arguments.size())
        return unknown(arguments[at]);
    return request;
}

} // namespace vantoro::top
