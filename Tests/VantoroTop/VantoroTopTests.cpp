#include "VantoroTop/Arguments.h"
#include "VantoroTop/BlockText.h"
#include "VantoroTop/Sampler.h"

#include "Model/Processes/TopStream.h"
#include "Model/Text/Utf8.h"
#include "Support/ChildProgram.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace vantoro::top {
namespace {

/// What the reader of the stream makes of a text.
TopBlock readBack(const std::string& text) {
    TopBlock block;
    TopBlockCutter().ingest(text + "Processes:\n",
                            [&](const std::vector<std::string>& lines) { block = parseBlock(lines, 0); });
    return block;
}

TEST(VantoroTop, RefusesOtherArguments) {
    const auto parse = [](std::vector<const char*> arguments) { return parseArguments(arguments); };
    const std::vector<const char*> good = {
        "-l", "0", "-s", "2", "-n", "40", "-o", "cpu", "-stats", "pid,command,cpu,mem,power,user", "-ncols", "220"};
    EXPECT_EQ(parse(good), Request(StreamRequest{.samples = 0, .intervalSeconds = 2, .rows = 40, .columns = 220}));
    EXPECT_EQ(parse({"--paths"}), Request(PathsRequest{}));
    std::vector<const char*> asked = good;
    asked[9] = "pid,command,cpu,mem,power,user,origin";
    EXPECT_TRUE(std::get<StreamRequest>(parse(asked)).origins);
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_TRUE(std::holds_alternative<BadRequest>(
            parse({good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)})));
    struct Case {
        std::size_t place;
        const char* value;
    };
    for (const auto& [place, value] :
         {Case{1, "-1"}, Case{1, "1x"}, Case{1, ""}, Case{3, "0"}, Case{3, "2.5"}, Case{5, "99999999999"},
          Case{7, "mem"}, Case{9, "pid"}, Case{9, "pid,command,cpu,mem,power,user,"}, Case{0, "-L"}, Case{11, "0"}}) {
        std::vector<const char*> bad = good;
        bad[place] = value;
        EXPECT_TRUE(std::holds_alternative<BadRequest>(parse(bad))) << value;
    }
    std::vector<const char*> more = good;
    more.push_back("--paths");
    EXPECT_TRUE(std::holds_alternative<BadRequest>(parse(more)));
    testing::ChildProgram program({VANTORO_TOP, "-x\u009b\x1b"});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_EQ(program.output() + program.errors(), "vantoro-top: unknown argument \"-x??\"\n");
    testing::ChildProgram full({"/bin/sh", "-c", "exec \"$0\" --paths >/dev/full", VANTORO_TOP});
    EXPECT_EQ(full.wait(), 1);
}

TEST(VantoroTop, PrintsTheHead) {
    SystemFigures figures;
    figures.processes = {.total = 412, .running = 3, .threads = 2014};
    figures.localTime.tm_year = 126;
    figures.localTime.tm_mon = 2;
    figures.localTime.tm_mday = 1;
    figures.localTime.tm_hour = 9;
    figures.load = {2.114, 2.045, 1.98};
    figures.cpu.userPercent = 5.125;
    figures.cpu.systemPercent = 10.25;
    figures.cpu.idlePercent = 84.625;
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
    std::string head = "Processes: 1\n";
    appendHead(head, {}, 220);
    const std::pair<std::string, std::string> names[] = {{"exactly sixteen!", "exactly sixteen!"},
                                                         {"seventeen letters", "seventeen letter"},
                                                         {"tab\tnewline\n\x7f", "tab?newline??"},
                                                         {"äö€", "äö€"},
                                                         {"\xFF\xC0\xAF\xED\xA0\x80", "??????"},
                                                         {"cut\xE2\x82", "cut??"},
                                                         {"\xC2\x85\u2028\u202E\u2066", "????"},
                                                         {"seven äöü letters", "seven äöü let"},
                                                         {"日本語の名前", "日本語の名"},
                                                         {"   ", "?"},
                                                         {"", "?"},
                                                         {"Processes: 1", "Processes? 1"}};
    for (const auto& [name, shown] : names) {
        std::string text = head;
        appendRow(text,
                  {.pid = 4194304, .command = name, .cpuPercent = 12799.96, .residentKiB = 1U << 30U, .user = "ada"},
                  220);
        EXPECT_EQ(readBack(text).rows, (std::vector{TopRow{4194304, shown, 12800, 1ULL << 40U, 0, "ada"}})) << name;
    }
    for (const std::size_t columns : {1u, 10u, 30u, 53u, 54u, 55u, 60u}) {
        std::string text;
        appendRow(text, {.pid = 1, .command = "abcdefghijklmnop", .user = "someone"}, columns);
        EXPECT_EQ(text.size(), std::min<std::size_t>(columns, 53 + 7) + 1) << columns;
        text.clear();
        appendRow(text, {.pid = 1, .command = "äöüäöüäöü", .user = "jöß"}, columns);
        EXPECT_LE(text.size(), columns + 1);
        EXPECT_EQ(validUtf8Length(text), text.size()) << "no half a character";
    }
    std::string text;
    appendPathLine(text, 7, "/home/a\nb");
    EXPECT_EQ(text, "7 /home/a?b\n");
}

TEST(VantoroTop, TellsWhereAProcessComesFromBehindItsRow) {
    std::string text = "Processes: 1\n";
    appendHead(text, {}, 220);
    const ProcessOrigin origins[] = {{.path = "/usr/bin/python3.11",
                                      .subject = "train.py",
                                      .controlGroup = "/a.scope",
                                      .container = "web",
                                      .shell = ProcessOrigin::Shell::inner,
                                      .job = "make"},
                                     {.path = "/tmp/a\tb\nProcesses: 7 Processes:\xff" + std::string(9000, 'x')},
                                     {}};
    for (const ProcessOrigin& origin : origins) {
        appendRow(text, {.pid = 5, .command = "x", .user = "ada"}, 220);
        appendOrigin(text, origin);
    }
    appendRow(text, {.pid = 6, .command = "y", .user = "ada"}, 220);
    const TopBlock block = readBack(text);
    ASSERT_EQ(block.rows.size(), 4U);
    EXPECT_EQ(block.rows[0].origin, origins[0]);
    EXPECT_EQ(block.rows[1].origin->path, "/tmp/a?b?Processes? 7 Processes??" + std::string(4063, 'x'));
    EXPECT_EQ(block.rows[2].origin, ProcessOrigin{});
    EXPECT_FALSE(block.rows[3].origin);
    for (const char* bad : {"\t", "\ta\tb\tc\td", "\ta\tb\tc\td\t4", "\ta\tb\tc\td\t1\tj\t", "x\ta\tb\tc\td\t1", ""})
        EXPECT_FALSE(parseOrigin(bad)) << bad;
    EXPECT_EQ(parseOrigin("\ta\tb\tc\td\t1")->job, "") << "as it was printed before there were jobs";
}

TEST(VantoroTop, SeesScriptsShellsAndContainersBeforeTheyEnd) {
    const testing::TemporaryFolder folder;
    folder.write("proc/stat", "cpu 0 0 0 0\nprocesses 1\n");
    const std::string id(64, 'a');
    const auto write = [&folder](int pid, int parent, const std::string& name, const std::string& arguments,
                                 const std::string& group) {
        const std::string place = "proc/" + std::to_string(pid);
        writeProcess(folder, pid, name, 100, 1);
        std::string stat = testing::processStat(pid, name, 100, 1);
        stat.replace(stat.find(" S 1 "), 5, " S " + std::to_string(parent) + " ");
        folder.write(place + "/stat", stat);
        folder.write(place + "/cmdline", arguments);
        folder.write(place + "/cgroup", "0::" + group + "\n");
    };
    write(10, 1, "bash", "-bash", "/s.scope");
    write(11, 10, "make", "/bin/make", "/s.scope");
    write(12, 11, "python3", std::string("/bin/python3\0-u\0train.py\0", 26), "/s.scope");
    write(13, 12, "python3", std::string("/bin/python3\0-c\0from x\0", 24), "/s.scope");
    write(20, 1, "conmon", std::string("/bin/conmon\0-n\0web\0", 19), "/libpod-conmon-" + id + ".scope");
    write(21, 20, "sh", std::string("/bin/sh\0/entry\0", 15), "/libpod-" + id + ".scope");
    write(22, 21, "web", "/bin/web", "/libpod-" + id + ".scope");
    Sampler sampler({.root = folder.path(), .descriptorBudget = 10, .origins = true});
    std::string text;
    sampler.appendBlock(text, {}, 10, 220);
    const TopBlock block = readBack(text);
    ASSERT_EQ(block.rows.size(), 7U);
    using enum ProcessOrigin::Shell;
    const auto expect = [&block](std::size_t row, const std::string& subject, ProcessOrigin::Shell shell,
                                 const std::string& container) {
        ASSERT_TRUE(block.rows[row].origin);
        EXPECT_EQ(block.rows[row].origin->subject, subject) << row;
        EXPECT_EQ(block.rows[row].origin->shell, shell) << row;
        EXPECT_EQ(block.rows[row].origin->container, container) << row;
    };
    expect(0, "", first, "");
    expect(1, "", first, "");
    expect(2, "train.py", first, "");
    expect(3, "train.py", first, ""); // a worker of the script's
    expect(4, "web", none, "");       // the monitor itself
    expect(5, "entry", script, "web");
    expect(6, "", script, "web");
    EXPECT_EQ(block.rows[1].origin->path, "/bin/make");
    EXPECT_EQ(block.rows[1].origin->controlGroup, "/s.scope");
}

TEST(VantoroTop, SharesTheTimeSinceTheSampleBefore) {
    const testing::TemporaryFolder folder;
    folder.write("proc/stat", "cpu 0 0 0 0\nprocesses 1\n");
    for (const int pid : {10, 20, 30})
        writeProcess(folder, pid, "p" + std::to_string(pid), 100, 1000);
    Sampler sampler(
        {.root = folder.path(), .units = {.ticksPerSecond = 100, .pageBytes = 4096}, .descriptorBudget = 10});
    using Rows = std::vector<std::pair<int, double>>;
    CPULoad load;
    const auto rows = [&](double monotonic, double boot) {
        std::string text;
        sampler.appendBlock(text, {.monotonicSeconds = monotonic, .bootSeconds = boot}, 4, 220);
        const TopBlock block = readBack(text);
        load = block.system.cpu;
        Rows found;
        for (const TopRow& row : block.rows)
            found.emplace_back(row.pid, row.cpuPercent);
        return found;
    };
    EXPECT_EQ(rows(50, 900), (Rows{{10, 0}, {20, 0}, {30, 0}}));
    // Within 2 s: one process used half of a second, one started and used a tenth, one came into sight but is old.
    writeProcess(folder, 30, "p30", 100, 1050);
    writeProcess(folder, 40, "new", 90'100, 5);
    writeProcess(folder, 15, "old", 5000, 4000);
    folder.write("proc/stat", "cpu 10 10 20 60\nprocesses 3\n");
    EXPECT_EQ(rows(52, 902), (Rows{{30, 25}, {40, 5}, {10, 0}, {15, 0}}));
    EXPECT_EQ(load.userPercent, 20);
    EXPECT_EQ(load.systemPercent, 20);
    // A pid's next owner starts over.
    writeProcess(folder, 30, "p30", 90'150, 2000);
    EXPECT_EQ(rows(54, 904), (Rows{{10, 0}, {15, 0}, {20, 0}, {30, 0}}));
}

TEST(VantoroTop, TheWorkOfChildrenThatEndedIsTheirJobs) {
    const testing::TemporaryFolder folder;
    folder.write("proc/stat", "");
    unsigned long busy = 1000;
    unsigned long forks = 1;
    double seconds = 100;
    Sampler sampler({.root = folder.path(), .descriptorBudget = 0, .origins = true});
    using Rows = std::vector<std::pair<std::string, double>>;
    const auto rows = [&](unsigned long busySince) {
        busy += busySince;
        folder.write("proc/stat",
                     "cpu " + std::to_string(busy) + " 0 0 0\nprocesses " + std::to_string(++forks) + "\n");
        std::string text;
        sampler.appendBlock(text, {.monotonicSeconds = seconds, .bootSeconds = seconds}, 40, 220);
        ++seconds;
        Rows found;
        for (const TopRow& row : readBack(text).rows)
            if (row.cpuPercent != 0)
                found.emplace_back(row.command + " of " + row.origin->job, row.cpuPercent);
        return found;
    };
    const auto write = [&folder](const testing::Relative& relative) { writeRelative(folder, relative); };
    testing::Relative bash{.pid = 10, .group = 10, .session = 10, .name = "bash", .arguments = "-bash"};
    testing::Relative make{
        .pid = 20, .parent = 10, .group = 20, .session = 10, .name = "make", .arguments = "/bin/make", .start = 200};
    testing::Relative shell{
        .pid = 21, .parent = 20, .group = 20, .session = 10, .name = "sh", .arguments = "/bin/sh -c x"};
    shell.start = 300;
    shell.childTicks = 5000; // from before anybody looked
    for (const auto& each : {bash, make, shell})
        write(each);
    EXPECT_EQ(rows(0), Rows{});
    // A recipe's shell waited for compilers that no list ever saw, and so did make itself.
    shell.childTicks += 30;
    make.childTicks = 20;
    write(shell);
    write(make);
    EXPECT_EQ(rows(200), (Rows{{"make of make", 50}}));
    // The shell ends; make waits for it and gets all that it had.
    folder.remove("proc/21");
    make.childTicks += 5030 + 10;
    make.ticks = 5;
    write(make);
    EXPECT_EQ(rows(200), (Rows{{"make of make", 15}}));
    // Make ends too, and another job begins and is over; what the kernel was busy for is the limit.
    folder.remove("proc/20");
    bash.childTicks = make.childTicks + make.ticks + 90;
    write(bash);
    EXPECT_EQ(rows(80), (Rows{{"make of make", 80}})) << "a row of the job's leader, who has ended";
    EXPECT_EQ(rows(200), Rows{});
    // One that started and had children that ended since: all of that is new.
    bash.childTicks += 7;
    write(bash);
    write({.pid = 30,
           .parent = 10,
           .group = 30,
           .session = 10,
           .name = "xz",
           .arguments = "/bin/xz",
           .ticks = 11,
           .childTicks = 22,
           .start = 10'450});
    EXPECT_EQ(rows(200), (Rows{{"xz of xz", 33}, {"bash of bash", 7}}));
}

TEST(VantoroTop, TheProcessorsPausesTakeNoMoreThanOneRow) {
    const testing::TemporaryFolder folder;
    folder.write("proc/stat", "cpu 0 0 0 0\nprocesses 1\n");
    Sampler sampler({.root = folder.path(), .descriptorBudget = 0});
    std::string text;
    for (const unsigned long ticks : {0UL, 100UL}) {
        for (int pid = 10; pid < 20; ++pid) {
            std::string stat = testing::processStat(pid, "idle_inject/" + std::to_string(pid), 100, ticks);
            stat.replace(stat.find("4194304"), 7, "2097152"); // a thread of the kernel's
            folder.write("proc/" + std::to_string(pid) + "/stat", stat);
        }
        writeProcess(folder, 30, "idle_injector", 100, ticks / 2);
        text.clear();
        sampler.appendBlock(text, {.monotonicSeconds = 1.0 + static_cast<double>(ticks)}, 3, 220);
    }
    const TopBlock block = readBack(text);
    ASSERT_EQ(block.rows.size(), 2U);
    EXPECT_EQ(block.rows[0].pid, 10);
    EXPECT_EQ(block.rows[1].pid, 30);
}

TEST(VantoroTop, RunsOnThisMachineAndEndsQuietlyWhenItsReaderIsGone) {
    const std::string command = "-s 1 -n 100000 -o cpu -stats pid,command,cpu,mem,power,user -ncols 220";
    testing::ChildProgram gone(
        {"/bin/sh", "-c", "{ \"$0\" -l 0 " + command + "; echo $? >&2; } | head -c 1", VANTORO_TOP});
    testing::ChildProgram twice({"/bin/sh", "-c", "exec \"$0\" -l 2 " + command, VANTORO_TOP});
    testing::ChildProgram paths({VANTORO_TOP, "--paths"});
    EXPECT_EQ(twice.wait(), 0);
    const auto lines = lastBlock(twice.output());
    ASSERT_TRUE(lines);
    const TopBlock block = parseBlock(*lines, 0);
    EXPECT_EQ(block.rows.size() + 8, lines->size() - 1) << "each row reads";
    EXPECT_TRUE(std::ranges::any_of(block.rows, [&](const TopRow& row) { return row.pid == twice.pid(); }));
    for (const TopRow& row : block.rows)
        EXPECT_FALSE(row.user.empty()) << row.command;
    EXPECT_EQ(paths.wait(), 0);
    EXPECT_EQ(parsePathList(paths.output()).at(paths.pid()), VANTORO_TOP);
    for (const auto& [pid, path] : parsePathList(paths.output()))
        EXPECT_NE(std::string("/[(").find(path[0]), std::string::npos) << path;
    EXPECT_EQ(gone.wait(), 0);
    EXPECT_EQ(gone.errors(), "0\n");
}

} // namespace
} // namespace vantoro::top
