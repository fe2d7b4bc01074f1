#include "Platform/Linux/LinuxAppIdentity.h"

#include "Support/Folders.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace vantoro {
namespace {

constexpr std::string_view applications = "/usr/share/applications/";

class LinuxAppIdentityTests : public testing::Test {
protected:
    LinuxAppIdentity identity_{{.root = test::recordedMachine("laptop"),
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

TEST_F(LinuxAppIdentityTests, KnowsWhatRunsInAnApplicationsUnit) {
    const std::string file = std::string(applications) + "org.example.Editor.desktop";
    EXPECT_EQ(identity_.membership(2100, "/usr/lib/editor/editor"), of(ProcessKind::userApp, "Text Editor", file));
    EXPECT_EQ(identity_.membership(2105, "/usr/lib/editor/editor-renderer"),
              of(ProcessKind::helper, "Text Editor", file));
    EXPECT_EQ(identity_.membership(2300, "/usr/bin/python3.11"),
              of(ProcessKind::userApp, "Player", std::string(applications) + "org.example.Player.desktop"));
}

TEST_F(LinuxAppIdentityTests, KnowsSandboxes) {
    const std::string maps = "/var/lib/flatpak/exports/share/applications/org.example.Maps.desktop";
    EXPECT_EQ(identity_.membership(2400, "/usr/bin/bwrap"), of(ProcessKind::helper, "Maps", maps));
    EXPECT_EQ(identity_.membership(2402, "/app/bin/maps"), of(ProcessKind::userApp, "Maps", maps));
    EXPECT_EQ(identity_.membership(2500, "/snap/painter/12/bin/painter"),
              of(ProcessKind::userApp, "Painter", "/var/lib/snapd/desktop/applications/painter_painter.desktop"));
}

TEST_F(LinuxAppIdentityTests, TakesWorkInAShellForTheUsersOwn) {
    const std::string file = std::string(applications) + "org.example.Term-emulator.desktop";
    EXPECT_EQ(identity_.membership(2200, "/usr/bin/term-emulator"), of(ProcessKind::userApp, "Terminal", file));
    for (const auto& [pid, path] :
         {std::pair{2210, "/usr/bin/bash"}, {2230, "/usr/bin/make"}, {2231, "/usr/lib/gcc/cc1plus"}})
        EXPECT_EQ(identity_.membership(pid, path), AppMembership{.kind = ProcessKind::commandLine}) << path;
}

TEST_F(LinuxAppIdentityTests, ElsewhereGoesByTheEntrysCommand) {
    // Two entries run it; the one that is the program's own names it.
    EXPECT_EQ(identity_.membership(2600, "/usr/lib/editor/editor"),
              of(ProcessKind::userApp, "Text Editor", std::string(applications) + "org.example.Editor.desktop"));
    EXPECT_EQ(identity_.membership(9999, "/usr/bin/vie wer"), AppMembership{}) << "its command begins with a launcher";
    // A terminal program, a hidden one, an interpreter, a shell.
    for (const char* path :
         {"/usr/bin/monitor", "/usr/bin/tool", "/usr/bin/python3.11", "/bin/sh", "/usr/bin/gnome-shell"})
        EXPECT_EQ(identity_.membership(1850, path), AppMembership{}) << path;
}

TEST(LinuxAppIdentityInTime, AsksAgainAfterAWhileAndSurvivesCycles) {
    const test::TemporaryFolder folder;
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
