#include "Platform/Linux/Proc/ProcStat.h"

#include "Platform/Linux/Proc/ProgramSubject.h"

#include "Support/Folders.h"

namespace vantoro {
namespace {

using namespace std::string_literals;

TEST(ParseProcessStat, SplitsTheNameAtTheLastParenthesis) {
    for (const std::string& name : {"cat"s, "Web Content"s, "a) R 1 (b"s, ") S 1 1 1 0 -1"s, ""s, "((("s, "line\nend"s,
                                    "\xFF\xFE"s, "kworker/u16:2-events_unbound"s}) {
        const std::string text = testing::processStat(42, name, 900, 77, 5);
        const auto stat = parseProcessStat(text);
        ASSERT_TRUE(stat) << name;
        EXPECT_EQ(stat->name, name);
        EXPECT_EQ(stat->state, 'S');
        EXPECT_EQ(stat->parentPid, 1);
        EXPECT_EQ(stat->groupPid, 1);
        EXPECT_EQ(stat->sessionPid, 1);
        EXPECT_EQ(stat->userTicks, 77u);
        EXPECT_EQ(stat->systemTicks, 5u);
        EXPECT_EQ(stat->threads, 2u);
        EXPECT_EQ(stat->startTicks, 900u);
        EXPECT_EQ(stat->residentPages, 5u);
        EXPECT_FALSE(stat->isKernelThread());
        EXPECT_EQ(text.substr(stat->usedBytes), " 18446744073709551615\n");
    }
}

TEST(ParseProcessStat, RefusesEveryTruncation) {
    const std::string text = testing::processStat(42, "a b", 900, 77, 5);
    const std::size_t complete = text.find(" 18446744073709551615");
    for (std::size_t length = 0; length < complete; ++length)
        EXPECT_FALSE(parseProcessStat(text.substr(0, length))) << length;
    EXPECT_TRUE(parseProcessStat(text.substr(0, complete)));
}

TEST(ParseProcessStat, RefusesNumbersThatAreNone) {
    const auto withUserTicks = [](const std::string& ticks) {
        return "1 (x) S 1 1 1 0 -1 64 1 0 0 0 " + ticks + " 5 0 0 20 0 2 0 900 4096 5 0\n";
    };
    EXPECT_EQ(parseProcessStat(withUserTicks("18446744073709551615"))->userTicks, 18446744073709551615u);
    EXPECT_EQ(parseProcessStat(withUserTicks("-3"))->userTicks, 0u);
    for (const std::string& bad : {"18446744073709551616"s, "99999999999999999999999"s, "nan"s, "1e3"s, "0x1"s, ""s,
                                   "-"s, "\0"s, "1\t"s, std::string(10'000'000, '7')})
        EXPECT_FALSE(parseProcessStat(withUserTicks(bad))) << bad.substr(0, 30);
}

TEST(ParseRealUid, ReadsTheFirstOfFour) {
    EXPECT_EQ(parseRealUid("Name:\tUid:\nUid:\t1000\t0\t0\t0\n"), 1000u);
    EXPECT_EQ(parseRealUid("Uid: 4294967294"), 4294967294u);
    for (const std::string& bad :
         {""s, "Uid:"s, "Uid:\t-1\n"s, "Uid:\t4294967296\n"s, "Gid:\t5\n"s, "xUid:\t5\n"s, "Uid\0:5"s})
        EXPECT_FALSE(parseRealUid(bad)) << bad;
}

TEST(ParseKernelStat, AddsInterruptsToSystemAndWaitingToIdle) {
    const auto stat =
        parseKernelStat("cpu  1 2 3 4 50 60 70 800 9 9\ncpu0 1 1 1 1\nintr 9 9\nprocesses 123\nprocs_running 1\n");
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->ticks, (HostTicks{.user = 1, .system = 133, .idle = 54, .nice = 2}));
    EXPECT_EQ(stat->forks, 123u);
}

TEST(ParseKernelStat, TakesWhatOldKernelsPrintAndNothingLess) {
    EXPECT_EQ(parseKernelStat("cpu 1 2 3 4")->ticks, (HostTicks{.user = 1, .system = 3, .idle = 4, .nice = 2}));
    EXPECT_FALSE(parseKernelStat("cpu 1 2 3 4\nprocesses nan\n")->forks);
    // Wraps at 32 bits.
    EXPECT_EQ(parseKernelStat("cpu 4294967297 2 3 4")->ticks.user, 1u);
    for (const std::string& bad : {""s, "cpu"s, "cpu 1 2 3"s, "cpu 1 2 x 4"s, "cpu0 1 2 3 4\n"s, "cpu -\0"s})
        EXPECT_FALSE(parseKernelStat(bad)) << bad;
    EXPECT_TRUE(parseKernelStat("cpu 1 2 3 4\nintr " + std::string(10'000'000, '0') + "\nprocesses 5\n")->forks);
}

TEST(ParseLoadAverages, WantsThreePlainDecimals) {
    EXPECT_EQ(parseLoadAverages("0.25 12.50 3 1/84 4496"), (LoadAverages{0.25, 12.5, 3}));
    for (const std::string& bad : {""s, "1"s, "1 2"s, "nan 1 1"s, "inf 1 1"s, "-1 1 1"s, "1e9 1 1"s, "1.2.3 1 1"s})
        EXPECT_FALSE(parseLoadAverages(bad)) << bad;
}

TEST(ParseMemoryInfo, LeavesOutWhatDoesNotRead) {
    const auto info =
        parseMemoryInfo("MemTotal: 100 kB\nUnevictable:-5 kB\nSUnreclaim: 7 kB\nPageTables: 1e3 kB\nZswap:");
    ASSERT_TRUE(info);
    EXPECT_EQ(*info, (MemoryInfo{.totalKiB = 100, .unreclaimableSlabKiB = 7}));
    for (const std::string& bad : {""s, "MemTotal"s, "MemTotal: kB"s, "XMemTotal: 5 kB"s,
                                   "MemTotal: 99999999999999999999 kB"s, std::string(10'000'000, ':')})
        EXPECT_FALSE(parseMemoryInfo(bad)) << bad.substr(0, 30);
}

TEST(ParseSmallFiles, GiveNoneForAnythingElse) {
    EXPECT_EQ(parseSwapCounts("pswpout 2\nxpswpin 9\npswpin 1"), (SwapCounts{1, 2}));
    EXPECT_FALSE(parseSwapCounts("pswpin 1\npswpout x\n"));
    EXPECT_FALSE(parseSwapCounts("pswpin 1\n"));
    EXPECT_EQ(parseZramUsedBytes("  1   2 61440000 0 5\n"), 61440000u);
    EXPECT_FALSE(parseZramUsedBytes("1 2\n"));
    EXPECT_EQ(parseControlGroup("4:memory:/a\n0::/user.slice/x.scope\n"), "/user.slice/x.scope");
    EXPECT_EQ(parseControlGroup("1:name=systemd:/user.slice/y.scope\n0::/\n"), "/user.slice/y.scope");
    EXPECT_EQ(parseControlGroup("garbage"), "");
}

/// The text of cmdline for words with blanks between them; "~" is a blank of the word's own.
std::string commandLine(std::string words) {
    for (char& each : words)
        each = each == ' ' ? '\0' : each == '~' ? ' ' : each;
    return words + '\0';
}

TEST(SubjectOf, NamesWhatAnInterpreterRunsAndNothingElseOfItsArguments) {
    using Case = std::tuple<const char*, const char*, const char*>;
    for (const auto& [program, arguments, subject] :
         {Case{"python3.11", "python3 train.py --token secret", "train.py"},
          Case{"python3.11", "/usr/bin/python3 -u -W ignore -X dev ./src/train.py", "train.py"},
          Case{"python3.11", "python3 -um http.server 8000", "http.server"},
          Case{"python3.11", "python3 -Wignore -mhttp.server", "http.server"},
          Case{"python3.11", "python3 -c import~secret x.py", ""},
          Case{"python3.11", "python3", ""},
          Case{"python3.11", "/opt/venv/bin/python -", ""},
          Case{"pypy3", "pypy3 -- -odd.py", "-odd.py"},
          Case{"python3.11", "gunicorn:~worker~[shop]", "gunicorn"},
          Case{"node", "npm~run~build", "npm"},
          Case{"node", "node --require ./x.js --inspect=9 -r y /srv/server.js", "server.js"},
          Case{"node", "node --eval code x.js", ""},
          Case{"bun", "bun run app.ts", "app.ts"},
          Case{"deno", "deno run --allow-net https://host/x.ts?token=secret", "x.ts"},
          Case{"bash", "bash -euo pipefail script.sh secret", "script.sh"},
          Case{"bash", "-bash", ""},
          Case{"bash", "bash --rcfile /x -i", ""},
          Case{"dash", "/bin/sh -ec secret", ""},
          Case{"dash", "/bin/sh +x ./run", "run"},
          Case{"perl", "perl -w -Ilib -I lib tool.pl", "tool.pl"},
          Case{"perl5.36", "perl -Mstrict -e secret", ""},
          Case{"ruby3.1", "ruby -r set -C /srv app.rb", "app.rb"},
          Case{"php8.2", "php -d a=b -f index.php", "index.php"},
          Case{"java", "java -Xmx2g -cp a.jar:b.jar -Dkey=secret org.gradle.GradleDaemon 8", "GradleDaemon"},
          Case{"java", "java --add-opens a/b=c -jar /srv/paper-1.20.jar nogui", "paper-1.20.jar"},
          Case{"java", "java -m game/net.minecraft.client.Main", "net.minecraft.client.Main"},
          Case{"R", "/usr/lib/R/bin/exec/R --no-echo --file=fit.R", "fit.R"},
          Case{"dotnet", "dotnet exec --depsfile x /srv/Shop.dll", "Shop.dll"},
          Case{"dotnet", "dotnet build", ""},
          Case{"busybox", "/bin/busybox httpd -f", "httpd"},
          Case{"busybox", "sh ./poll.sh", "poll.sh"},
          Case{"qemu-system-x86_64", "qemu -name guest=win11,debug-threads=on -m 4", "win11"},
          Case{"qemu-system-x86_64", "qemu -m 4 -name box", "box"},
          Case{"qemu-system-arm", "qemu -name", ""},
          Case{"conmon", "conmon -b /x -n web --exit", "web"},
          Case{"wine64-preloader", "Z:\\games\\Deep~Cave.EXE -secret", "Z:\\games\\Deep Cave.EXE"},
          Case{"wine64-preloader", "wineserver", ""},
          Case{"make", "make x.py", ""},
          Case{"python3.11", "python3 \x1b[2J\xff\u202e.py", "?[2J??.py"},
          Case{"python3.11", "python3 dir/", "dir"},
          Case{"python3.11", "python3 ///", ""},
          Case{"python3.11", "", ""},
          Case{"", "", ""}})
        EXPECT_EQ(subjectOf(program, commandLine(arguments)), subject) << program << ": " << arguments;
    EXPECT_LE(subjectOf("python3", commandLine("python3 " + std::string(100'000, 'x'))).size(), 200U);
    EXPECT_EQ(subjectOf("python3", std::string(70'000, '\0')), "");
    EXPECT_TRUE(hasSubject("python3.13t") || hasSubject("python3.13"));
    EXPECT_FALSE(hasSubject("") || hasSubject("make") || hasSubject("pythonic") || hasSubject("3.11"));
}

} // namespace
} // namespace vantoro
