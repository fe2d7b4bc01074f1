#include "VantoroTop/Arguments.h"
#include "VantoroTop/BlockText.h"
#include "VantoroTop/Sampler.h"

#include "Support/Folders.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>
#include <signal.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantoro::top {
namespace {

using namespace std::string_literals;

const std::string streamOptions = " -o cpu -stats pid,command,cpu,mem,power,user -ncols 220";

struct Ended {
    std::string output;
    int status = -1;
};

/// Runs a shell command line.
Ended runProgram(const std::string& command) {
    Ended ended;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr)
        return ended;
    std::array<char, 4096> piece;
    while (const std::size_t got = std::fread(piece.data(), 1, piece.size(), pipe))
        ended.output.append(piece.data(), got);
    const int status = ::pclose(pipe);
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The text of one column, found as a reader of this format finds it: from its title to the next title.
std::string field(const std::string& header, const std::string& row, const char* title, const char* next) {
    const std::size_t start = header.find(title);
    const std::size_t end = next != nullptr ? header.find(next) : std::string::npos;
    if (start >= row.size())
        return "";
    std::string text = row.substr(start, end == std::string::npos ? end : end - start);
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

TEST(VantoroTop, RefusesOtherArguments) {
    const auto parse = [](std::vector<const char*> arguments) { return parseArguments(arguments); };
    const std::vector<const char*> good = {
        "-l", "0", "-s", "2", "-n", "40", "-o", "cpu", "-stats", "pid,command,cpu,mem,power,user", "-ncols", "220"};
    EXPECT_EQ(parse(good), Request(StreamRequest{.samples = 0, .intervalSeconds = 2, .rows = 40, .columns = 220}));
    EXPECT_EQ(parse({"--paths"}), Request(PathsRequest{}));
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_TRUE(std::holds_alternative<BadRequest>(
            parse({good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)})));
    for (const auto& [place, value] : {std::pair{1, "-1"},
                                       {1, "1x"},
                                       {1, ""},
                                       {3, "0"},
                                       {3, "2.5"},
                                       {5, "99999999999"},
                                       {7, "mem"},
                                       {9, "pid"},
                                       {0, "-L"},
                                       {11, "0"}}) {
        std::vector<const char*> bad = good;
        bad[static_cast<std::size_t>(place)] = value;
        EXPECT_TRUE(std::holds_alternative<BadRequest>(parse(bad))) << value;
    }
    std::vector<const char*> more = good;
    more.push_back("--paths");
    EXPECT_TRUE(std::holds_alternative<BadRequest>(parse(more)));

    const Ended ended = runProgram(VANTORO_TOP " -x 2>&1");
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "vantoro-top: unknown argument \"-x\"\n");
}

TEST(VantoroTop, PrintsTheHead) {
    SystemFigures figures;
    figures.processes = {.total = 412, .running = 3, .threads = 2014};
    figures.localTime.tm_year = 126;
    figures.localTime.tm_mon = 2;
    figures.localTime.tm_mday = 1;
    figures.localTime.tm_hour = 9;
    figures.load = {2.114, 2.045, 1.98};
    figures.userPercent = 5.125;
    figures.systemPercent = 10.25;
    figures.idlePercent = 84.625;
    figures.totalKiB = 1000;
    figures.memory = {.pageBytes = 4096,
                      .wiredPages = 20,
                      .compressorPages = 5,
                      .internalPages = 100,
                      .purgeablePages = 10,
                      .swapIns = 7,
                      .swapOuts = 27431};
    figures.swapOutsSince = 3;
    std::string text;
    appendHead(text, figures, 220);
    EXPECT_EQ(text, "Processes: 412 total, 3 running, 409 sleeping, 2014 threads\n"
                    "2026/03/01 09:00:00\n"
                    "Load Avg: 2.11, 2.05, 1.98 \n"
                    "CPU usage: 5.13% user, 10.25% sys, 84.63% idle \n"
                    "PhysMem: 460K used (80K wired, 20K compressor), 540K unused.\n"
                    "VM: 7(0) swapins, 27431(3) swapouts.\n"
                    "\n"
                    "PID     COMMAND          %CPU     MEM          POWER USER\n");
}

TEST(VantoroTop, KeepsHostileNamesInTheirColumn) {
    const std::string header = "PID     COMMAND          %CPU     MEM          POWER USER";
    const std::pair<std::string, std::string> names[] = {
        {"cc1plus", "cc1plus"},
        {"exactly sixteen!", "exactly sixteen!"},
        {"seventeen letters", "seventeen letter"},
        {"tab\tnewline\n\x7f", "tab?newline??"},
        {"\xC3\xA4\xC3\xB6\xE2\x82\xAC", "\xC3\xA4\xC3\xB6\xE2\x82\xAC"},
        {"\xFF\xC0\xAF\xED\xA0\x80", "??????"},
        {"cut\xE2\x82", "cut??"},
        {"\xC2\x85\xE2\x80\xA8", "??"},
        {"   ", "?"},
        {"", "?"},
        {"Processes: 1", "Processes? 1"}};
    for (const auto& [name, shown] : names) {
        std::string text;
        appendRow(text,
                  {.pid = 4194304, .command = name, .cpuPercent = 12799.96, .residentKiB = 4294967296, .user = "ada"},
                  220);
        // Columns are counted in characters.
        std::string plain;
        for (const char byte : text)
            if ((static_cast<unsigned char>(byte) & 0xC0U) != 0x80U)
                plain += static_cast<unsigned char>(byte) < 0x80 ? byte : 'u';
        EXPECT_EQ(text.substr(8, shown.size() + 1), shown + " ") << name;
        EXPECT_EQ(field(header, plain, "PID", "COMMAND"), "4194304");
        EXPECT_EQ(field(header, plain, "%CPU", "MEM"), "12800.0");
        EXPECT_EQ(field(header, plain, "MEM", "POWER"), "4294967296K");
        EXPECT_EQ(field(header, plain, "POWER", "USER"), "0.0");
        EXPECT_EQ(field(header, plain, "USER", nullptr), "ada\n");
    }
    for (const std::size_t columns : {1u, 10u, 30u, 53u, 54u, 55u, 60u}) {
        std::string text;
        appendRow(text, {.pid = 1, .command = "abcdefghijklmnop", .user = "someone"}, columns);
        EXPECT_EQ(text.size(), std::min<std::size_t>(columns, 53 + 7) + 1) << columns;
    }
    std::string text;
    appendPathLine(text, 7, "/home/a\nb");
    EXPECT_EQ(text, "7 /home/a?b\n");
}

TEST(VantoroTop, SharesTheTimeSinceTheSampleBefore) {
    const test::TemporaryFolder folder;
    folder.write("proc/stat", "cpu 0 0 0 0\nprocesses 1\n");
    for (const int pid : {10, 20, 30})
        writeProcess(folder, pid, "p" + std::to_string(pid), 100, 1000);
    Sampler sampler(
        {.root = folder.path(), .units = {.ticksPerSecond = 100, .pageBytes = 4096}, .descriptorBudget = 10});
    const auto rows = [&sampler](double monotonic, double boot) {
        std::string text;
        sampler.appendBlock(text, {.monotonicSeconds = monotonic, .bootSeconds = boot}, 4, 36);
        const std::vector<std::string> lines = linesOf(text);
        std::vector<std::string> found;
        for (std::size_t line = 8; line < lines.size(); ++line)
            found.push_back(field(lines[7], lines[line], "PID", "COMMAND") + " " +
                            field(lines[7], lines[line], "%CPU", "ME"));
        return std::pair(lines.size() > 3 ? lines[3] : "", found);
    };
    using Rows = std::vector<std::string>;
    EXPECT_EQ(rows(50, 900).second, (Rows{"10 0.0", "20 0.0", "30 0.0"}));
    // Within 2 s: one process used half of a second, one started and used a tenth, one came into sight but is old.
    writeProcess(folder, 30, "p30", 100, 1050);
    writeProcess(folder, 40, "new", 90'100, 5);
    writeProcess(folder, 15, "old", 5000, 4000);
    folder.write("proc/stat", "cpu 10 10 20 60\nprocesses 3\n");
    const auto [processor, found] = rows(52, 902);
    EXPECT_EQ(processor, "CPU usage: 20.00% user, 20.00% sys, ");
    EXPECT_EQ(found, (Rows{"30 25.0", "40 5.0", "10 0.0", "15 0.0"}));
    // A pid's next owner starts over.
    writeProcess(folder, 30, "p30", 90'150, 2000);
    EXPECT_EQ(rows(54, 904).second, (Rows{"10 0.0", "15 0.0", "20 0.0", "30 0.0"}));
}

TEST(VantoroTop, RunsOnThisMachine) {
    const Ended ended = runProgram(VANTORO_TOP " -l 2 -s 1 -n 100000" + streamOptions);
    EXPECT_EQ(ended.status, 0);
    std::size_t blocks = 0;
    std::string header;
    bool sawItself = false;
    for (const std::string& line : linesOf(ended.output)) {
        if (line.starts_with("Processes: ")) {
            ++blocks;
            header.clear();
        } else if (line.starts_with("PID")) {
            header = line;
        } else if (!header.empty()) {
            for (const auto& [title, next] : {std::pair{"PID", "COMMAND"},
                                              {"COMMAND", "%CPU"},
                                              {"%CPU", "MEM"},
                                              {"MEM", "POWER"},
                                              {"POWER", "USER"}})
                EXPECT_NE(field(header, line, title, next), "") << title << " in: " << line;
            EXPECT_NE(field(header, line, "USER", nullptr), "") << line;
            EXPECT_TRUE(field(header, line, "MEM", "POWER").ends_with('K')) << line;
            sawItself = sawItself || field(header, line, "COMMAND", "%CPU") == "vantoro-top";
        }
    }
    EXPECT_EQ(blocks, 2u);
    EXPECT_TRUE(sawItself);
}

TEST(VantoroTop, ListsPathsOfThisMachine) {
    const Ended ended = runProgram(VANTORO_TOP " --paths");
    EXPECT_EQ(ended.status, 0);
    EXPECT_NE(ended.output.find(" " VANTORO_TOP "\n"), std::string::npos);
    for (const std::string& line : linesOf(ended.output)) {
        const std::size_t space = line.find(' ');
        ASSERT_NE(space, std::string::npos) << line;
        EXPECT_GT(std::stoi(line.substr(0, space)), 0);
        EXPECT_NE(std::string("/[(").find(line[space + 1]), std::string::npos) << line;
    }
}

/// Starts an endless stream and gives its pid and the end of the pipe it writes to.
std::pair<pid_t, int> startStream() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        ::execl(VANTORO_TOP, "vantoro-top", "-l", "0", "-s", "1", "-n", "1", "-o", "cpu", "-stats",
                "pid,command,cpu,mem,power,user", "-ncols", "80", nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    return {child, ends[0]};
}

TEST(VantoroTop, EndsQuietlyWhenItsReaderIsGone) {
    const auto [child, output] = startStream();
    char first = 0;
    EXPECT_EQ(::read(output, &first, 1), 1);
    ::close(output);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(VantoroTop, EndsWithTheProgramThatStartedIt) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t starter = ::fork();
    if (starter == 0) {
        const auto [child, output] = startStream();
        char first = 0;
        const bool started = ::read(output, &first, 1) == 1;
        // The copy of the pipe's end in the stream's process holds it open until that process ends.
        ::_exit(started && child > 0 ? 0 : 1);
    }
    ::close(ends[1]);
    int status = -1;
    EXPECT_EQ(::waitpid(starter, &status, 0), starter);
    EXPECT_EQ(status, 0);
    char none = 0;
    EXPECT_EQ(::read(ends[0], &none, 1), 0); // the end of the file, once no one holds the other end
    ::close(ends[0]);
}

} // namespace
} // namespace vantoro::top
