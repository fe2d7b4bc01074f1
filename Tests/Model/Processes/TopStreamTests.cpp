#include "Model/Processes/TopStream.h"

#include "Model/Processes/IdentityResolver.h"
#include "Model/Text/Numbers.h"
#include "Model/Text/Utf8.h"
#include "Support/Testing.h"

namespace vantoro {
namespace {

constexpr std::uint64_t mebibyte = 1024 * 1024;

const std::string block = R"(Processes: 3 total, 1 running, 2 sleeping, 9 threads
2026/03/01 09:14:00
Load Avg: 2.11, 2.04, 1.98
CPU usage: 5.12% user, 10.25% sys, 84.61% idle
PhysMem: 15G used (2318M wired, 4107M compressor), 120M unused.
VM: 221T vsize, 3802M framework vsize, 25858(0) swapins, 27431(0) swapouts.

PID    COMMAND          %CPU  MEM    POWER USER
1042   Editor (Beta) 2  98.5  812M+  98.5  anna
7      daemon           0.3   1234K  0.0   root
x      no pid           1.0   1K     0.0   root
8                       1.0   1K     0.0   root
9      Überwacher      1.5   2G-    0.1   jörg
)";

using Blocks = std::vector<std::vector<std::string>>;

Blocks blocksOf(const std::vector<std::string>& pieces) {
    Blocks blocks;
    TopBlockCutter cutter;
    for (const std::string& piece : pieces)
        cutter.ingest(piece, [&blocks](const std::vector<std::string>& lines) { blocks.push_back(lines); });
    return blocks;
}

std::vector<std::string> linesOf(const std::string& text) {
    return blocksOf({text + "Processes: next\n"}).at(0);
}

TEST(TopStream, ReadsABlock) {
    const TopBlock parsed = parseBlock(linesOf(block), 1);
    EXPECT_EQ(parsed.system.cpu, (CPULoad{5.12, 10.25, 84.61, 2.11}));
    EXPECT_EQ(parsed.system.memory, (MemoryLoad{16106127360, 16231956480, 2430599168, 4306501632, 27431}));
    ASSERT_EQ(parsed.rows.size(), 3U) << "rows without a pid or a command are left out";
    EXPECT_EQ(parsed.rows[0], (TopRow{1042, "Editor (Beta) 2", 98.5, 812 * mebibyte, 98.5, "anna"}));
    EXPECT_EQ(parsed.rows[2], (TopRow{9, "Überwacher", 1.5, 2048 * mebibyte, 0.1, "jörg"}))
        << "columns are padded by bytes";
}

// As the Mac's own `top` fills its columns: by bytes, in a command column of 16 and a blank.
TEST(TopStream, MarkedPidsAndNamesOfManyBytesKeepTheirRows) {
    using Case = std::tuple<const char*, const char*, std::optional<TopRow>>;
    const auto row = [](std::int32_t pid, const char* command) {
        return TopRow{pid, command, 12.5, 4096, 1.5, "anna"};
    };
    for (const auto& [pid, command, expected] :
         {Case{"512*", "Rosetta", row(512, "Rosetta")}, Case{"513-", "Rosetta", row(513, "Rosetta")},
          Case{"99999*", "x", row(99999, "x")}, Case{"0", "kernel_task", row(0, "kernel_task")},
          Case{"7", "Überwächter", row(7, "Überwächter")}, Case{"8", "写真ビュー", row(8, "写真ビュー")},
          Case{"9", "日本語🙂 x", row(9, "日本語🙂 x")}, Case{"*", "x", {}}, Case{"1**", "x", {}},
          Case{"-", "x", {}}, Case{"1*2", "x", {}}}) {
        std::string line(pid);
        line.resize(7, ' ');
        line += command;
        line.resize(24, ' ');
        const TopBlock parsed = parseBlock(
            {"Processes: 1", "PID    COMMAND          %CPU MEM   POWER USER", line + "12.5 4K    1.5   anna"}, 1);
        EXPECT_EQ(parsed.rows, expected ? std::vector{*expected} : std::vector<TopRow>()) << line;
    }
    const ColumnRanges columns = columnRanges("PID COMMAND %CPU");
    EXPECT_EQ(slice("1   1234567ü8 5.0", columns, "COMMAND"), "1234567ü")
        << "a character is in the column it begins in";
    EXPECT_EQ(slice("1   1234567ü8 5.0", columns, "%CPU"), "8 5.0");
    EXPECT_FALSE(slice("1   1234567ü", columns, "%CPU"));
}

TEST(TopStream, PiecesCutAnywhereGiveTheSameBlocks) {
    const std::string stream = "a line of a block that began before\n" + block + block + "Processes: 1\npartial";
    const Blocks whole = blocksOf({stream});
    ASSERT_EQ(whole.size(), 2U);
    EXPECT_EQ(whole[0].front(), "Processes: 3 total, 1 running, 2 sleeping, 9 threads");
    std::vector<std::string> bytes;
    for (const char byte : stream)
        bytes.emplace_back(1, byte);
    EXPECT_EQ(blocksOf(bytes), whole);
}

TEST(TopStream, BadPiecesAndEndlessLinesCostThemselvesOnly) {
    EXPECT_EQ(blocksOf({"Processes: 1\n", "\xFF\xFE\n", "b\n", "Processes: 2\n"}), (Blocks{{"Processes: 1", "b"}}));
    EXPECT_EQ(blocksOf({"", "Processes: 1\n", std::string("a\0b\n", 4), "Processes: 2\n"})[0][1].size(), 3U);
    std::vector<std::string> pieces{"Processes: 1\n"};
    pieces.insert(pieces.end(), 10, std::string(mebibyte, 'x'));
    pieces.emplace_back("\nb\n" + std::string(TopBlockCutter::longestLine + 1, 'y') + "\nc\nProcesses: 2\n");
    EXPECT_EQ(blocksOf(pieces), (Blocks{{"Processes: 1", "b", "c"}}));
    std::string manyLines = "Processes: 1\n";
    for (std::size_t i = 0; i < 2 * TopBlockCutter::mostLines; ++i)
        manyLines += "x\n";
    EXPECT_EQ(blocksOf({manyLines + "Processes: 2\n"}).at(0).size(), TopBlockCutter::mostLines);
    EXPECT_FALSE(lastBlock(""));
    EXPECT_FALSE(lastBlock(block)) << "a single block covers no interval";
    EXPECT_EQ(lastBlock("Processes: 1\na\nProcesses: 2\nb")->at(1), "b");
}

TEST(TopStream, AColumnThatIsMissingCostsItselfOnly) {
    const TopBlock parsed =
        parseBlock({"Processes: 1", "CPU usage: nan% user, 7% sys, idle, 1e999% idle", "Load Avg: soon, 1.5",
                    "PID  COMMAND  %CPU  MEM  USER", "1    a        25.0  4K   me", "2    b"},
                   99);
    EXPECT_EQ(parsed.system.cpu, (CPULoad{0, 7, 100, 1.5}));
    EXPECT_EQ(parsed.system.memory.totalBytes, 0U) << "no memory line, no memory figures";
    EXPECT_EQ(parsed.rows, (std::vector{TopRow{1, "a", 25, 4096, 0, "me"}, TopRow{2, "b", 0, 0, 0, ""}}));
    EXPECT_TRUE(parseBlock({}, 1).rows.empty());
}

TEST(TopStream, SizesAndPathLists) {
    using Case = std::tuple<const char*, std::uint64_t>;
    for (const auto& [text, bytes] :
         {Case{"1234K", 1263616}, Case{"56M+", 58720256}, Case{"2G-", 2147483648}, Case{"1.5K", 1536},
          Case{"4096", 4096}, Case{"3T", 3ULL << 40}, Case{"512B", 0}, Case{"", 0}, Case{"+-", 0}, Case{"K", 0},
          Case{"-5K", 0}, Case{"nan", 0}, Case{"infM", 0}, Case{"99999999999T", ~0ULL}, Case{"1e5", 100000}})
        EXPECT_EQ(parseSize(text), bytes) << text;
    EXPECT_EQ(parsePhysMem("PhysMem: 8G used (1G wired).", 77).totalBytes, 77U);
    EXPECT_EQ(parsePhysMem("PhysMem:", 77), (MemoryLoad{.totalBytes = 77}));
    EXPECT_EQ(parsePhysMem("Phys", 77), (MemoryLoad{.totalBytes = 77}));
    EXPECT_EQ(parseSwap("VM: 1(0) swapins"), 0U);
    EXPECT_EQ(parseSwap("VM: -3(0) swapouts"), 0U);
    EXPECT_EQ(parseSwap("12 swapouts"), 12U);
    EXPECT_EQ(parsePathList("  12 /bin/a b\n\nx /bin/c\n13\n14  \n4294967296 /d\n15 [kworker/0:1]\n16 /e"),
              (std::unordered_map<std::int32_t, std::string>{{12, "/bin/a b"}, {15, "[kworker/0:1]"}, {16, "/e"}}));
}

TEST(Numbers, ReadAsOtherProgramsPrintThem) {
    using Case = std::tuple<const char*, double>;
    for (const auto& [text, value] :
         {Case{"5.12", 5.12}, Case{"-0.5", -0.5}, Case{"+7", 7}, Case{".5", 0.5}, Case{"5.", 5}, Case{"1e3", 1000},
          Case{"1e-3", 0.001}, Case{"1772356440.25", 1772356440.25},
          Case{"12345678901234567890", 12345678901234567890.0}})
        EXPECT_EQ(parseDecimal(text), value) << text;
    for (const char* text : {"1e999", "", "-", ".", "1,5", "nan", "inf", "0x10", " 1", "1 ", "1e", "1e+"})
        EXPECT_EQ(parseDecimal(text), std::nullopt) << text;
    EXPECT_FALSE(parseDecimal(std::string(1'000'000, '9')));
    EXPECT_EQ(parseInt32("+2147483647"), 2147483647);
    for (const char* const text : {"2147483648", "1.0", "+-1", "++1", "", " 1", "1x"})
        EXPECT_FALSE(parseInt32(text)) << text;
}

TEST(Utf8, TellsBrokenFromIncomplete) {
    for (const char* const bad : {"\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x28\xA1", "\xF8"}) {
        EXPECT_EQ(validUtf8Length(bad), 0U);
        EXPECT_FALSE(isIncompleteCharacter(bad));
    }
    for (const char* const cut : {"\xC3", "\xE2\x82", "\xF0\x9F\x98"})
        EXPECT_TRUE(isIncompleteCharacter(cut));
    EXPECT_EQ(validUtf8Length("ä€😀"), 9U);
    EXPECT_EQ(characterStart("ä€x", 3), 5U);
    EXPECT_EQ(characterStart("ä", 9), 2U);
    EXPECT_EQ(firstCharacter("€x").letter, 0x20ACU);
    EXPECT_EQ(firstCharacter("\xE2\x82").letter, std::nullopt);
}

TEST(ProcessNaming, PathsTellNameOwnerAndKind) {
    using enum ProcessKind;
    using Case = std::tuple<const char*, const char*, const char*, const char*, const char*, ProcessKind>;
    for (const auto& [path, user, displayName, owner, ownerPath, kind] :
         {Case{"/Applications/Editor.app/Contents/Frameworks/Helper.app/Contents/MacOS/Helper", "anna", "Helper",
               "Editor", "/Applications/Editor.app", helper},
          Case{"/System/Applications/Mail.app/Contents/MacOS/Mail", "anna", "Mail", "Mail",
               "/System/Applications/Mail.app", systemDaemon},
          Case{"/Applications/Editor.app/Contents/MacOS/Editor", "root", "Editor", "Editor", "/Applications/Editor.app",
               userApp},
          Case{"/usr/local/bin/a-long-tool-name", "anna", "a-long-tool-name", "-", "-", commandLine},
          Case{"/usr/local/bin/tool", "root", "tool", "-", "-", systemDaemon},
          Case{"/usr/libexec/thing", "anna", "thing", "-", "-", systemDaemon},
          Case{"/sbin/launchd", "anna", "launchd", "-", "-", systemDaemon},
          Case{"/Users/anna/notes.apple/tool", "anna", "tool", "-", "-", commandLine},
          Case{"", "anna", "cut-short", "-", "-", systemDaemon}}) {
        const ProcessIdentity identity = resolveIdentity(5, "cut-short", path, user, "anna");
        EXPECT_EQ(identity.displayName, displayName) << path;
        EXPECT_EQ(identity.owningAppName.value_or("-"), owner) << path;
        EXPECT_EQ(identity.owningAppPath.value_or("-"), ownerPath) << path;
        EXPECT_EQ(identity.kind, kind) << path;
        EXPECT_EQ(identity.rawName, "cut-short");
    }
    const ProcessIdentity core = resolveIdentity(0, "whatever", "/bin/x", "root", "anna");
    EXPECT_EQ(core.displayName, "kernel_task");
    EXPECT_EQ(core.kind, kernel);
    EXPECT_EQ(core.executablePath, "");
}

} // namespace
} // namespace vantoro
