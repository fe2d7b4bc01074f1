#include "Platform/Linux/Apps/AppUnit.h"
#include "Platform/Linux/Apps/DesktopEntries.h"
#include "Platform/Linux/Apps/DesktopEntry.h"

#include "Support/Folders.h"

#include <gmock/gmock.h>

namespace vantoro {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using Words = std::vector<std::string>;

Words commandOf(const std::string& exec) {
    const auto entry = parseDesktopEntry("[Desktop Entry]\nType=Application\nName=X\nExec=" + exec + "\n");
    return entry ? entry->command : Words{"no entry"};
}

TEST(ParseDesktopEntry, ReadsItsOwnGroupOnly) {
    const auto entry =
        parseDesktopEntry("Name=Before\n[Other]\nName=Other\n[Desktop Entry]\r\n# Name=Comment\n Name = An\\sEditor "
                          "\nName[de]=Ein\nName=Second\nType=Application\nTerminal=true\nNoDisplay=true\n"
                          "[Desktop Action x]\nName=Action\nExec=action\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(*entry, (DesktopEntry{.name = "An Editor", .terminal = true, .hidden = true}));
}

TEST(ParseDesktopEntry, RefusesWhatIsNoApplication) {
    const std::string good = "[Desktop Entry]\nType=Application\nName=X\n";
    EXPECT_TRUE(parseDesktopEntry(good));
    EXPECT_TRUE(parseDesktopEntry(good.substr(0, good.size() - 1)));
    for (const std::string& bad :
         {""s, "[Desktop Entry]"s, "[Desktop Entry]\nType=Link\nName=X\n"s, "[Desktop Entry]\nType=Application\n"s,
          "[Desktop Entry]\nType=Application\nName=\x01\n"s, good + "\0"s, std::string(10'000'000, 'x'),
          std::string(1'000'000, '[')})
        EXPECT_FALSE(parseDesktopEntry(bad)) << bad.substr(0, 60);
}

TEST(ParseDesktopEntry, SplitsTheCommand) {
    EXPECT_EQ(commandOf("editor --new %U %% 50%%"), (Words{"editor", "--new", "%", "50%"}));
    EXPECT_EQ(commandOf("\"/opt/My App/run\" \"a \\\\\"b\\\\\" \\\\$c\" \"\""),
              (Words{"/opt/My App/run", "a \"b\" $c", ""}));
    EXPECT_EQ(commandOf("\"unclosed"), Words{});
    EXPECT_EQ(commandOf(""), Words{});
    EXPECT_EQ(commandOf("\\"), Words{"\\"});
}

TEST(CommandProgram, LooksBehindLaunchers) {
    EXPECT_EQ(commandProgram({"editor", "-x"}), "editor");
    EXPECT_EQ(commandProgram({"/usr/bin/env", "-i", "A=b", "/snap/bin/painter"}), "/snap/bin/painter");
    EXPECT_EQ(commandProgram({"/usr/bin/flatpak", "run", "--command=maps", "org.example.Maps"}), "maps");
    EXPECT_EQ(commandProgram({"flatpak", "run", "org.example.Maps"}), "");
    EXPECT_EQ(commandProgram({"env"}), "");
    EXPECT_EQ(commandProgram({}), "");
    for (const char* launcher : {"bash", "python3.11", "env", "snap", "node", "java"})
        EXPECT_TRUE(isLauncher(launcher)) << launcher;
    EXPECT_FALSE(isLauncher("editor"));
    EXPECT_TRUE(isShell("-zsh"));
}

TEST(ApplicationIds, UnderstandsWhatDesktopsWrite) {
    const auto likeliest = [](const std::string& group) {
        const auto ids = applicationIds(group);
        return ids.empty() ? std::string("none") : ids.front();
    };
    EXPECT_EQ(likeliest("/user.slice/app.slice/app-gnome-org.example.Editor-2100.scope"), "org.example.Editor");
    EXPECT_EQ(likeliest("/app-org.example.Editor-2100.scope/tab-1"), "org.example.Editor");
    EXPECT_EQ(likeliest("app-gnome-big\\x2deditor-7.scope"), "big-editor");
    EXPECT_EQ(likeliest("/app-org.example.Player@6a1f.service"), "org.example.Player");
    EXPECT_EQ(likeliest("/app-plasma-org.example.Player@autostart.service"), "org.example.Player");
    EXPECT_EQ(likeliest("/snap.painter.big-brush-0f0e0d0c-1111-2222-3333-444455556666.scope"), "painter_big-brush");
    EXPECT_EQ(likeliest("/snap.painter.painter.service"), "painter_painter");
    EXPECT_THAT(applicationIds("/app-viewer-9.scope"), ::testing::Contains("viewer"));
    EXPECT_THAT(applicationIds("/app-viewer.scope"), ElementsAre("viewer"));
    for (const char* other :
         {"", "/", "/system.slice/nginx.service", "/app.slice/app-org.gnome.Terminal.slice/vte-spawn-1.scope",
          "/user@1000.service", "/app-.scope", "/snap..scope", "/app.slice", "////", "\xFF"})
        EXPECT_THAT(applicationIds(other), ElementsAre()) << other;
}

TEST(DesktopFoldersOf, FollowTheVariables) {
    const DesktopFolders folders =
        desktopFolders("/home/ada", nullptr, "/opt/share/:relative:/usr/share", "/bin:/usr/bin");
    EXPECT_THAT(folders.data, ElementsAre("/home/ada/.local/share", "/opt/share", "/usr/share",
                                          "/home/ada/.local/share/flatpak/exports/share", "/usr/local/share",
                                          "/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"));
    EXPECT_THAT(folders.programs, ElementsAre("/bin", "/usr/bin"));
    EXPECT_EQ(desktopFolders("/h", "/data", "", nullptr).data.front(), "/data");
}

TEST(DesktopEntries, PrefersEarlierFoldersAndNoticesChanges) {
    const testing::TemporaryFolder folder;
    const auto entry = [](const std::string& name, const std::string& exec) {
        return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n";
    };
    folder.write("one/applications/a.desktop", entry("First", "tool"));
    folder.write("two/applications/a.desktop", entry("Second", "tool"));
    folder.write("two/applications/huge.desktop", entry(std::string(10'000'000, 'x'), "tool"));
    folder.write("bin/tool", "\x7f"
                             "ELF");
    std::filesystem::permissions(folder.path() + "/bin/tool", std::filesystem::perms::owner_all);
    std::filesystem::create_directory_symlink("..", folder.path() + "/two/applications/loop");

    DesktopEntries entries(folder.path(), {.data = {"/one", "/two"}, .programs = {"/bin"}});
    EXPECT_EQ(entries.byId("a"), nullptr) << "nothing is read before it is needed";
    entries.refresh(100);
    ASSERT_NE(entries.byId("a"), nullptr);
    EXPECT_EQ(entries.byId("a")->entry.name, "First");
    EXPECT_EQ(entries.byId("a")->file, "/one/applications/a.desktop");
    EXPECT_EQ(entries.byId("huge"), nullptr);
    ASSERT_NE(entries.byExecutable("/bin/tool"), nullptr);
    EXPECT_EQ(entries.byExecutable("/bin/tool")->entry.name, "First");

    folder.write("one/applications/b.desktop", entry("New", "tool"));
    entries.refresh(159);
    EXPECT_EQ(entries.byId("b"), nullptr);
    entries.refresh(160);
    EXPECT_NE(entries.byId("b"), nullptr);
}

} // namespace
} // namespace vantoro
