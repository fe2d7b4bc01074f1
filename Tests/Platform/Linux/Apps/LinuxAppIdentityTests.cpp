#include "Platform/Linux/Apps/LinuxAppIdentity.h"

#include "Platform/Linux/Apps/AppUnit.h"
#include "Platform/Linux/Proc/LinuxProcessTable.h"

#include "Support/Folders.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace vantoro {
namespace {

class LinuxAppIdentityTests : public ::testing::Test {
protected:
    LinuxAppIdentity identity_{{.root = testing::recordedMachine("laptop"),
                                .folders = desktopFolders("/home/ada", nullptr, nullptr, "/usr/bin"),
                                .clock = [this] { return seconds_; }}};
    double seconds_ = 0;

    static AppMembership of(ProcessKind kind, const std::string& name, const std::string& file) {
        return {.kind = kind, .owningAppName = name, .owningAppPath = file};
    }
};

TEST_F(LinuxAppIdentityTests, ReadsMarks) {
    EXPECT_EQ(identity_.membership(2, {.path = "[kthreadd]"}, false),
              (AppMembership{.kind = ProcessKind::kernel, .displayName = "kthreadd"}));
    for (const char* path : {"(nginx)", "", "relative", "/Applications/Editor.app/Contents/MacOS/Editor"})
        EXPECT_EQ(identity_.membership(812, {.path = path}, false), AppMembership{}) << path;
    EXPECT_TRUE(isPathMark("[]"));
    EXPECT_FALSE(isPathMark("/usr/bin/[") || isPathMark("[") || isPathMark("") || isPathMark("(x]"));
}

TEST_F(LinuxAppIdentityTests, KnowsWhoseAProcessIs) {
    const std::string editor = "/usr/share/applications/org.example.Editor.desktop";
    const std::string maps = "/var/lib/flatpak/exports/share/applications/org.example.Maps.desktop";
    using enum ProcessKind;
    AppMembership player = of(userApp, "Player", "/usr/share/applications/org.example.Player.desktop");
    player.displayName = "player";
    LinuxProcessTable table({.root = testing::recordedMachine("laptop"), .descriptorBudget = 0, .ownUid = 1000});
    std::vector<std::int32_t> pids;
    table.listPids(pids);
    struct Case {
        int pid;
        const char* path;
        AppMembership membership;
    };
    for (const auto& [pid, path, membership] :
         {Case{2100, "/usr/lib/editor/editor", of(userApp, "Text Editor", editor)},
          Case{2105, "/usr/lib/editor/editor-renderer", of(helper, "Text Editor", editor)},
          Case{2300, "/usr/bin/python3.11", player}, Case{2400, "/usr/bin/bwrap", of(helper, "Maps", maps)},
          Case{2402, "/app/bin/maps", of(userApp, "Maps", maps)},
          Case{2500, "/snap/painter/12/bin/painter",
               of(userApp, "Painter", "/var/lib/snapd/desktop/applications/painter_painter.desktop")},
          // Work in a shell is the user's own.
          Case{2200, "/usr/bin/term-emulator",
               of(userApp, "Terminal", "/usr/share/applications/org.example.Term-emulator.desktop")},
          Case{2210, "/usr/bin/bash", {.kind = commandLine, .owningAppName = "bash"}},
          Case{2230, "/usr/bin/make", {.kind = commandLine, .owningAppName = "make"}},
          Case{2231, "/usr/lib/gcc/cc1plus", {.kind = commandLine, .owningAppName = "make"}},
          // Elsewhere the entry's command counts; of two that run it, the one that is the program's own names it.
          Case{2600, "/usr/lib/editor/editor", of(userApp, "Text Editor", editor)}}) {
        ProcessOrigin origin = table.origin(pid);
        origin.path = path;
        EXPECT_EQ(identity_.membership(pid, origin, true), membership) << path;
    }
    // A shell of the application's own that runs a script, and a shell's work that outlived its terminal.
    ProcessOrigin make = table.origin(2230);
    make.shell = ProcessOrigin::Shell::script;
    EXPECT_EQ(identity_.membership(2230, make, true).owningAppName, "Terminal");
    make.shell = ProcessOrigin::Shell::first;
    EXPECT_EQ(identity_.membership(2230, make, true).owningAppName, "make");
    for (const char* path :
         {"/usr/bin/vie wer", // its command begins with a launcher
                              // A terminal program, a hidden one, an interpreter, a shell.
          "/usr/bin/monitor", "/usr/bin/tool", "/usr/bin/python3.11", "/bin/sh", "/usr/bin/gnome-shell"})
        EXPECT_EQ(identity_.membership(1850, {.path = path}, true), AppMembership{}) << path;
}

TEST_F(LinuxAppIdentityTests, NamesWorkByItsGroupItsScriptAndItsGame) {
    using enum ProcessKind;
    using enum ProcessOrigin::Shell;
    const std::string id = "3f2a1b4c5d6e7f8091a2b3c4d5e6f708192a3b4c5d6e7f8091a2b3c4d5e6f708";
    const std::string session = "/user.slice/user-1000.slice/session-3.scope";
    const std::string manager = "/user.slice/user-1000.slice/user@1000.service/";
    const std::string terminal = manager + "app.slice/app-org.gnome.Terminal.slice/vte-spawn-1.scope";
    struct Case {
        ProcessOrigin origin;
        bool isOwn;
        std::optional<ProcessKind> kind;
        const char* name;
        const char* owner;
    };
    const Case cases[] = {
        // Short-lived work of a session, whether or not its path was seen in time, whoever runs it.
        {{.path = "(cc1plus)", .controlGroup = session}, true, commandLine, "-", "-"},
        {{.path = "/usr/libexec/gcc/cc1plus", .controlGroup = session, .shell = inner}, true, commandLine, "-", "-"},
        {{.path = "/usr/bin/make", .controlGroup = terminal, .shell = inner}, false, commandLine, "-", "-"},
        {{.path = "(cc1)", .controlGroup = "/"}, true, commandLine, "-", "-"},
        {{.path = "/usr/libexec/gcc/cc1plus", .shell = inner}, true, commandLine, "-", "-"},
        {{.path = "/usr/bin/make", .controlGroup = manager + "app.slice/run-u3.service"}, true, commandLine, "-", "-"},
        {{.path = "/usr/bin/make", .controlGroup = "/system.slice/ssh.service", .shell = inner},
         true,
         commandLine,
         "-",
         "-"},
        // Services, the user's own among them.
        {{.path = "/usr/bin/pipewire", .controlGroup = manager + "session.slice/pipewire.service"},
         true,
         systemDaemon,
         "-",
         "pipewire"},
        {{.path = "/usr/lib/systemd/systemd", .controlGroup = manager + "init.scope"}, true, systemDaemon, "-", "-"},
        {{.path = "/usr/bin/make", .controlGroup = "/system.slice/cron.service", .shell = first},
         true,
         systemDaemon,
         "-",
         "cron"},
        {{.path = "(nginx)", .controlGroup = "/system.slice/nginx.service"}, false, systemDaemon, "-", "nginx"},
        {{.path = "/usr/lib/Xorg", .controlGroup = "/system.slice/lightdm.service"}, false, systemDaemon, "-", "-"},
        {{.path = "/usr/bin/gnome-shell", .controlGroup = manager + "session.slice/org.gnome.Shell@wayland.service"},
         true,
         systemDaemon,
         "-",
         "-"},
        {{.path = "/usr/bin/postgres",
          .controlGroup = "/system.slice/system-postgresql.slice/postgresql@15-a\\x2db.service"},
         false,
         systemDaemon,
         "-",
         "postgresql@15-a-b"},
        // Jobs: of a shell, of the clock, of whoever logs in, started as a service, and where no units are.
        {{.path = "(cc1plus)", .controlGroup = session, .shell = inner, .job = "make"}, true, commandLine, "-", "make"},
        {{.path = "/bin/xz", .controlGroup = "/system.slice/cron.service", .shell = script, .job = "backup.sh"},
         false,
         systemDaemon,
         "-",
         "backup.sh"},
        {{.path = "/usr/bin/rsync", .controlGroup = "/system.slice/ssh.service", .job = "rsync"},
         true,
         commandLine,
         "-",
         "rsync"},
        {{.path = "/bin/cc", .controlGroup = manager + "app.slice/run-u3.service", .job = "make"},
         true,
         commandLine,
         "-",
         "make"},
        {{.path = "/bin/cc", .controlGroup = "/system.slice/run-r7.scope", .job = "make"},
         false,
         systemDaemon,
         "-",
         "make"},
        {{.path = "/bin/cc", .controlGroup = "/system.slice/actions.runner.ada-engine.box.service", .job = "make"},
         false,
         systemDaemon,
         "-",
         "actions.runner.ada-engine.box"},
        {{.path = "/bin/cc", .controlGroup = "/", .job = "make"}, false, std::nullopt, "-", "make"},
        {{.path = "/bin/x", .controlGroup = manager + "session.slice/dbus-:1.2-org.example.X@0.service", .job = "x"},
         true,
         systemDaemon,
         "-",
         "-"},
        {{.path = "(nginx)", .controlGroup = "/"}, false, std::nullopt, "-", "-"},
        // Containers.
        {{.path = "/usr/bin/redis", .controlGroup = "/system.slice/docker-" + id + ".scope"},
         false,
         systemDaemon,
         "-",
         "container 3f2a1b4c5d6e"},
        {{.path = "/app", .controlGroup = "/docker/" + id + "/init"},
         false,
         systemDaemon,
         "-",
         "container 3f2a1b4c5d6e"},
        {{.path = "/app", .controlGroup = "/kubepods/burstable/pod1-2/" + id},
         false,
         systemDaemon,
         "-",
         "container 3f2a1b4c5d6e"},
        {{.path = "/app", .controlGroup = "/kubepods.slice/cri-containerd-" + id + ".scope"},
         false,
         systemDaemon,
         "-",
         "container 3f2a1b4c5d6e"},
        {{.path = "/app", .controlGroup = manager + "user.slice/libpod-" + id + ".scope/container", .container = "web"},
         true,
         commandLine,
         "-",
         "container web"},
        {{.path = "/usr/bin/conmon",
          .subject = "web",
          .controlGroup = manager + "user.slice/libpod-conmon-" + id + ".scope"},
         true,
         commandLine,
         "-",
         "-"},
        {{.path = "/sbin/init", .controlGroup = "/lxc.payload.box\x1b/init.scope"},
         false,
         systemDaemon,
         "-",
         "container box?"},
        {{.path = "/bin/x", .controlGroup = "/machine.slice/systemd-nspawn@build\\x2dbox.service/payload"},
         false,
         systemDaemon,
         "-",
         "container build-box"},
        // Virtual machines, scripts, Windows, games.
        {{.path = "/usr/bin/qemu-system-x86_64",
          .subject = "win11",
          .controlGroup = "/machine.slice/machine-qemu\\x2d1\\x2dwin11.scope/libvirt/emulator"},
         false,
         systemDaemon,
         "virtual machine win11",
         "-"},
        {{.path = "/usr/bin/python3.11", .subject = "train.py", .controlGroup = session},
         true,
         commandLine,
         "train.py",
         "-"},
        {{.path = "/usr/bin/wine64-preloader", .subject = "C:\\Tools\\edit.exe"}, true, userApp, "edit.exe", "-"},
        {{.path = "/proton/wine64-preloader",
          .subject = "Z:\\home\\ada\\.steam\\steamapps\\common\\Deep Cave\\bin\\cave.exe"},
         true,
         userApp,
         "cave.exe",
         "Deep Cave"},
        {{.path = "/home/ada/.steam/steamapps/common/Deep Cave/cave"}, true, userApp, "-", "Deep Cave"},
        {{.path = "/home/ada/.steam/steamapps/common/Proton 9.0/files/bin/wineserver", .controlGroup = session},
         true,
         commandLine,
         "-",
         "-"},
        {{.path = "/nix/store/x/bin/.tool-wrapped", .controlGroup = session}, true, commandLine, "tool", "-"},
    };
    int pid = 100;
    for (const Case& each : cases) {
        const AppMembership found = identity_.membership(++pid, each.origin, each.isOwn);
        const std::string what = each.origin.path + " in " + each.origin.controlGroup;
        EXPECT_EQ(found.kind, each.kind) << what;
        EXPECT_EQ(found.displayName.value_or("-"), each.name) << what;
        EXPECT_EQ(found.owningAppName.value_or("-"), each.owner) << what;
    }
}

TEST(KernelThreads, AreNamedByWhatTheyServe) {
    for (const auto& [name, shown] : {std::pair{"kworker/u8:2-events_unbound", "kworker/events_unbound"},
                                      {"kworker/3:1H+i915-unordered", "kworker/i915-unordered"},
                                      {"kworker/u17:0-kcryptd/253:0", "kworker/kcryptd"},
                                      {"kworker/u16:3+flush-259:0", "kworker/flush"},
                                      {"kworker/0:0", "kworker"},
                                      {"kworker/R-rcu_gp", "kworker/rcu_gp"},
                                      {"kworker/", "kworker"},
                                      {"kworker/u8:2-123", "kworker/123"},
                                      {"irq/127-nvme0q3", "irq/nvme0q3"},
                                      {"irq/9", "irq/9"},
                                      {"ksoftirqd/12", "ksoftirqd"},
                                      {"idle_inject/3", "idle_inject"},
                                      {"kswapd0", "kswapd"},
                                      {"md127_resync", "md_resync"},
                                      {"md", "md"},
                                      {"jbd2/sda1-8", "jbd2/sda1-8"},
                                      {"0123", "0123"},
                                      {"", ""}})
        EXPECT_EQ(kernelThreadName(name), shown) << name;
}

TEST(LinuxAppIdentityInTime, SeesWhatChangesAndSurvivesCycles) {
    const testing::TemporaryFolder folder;
    const auto entry = [](const std::string& name) {
        return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=/bin/e\n";
    };
    folder.write("usr/share/applications/e.desktop", entry("E"));
    folder.write("proc/stat", "processes 1\n");
    writeProcess(folder, 7, "e", 1, 1);
    folder.write("proc/7/cmdline", "/opt/e");
    folder.write("proc/7/cgroup", "0::/session.scope\n");
    double seconds = 0;
    LinuxAppIdentity identity({.root = folder.path(),
                               .folders = {.data = {"/usr/share"}, .programs = {}},
                               .clock = [&seconds] { return seconds; }});
    LinuxProcessTable table({.root = folder.path(), .descriptorBudget = 0, .ownUid = 1000});
    const auto owner = [&] {
        std::vector<std::int32_t> pids;
        table.listPids(pids);
        table.shortRecord(7);
        return identity.membership(7, table.origin(7), false).owningAppName.value_or("-");
    };
    EXPECT_EQ(owner(), "-");
    // The desktop moves a process into its unit a moment after it has started it.
    folder.write("proc/7/cgroup", "0::/app-e-7.scope\n");
    // And a pid that is its own parent's parent.
    folder.write("proc/7/stat", "7 (e) S 8 1 1 0 -1 0 1 0 0 0 1 5 0 0 20 0 2 0 1 4096 1 0\n");
    folder.write("proc/8/stat", "8 (f) S 7 1 1 0 -1 0 1 0 0 0 1 5 0 0 20 0 2 0 1 4096 1 0\n");
    folder.write("proc/8/cgroup", "0::/app-e-7.scope\n");
    folder.write("proc/stat", "processes 2\n");
    EXPECT_EQ(owner(), "-") << "not asked each time";
    EXPECT_EQ(owner(), "E");
    folder.write("usr/share/applications/e.desktop", entry("Edit"));
    folder.write("usr/share/applications/f.desktop", entry("F"));
    seconds = 9;
    EXPECT_EQ(owner(), "E");
    seconds = 70;
    EXPECT_EQ(owner(), "Edit");
}

} // namespace
} // namespace vantoro
