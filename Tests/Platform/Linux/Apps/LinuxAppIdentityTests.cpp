#include "Platform/Linux/Apps/LinuxAppIdentity.h"

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
    EXPECT_EQ(identity_.membership(2, "[kthreadd]"),
              (AppMembership{.kind = ProcessKind::kernel, .displayName = "kthreadd"}));
    for (const char* path : {"(nginx)", "", "relative", "/Applications/Editor.app/Contents/MacOS/Editor"})
        EXPECT_EQ(identity_.membership(812, path), AppMembership{}) << path;
    EXPECT_TRUE(isPathMark("[]"));
    EXPECT_FALSE(isPathMark("/usr/bin/[") || isPathMark("[") || isPathMark("") || isPathMark("(x]"));
}

TEST_F(LinuxAppIdentityTests, KnowsWhoseAProcessIs) {
    const std::string editor = "/usr/share/applications/org.example.Editor.desktop";
    const std::string maps = "/var/lib/flatpak/exports/share/applications/org.example.Maps.desktop";
    struct Case {
        int pid;
        const char* path;
        AppMembership membership;
    };
    using enum ProcessKind;
    for (const auto& [pid, path, membership] :
         {Case{2100, "/usr/lib/editor/editor", of(userApp, "Text Editor", editor)},
          Case{2105, "/usr/lib/editor/editor-renderer", of(helper, "Text Editor", editor)},
          Case{2300, "/usr/bin/python3.11",
               of(userApp, "Player", "/usr/share/applications/org.example.Player.desktop")},
          Case{2400, "/usr/bin/bwrap", of(helper, "Maps", maps)},
          Case{2402, "/app/bin/maps", of(userApp, "Maps", maps)},
          Case{2500, "/snap/painter/12/bin/painter",
               of(userApp, "Painter", "/var/lib/snapd/desktop/applications/painter_painter.desktop")},
          // Work in a shell is the user's own.
          Case{2200, "/usr/bin/term-emulator",
               of(userApp, "Terminal", "/usr/share/applications/org.example.Term-emulator.desktop")},
          Case{2210, "/usr/bin/bash", {.kind = commandLine}}, Case{2230, "/usr/bin/make", {.kind = commandLine}},
          Case{2231, "/usr/lib/gcc/cc1plus", {.kind = commandLine}},
          // Elsewhere the entry's command counts; of two that run it, the one that is the program's own names it.
          Case{2600, "/usr/lib/editor/editor", of(userApp, "Text Editor", editor)},
          Case{9999, "/usr/bin/vie wer", {}}, // its command begins with a launcher
          // A terminal program, a hidden one, an interpreter, a shell.
          Case{1850, "/usr/bin/monitor", {}}, Case{1850, "/usr/bin/tool", {}}, Case{1850, "/usr/bin/python3.11", {}},
          Case{1850, "/bin/sh", {}}, Case{1850, "/usr/bin/gnome-shell", {}}})
        EXPECT_EQ(identity_.membership(pid, path), membership) << path;
}

TEST(LinuxAppIdentityInTime, AsksAgainAfterAWhileAndSurvivesCycles) {
    const testing::TemporaryFolder folder;
    folder.write("usr/share/applications/e.desktop", "[Desktop Entry]\nType=Application\nName=E\nExec=/bin/e\n");
    writeProcess(folder, 7, "e", 1, 1);
    folder.write("proc/7/cgroup", "0::/session.scope\n");
    double seconds = 0;
    LinuxAppIdentity identity({.root = folder.path(),
                               .folders = {.data = {"/usr/share"}, .programs = {}},
                               .clock = [&seconds] { return seconds; }});
    EXPECT_EQ(identity.membership(7, "/opt/e"), AppMembership{});
    // The desktop moves a process into its unit a moment after it has started it.
    folder.write("proc/7/cgroup", "0::/app-e-7.scope\n");
    // And a pid that is its own parent's parent.
    folder.write("proc/7/stat", "7 (e) S 8 1 1 0 -1 0 1 0 0 0 1 5 0 0 20 0 2 0 1 4096 1 0\n");
    folder.write("proc/8/stat", "8 (f) S 7 1 1 0 -1 0 1 0 0 0 1 5 0 0 20 0 2 0 1 4096 1 0\n");
    folder.write("proc/8/cgroup", "0::/app-e-7.scope\n");
    seconds = 9;
    EXPECT_EQ(identity.membership(7, "/opt/e"), AppMembership{});
    seconds = 10;
    EXPECT_EQ(identity.membership(7, "/opt/e").owningAppName, "E");
}

} // namespace
} // namespace vantoro
