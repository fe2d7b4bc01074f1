#include "Platform/Linux/Proc/ProcJobs.h"

#include "Platform/Linux/Proc/ProgramSubject.h"
#include "Support/Folders.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace vantoro {
namespace {

using testing::Relative;

class ProcJobsTest : public ::testing::Test {
protected:
    testing::TemporaryFolder folder;
    std::vector<Relative> relatives;
    std::unique_ptr<ProcScan> scan;
    std::unique_ptr<ProcJobs> jobs;

    void round() {
        for (const Relative& each : relatives)
            writeRelative(folder, each);
        if (!scan) {
            scan = std::make_unique<ProcScan>(folder.path(), 0);
            jobs = std::make_unique<ProcJobs>(*scan);
        }
        scan->list({}, 0);
        for (ScannedProcess& process : scan->processes())
            scan->read(process);
    }
    std::string jobOf(int pid) { return jobs->origin(*scan->find(pid)).job; }
    ProcessOrigin::Shell shellOf(int pid) { return jobs->origin(*scan->find(pid)).shell; }
};

TEST_F(ProcJobsTest, AJobIsWhatWasStartedBelowAShell) {
    const std::string konsole = "/user.slice/user-1000.slice/user@1000.service/app.slice/app-konsole-7.scope";
    const std::string code = "/user.slice/user-1000.slice/user@1000.service/app.slice/app-code-9.scope";
    const std::string session = "/user.slice/user-1000.slice/session-3.scope";
    using enum ProcessOrigin::Shell;
    struct Case {
        Relative is;
        std::string job;
        ProcessOrigin::Shell shell;
    };
    const std::vector<Case> cases = {
        {{1, 0, 1, 1, "systemd", "/sbin/init"}, "", none},
        // A terminal, its shell, and a build with its recipes.
        {{800, 1, 800, 800, "konsole", "/bin/konsole", 0, 0, 100, konsole}, "konsole", none},
        {{801, 800, 801, 801, "bash", "-bash", 0, 0, 100, konsole}, "bash", inner},
        {{810, 801, 810, 801, "make", "/bin/make -j8", 0, 0, 100, konsole}, "make", inner},
        {{811, 810, 810, 801, "sh", "/bin/sh -c x", 0, 0, 100, konsole}, "make", inner},
        {{812, 811, 810, 801, "cc1plus", "/usr/lib/cc1plus", 0, 0, 100, konsole}, "make", inner},
        // A script whose tools make groups of their own.
        {{820, 801, 820, 801, "bash", "/bin/bash build.sh", 0, 0, 100, konsole}, "build.sh", inner},
        {{821, 820, 821, 801, "timeout", "/bin/timeout 9 ./x", 0, 0, 100, konsole}, "build.sh", inner},
        {{822, 821, 821, 801, "x", "/home/ada/x", 0, 0, 100, konsole}, "build.sh", inner},
        {{823, 820, 823, 823, "ctest", "/bin/ctest", 0, 0, 100, konsole}, "build.sh", inner},
        // A pipeline, by the member that works most.
        {{830, 801, 830, 801, "sort", "/bin/sort", 40, 0, 100, konsole}, "gzip", inner},
        {{831, 801, 830, 801, "gzip", "/bin/gzip", 90, 0, 100, konsole}, "gzip", inner},
        // Wrappers, split-off shells and shells of a command line are there for somebody else's sake; xargs works.
        {{840, 801, 840, 801, "sudo", "/bin/sudo make", 0, 0, 100, konsole}, "make", inner},
        {{841, 840, 841, 841, "sudo", "/bin/sudo make", 0, 0, 100, konsole}, "make", inner},
        {{842, 841, 842, 841, "make", "/bin/make", 0, 0, 100, konsole}, "make", inner},
        {{850, 801, 850, 801, "bash", "-bash", 0, 0, 100, konsole}, "train", inner},
        {{851, 850, 850, 801, "train", "/home/ada/train", 0, 0, 100, konsole}, "train", inner},
        {{860, 801, 860, 801, "python3", "/bin/python3 train.py", 0, 0, 100, konsole}, "train.py", inner},
        {{861, 860, 860, 801, "python3", "/bin/python3 -c x", 0, 0, 100, konsole}, "train.py", inner},
        {{870, 801, 870, 801, "xargs", "/bin/xargs -P8 gzip", 0, 0, 100, konsole}, "xargs", inner},
        {{871, 870, 870, 801, "gzip", "/bin/gzip", 500, 0, 100, konsole}, "xargs", inner},
        // Its shell has ended, or only its starter: it was a shell's all the same.
        {{880, 1, 880, 879, "ninja", "/bin/ninja", 0, 0, 100, konsole}, "ninja", first},
        {{881, 880, 880, 879, "cc1", "/usr/lib/cc1", 0, 0, 100, konsole}, "ninja", first},
        {{886, 1, 885, 801, "burn", "/bin/burn", 0, 0, 100, konsole}, "burn", first},
        // What an application starts without anybody's typing is no shell's.
        {{900, 1, 900, 900, "code", "/opt/code", 0, 0, 100, code}, "code", none},
        {{901, 900, 900, 900, "sh", "/bin/sh -c make", 0, 0, 100, code}, "code", script},
        {{902, 901, 900, 900, "make", "/bin/make", 0, 0, 100, code}, "code", script},
        // Behind doors: a command over the network, the clock, a multiplexer.
        {{700, 1, 700, 700, "sshd", "/sbin/sshd"}, "", none},
        {{701, 700, 700, 700, "sshd-session", "/sbin/sshd"}, "", none},
        {{702, 701, 702, 702, "bash", "/bin/bash -c make"}, "make", script},
        {{703, 702, 702, 702, "make", "/bin/make"}, "make", script},
        {{950, 1, 950, 950, "cron", "/sbin/cron"}, "", none},
        {{951, 950, 950, 950, "CRON", "/sbin/cron"}, "", none},
        {{952, 951, 952, 952, "sh", "/bin/sh -c backup.sh"}, "backup.sh", script},
        {{953, 952, 952, 952, "backup.sh", "/bin/sh /bin/backup.sh"}, "backup.sh", script},
        {{960, 1, 960, 960, "tmux: server", "tmux"}, "", none},
        {{961, 960, 961, 961, "zsh", "-zsh"}, "zsh", inner},
        {{962, 961, 962, 961, "htop", "/bin/htop"}, "htop", inner},
        // A desktop's session is no job, nor is one member of it another's.
        {{970, 1, 970, 970, "xfce4-session", "/bin/xfce4-session", 0, 0, 100, session}, "", none},
        {{971, 970, 970, 970, "tool", "/bin/tool", 0, 0, 100, session}, "", none},
        // Without any of these, the process group.
        {{980, 1, 980, 980, "nginx", "/sbin/nginx"}, "nginx", none},
        {{981, 980, 980, 980, "worker", "/sbin/worker"}, "nginx", none},
        // A circle of parents.
        {{990, 991, 990, 5, "a", "/bin/a"}, "a", none},
        {{991, 990, 991, 5, "b", "/bin/b"}, "b", none},
    };
    for (const Case& each : cases)
        relatives.push_back(each.is);
    round();
    folder.remove("proc/812/cgroup"); // it ended before it was asked, and was where its parent is
    for (const auto& [is, job, shell] : cases) {
        EXPECT_EQ(jobOf(is.pid), job) << is.pid << " " << is.name;
        EXPECT_EQ(shellOf(is.pid), shell) << is.pid << " " << is.name;
    }
}

TEST_F(ProcJobsTest, AJobKeepsItsNameWhenItsLeaderEndsAndDoesNotFlap) {
    relatives = {{10, 1, 10, 10, "bash", "-bash"},           {20, 10, 20, 10, "make", "/bin/make"},
                 {21, 20, 20, 10, "cc1", "/bin/cc1"},        {30, 10, 30, 10, "sort", "/bin/sort", 300},
                 {31, 10, 30, 10, "gzip", "/bin/gzip", 400}, {40, 10, 40, 10, "bash", "/bin/bash -c x"}};
    round();
    EXPECT_EQ(jobOf(21) + jobOf(30) + jobOf(40), "makegzipbash");
    folder.remove("proc/20");
    relatives[1] = {41, 40, 40, 10, "cargo", "/bin/cargo"};
    relatives[2].parent = 1;
    relatives[3].ticks = 900;
    for (int rounds = 0; rounds < 12; ++rounds)
        round();
    EXPECT_EQ(jobOf(21) + jobOf(30) + jobOf(40), "makegzipcargo");
    folder.remove("proc/41");
    relatives.erase(relatives.begin() + 1);
    relatives[2].ticks = 2000; // by now it is the one that works
    for (int rounds = 0; rounds < 20; ++rounds)
        round();
    EXPECT_EQ(jobOf(30) + jobOf(40), "sortcargo");
    // The pid that led a group leads another.
    relatives[1] = {20, 10, 20, 10, "vim", "/bin/vim", 0, 0, 900};
    round();
    EXPECT_EQ(jobOf(20), "vim");
}

TEST(TakesCommands, AShellWithoutAnythingToRun) {
    using namespace std::string_literals;
    for (const auto& text : {"-bash\0"s, "bash\0--rcfile\0/x\0-i\0"s, "/bin/zsh\0-l\0"s, "sh"s, ""s, "fish\0"s})
        EXPECT_TRUE(takesCommands(text)) << text;
    for (const auto& text : {"sh\0-ec\0make\0"s, "bash\0x.sh\0"s, "bash\0-s\0"s, "bash\0--\0x\0"s, "bash\0/dev/fd/3"s})
        EXPECT_FALSE(takesCommands(text)) << text;
}

} // namespace
} // namespace vantoro
