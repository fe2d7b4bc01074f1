// Jobs and their members, work on the graphics processor, and work that is nobody's.
#include "Model/Live/Quits.h"
#include "Views/Now/NowView.h"
#include "Views/Suspects/SuspectsPanel.h"

#include "Support/HistoryBuilder.h"
#include "Views/Stage.h"

#include <numeric>
#include <QSignalSpy>

namespace vantoro {
namespace {

using namespace testing;

constexpr const char* job = "build.sh";

ProcessSample member(std::int32_t pid, const std::string& name, double percent, const std::string& program = {}) {
    ProcessSample row = process(pid, name, percent, ProcessKind::commandLine, job);
    ProcessIdentity identity = *row.identity;
    identity.executablePath = "/usr/bin/" + (program.empty() ? name : program);
    row.identity = identity;
    row.memoryBytes = 100ULL << 20U;
    return row;
}

/// Six samples, the last 10 seconds of a computer with 16 processors that is this busy.
void sample(Stage& stage, const std::vector<std::vector<ProcessSample>>& samples, double busyPercent = 60) {
    stage.hub.history().setSystem(SystemKind::gnuLinux);
    UnixSeconds time = builtNow;
    for (const std::vector<ProcessSample>& rows : samples) {
        Snapshot snapshot = at(time, bareMachine(busyPercent, rows));
        snapshot.cores.emplace(16, CoreReading{.isPerformance = true, .busyPercent = busyPercent});
        stage.hub.accept(snapshot);
        time += 2;
    }
}

QStringList told(const std::vector<MemberModel>& members) {
    QStringList lines;
    for (const MemberModel& line : members)
        lines += QStringList{line.name, line.detail, line.figure}.join(u'|') + (line.isSummary ? "*" : "");
    return lines;
}

int sumOf(const std::vector<MemberModel>& members) {
    return std::accumulate(members.begin(), members.end(), 0, [](int sum, const MemberModel& line) {
        return sum + QString(line.figure).remove(u'%').toInt();
    });
}

SuspectRowModel unfolded(const Stage& stage, const QString& folder = {}) {
    return suspectsModel(stage.hub, {}, {.key = job, .folder = folder}).rows.front();
}

TEST(JobModelTests, MembersThatAreAlikeAreOneLineAndTheEndedAreTheLast) {
    Stage stage;
    std::vector<ProcessSample> now;
    for (std::int32_t pid = 500; pid < 507; ++pid)
        now.push_back(member(pid, "cc1plus", 99.6));
    now.push_back(member(520, "codegen.py", 96.4, "python3.11"));
    now.push_back(member(400, "make", 2.2));
    std::vector<ProcessSample> before = now;
    before.push_back(member(490, "as", 30.2));
    before.push_back(member(491, "cc1plus", 80));
    // What only idles has left the list, too; it lives.
    before.push_back(member(530, "ld", 10));
    for (const ProcessSample& row : now)
        stage.processes->start(row.pid());
    stage.processes->start(530);
    sample(stage, {before, now});

    const SuspectRowModel row = unfolded(stage, "~/src/engine");
    EXPECT_EQ(told(row.members), QStringList({"cc1plus × 7||697%", "python3 codegen.py|pid 520|97%", "ld|pid 530|10%",
                                              "make|pid 400|2%", "2 that ended|cc1plus, as|110%*"}));
    EXPECT_EQ(sumOf(row.members), row.figure.chopped(1).toInt());
    EXPECT_EQ(row.about, "command-line work · 10 processes");
    EXPECT_EQ(row.folder, "in ~/src/engine");
    EXPECT_EQ(row.details, "peak 916% · 1.2 GB · sustained") << "what they used at once, not what each used once";
    EXPECT_TRUE(suspectsModel(stage.hub).rows.front().members.empty()) << "nobody looks at them";
}

TEST(JobModelTests, SixLinesAtMostTellTheLiving) {
    Stage stage;
    std::vector<ProcessSample> rows{member(400, "make", 200)};
    for (std::int32_t i = 0; i < 14; ++i)
        rows.push_back(member(500 + i, std::string(1, static_cast<char>('a' + i)), 14 - i));
    sample(stage, {rows, rows});
    const std::vector<MemberModel> members = unfolded(stage).members;
    ASSERT_EQ(members.size(), 6U);
    EXPECT_EQ(members[4].name, "d");
    EXPECT_EQ(members[5].name, "and 10 others");
    EXPECT_EQ(members[5].figure, "55%");
    EXPECT_EQ(sumOf(members), 305);
}

TEST(JobModelTests, LinesAddUpToTheirRowHoweverMembersComeAndGo) {
    std::uint32_t state = 7;
    const auto random = [&state](std::uint32_t below) {
        state = state * 1664525 + 1013904223;
        return (state >> 8U) % below;
    };
    for (int round = 0; round < 40; ++round) {
        Stage stage;
        std::vector<std::vector<ProcessSample>> samples(2 + random(9));
        for (auto& rows : samples)
            for (std::uint32_t i = 0, count = 1 + random(12); i < count; ++i)
                rows.push_back(member(static_cast<std::int32_t>(100 + random(40)), random(2) != 0 ? "cc1plus" : "as",
                                      random(1000) / 10.0));
        samples.back().push_back(member(99, "make", 3.7));
        sample(stage, samples);
        const SuspectRowModel row = unfolded(stage);
        if (!row.members.empty()) {
            EXPECT_EQ(sumOf(row.members), row.figure.chopped(1).toInt()) << round;
        }
    }
}

TEST(JobTests, WhoLeadsAJobIsAskedWithItAndSaysWhereItWorks) {
    const auto processes = std::make_shared<ScriptedProcesses>();
    Quits quits(
        processes, [] { return 0.0; }, [] { return 0.0; }, SystemKind::gnuLinux);
    const auto start = [&](std::int32_t pid, std::int32_t group, std::int32_t session, const char* folder) {
        LivingProcess& process = processes->start(pid, 1, 9).is;
        process.groupPid = group;
        process.sessionPid = session;
        process.startedAt = pid;
        processes->alive[pid].folder = folder;
    };
    start(300, 300, 300, "/home/anna");
    start(400, 400, 300, "/home/anna/src/engine");
    start(500, 400, 300, "/home/anna/src/engine/deep");
    const auto pidsAsked = [&quits](const ProcessGroup& group) {
        std::vector<std::int32_t> pids;
        for (const LivingProcess& process : quits.question(group).value_or(QuitQuestion()).processes)
            pids.push_back(process.pid);
        return pids;
    };
    ProcessGroup group{.key = job, .displayName = job, .kind = ProcessKind::commandLine};
    group.members = {{.pid = 500, .owningAppName = job, .firstSeen = 600}};
    // The leader waits, and is in no list.
    EXPECT_EQ(pidsAsked(group), (std::vector<std::int32_t>{500, 400}));
    EXPECT_EQ(quits.living(group), 2);
    EXPECT_EQ(quits.workingFolder(group), "/home/anna/src/engine");
    // It has ended; the row still tells what it did.
    processes->alive.erase(400);
    group.members.push_back({.pid = 400, .owningAppName = job, .firstSeen = 600});
    EXPECT_EQ(pidsAsked(group), std::vector<std::int32_t>{500});
    EXPECT_EQ(quits.living(group), 1);
    EXPECT_EQ(quits.workingFolder(group), "/home/anna/src/engine/deep");
    // What has no process group of its own belongs to the shell's, which takes the next command.
    processes->alive[500].is.groupPid = 300;
    EXPECT_EQ(pidsAsked(group), std::vector<std::int32_t>{500});
    // No job: a program that happens to share a process group.
    processes->alive[500].is.groupPid = 400;
    start(400, 400, 300, "");
    group.members = {{.pid = 500, .firstSeen = 600}};
    EXPECT_EQ(quits.living(group), 1);
    quits.disable();
    EXPECT_EQ(quits.workingFolder(group), "") << "a recording's processes are not this machine's";
}

TEST(JobTests, AFolderIsReadWhenTheRowIsUnfolded) {
    Stage stage;
    sample(stage, {{member(400, "make", 300), member(401, "cc1plus", 90)},
                   {member(400, "make", 300), member(401, "cc1plus", 90)}});
    stage.processes->start(400).folder = "/home/anna/src";
    stage.processes->start(401);
    EXPECT_EQ(jobFolder(stage.hub, job, "/home/anna"), "~/src");
    EXPECT_EQ(jobFolder(stage.hub, job, "/home/ann"), "/home/anna/src");
    EXPECT_EQ(jobFolder(stage.hub, job, "/"), "/home/anna/src");
    EXPECT_EQ(jobFolder(stage.hub, "gone", "/home/anna"), "");

    NowView now(stage.context);
    stage.picture(now, {1040, 778});
    SuspectRow* const row = now.findChild<SuspectRow*>();
    ASSERT_NE(row, nullptr);
    const int folded = row->height();
    row->setFocus(Qt::TabFocusReason);
    QTest::keyClick(row, Qt::Key_Right);
    EXPECT_TRUE(row->isExpanded());
    EXPECT_EQ(row->height(), folded + 2 * 24 + 4 + 14 + 10);
    const QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(row);
    EXPECT_TRUE(spoken->text(QAccessible::Name).startsWith("build.sh, command-line work, 2 processes, unfolded. in /"));
    EXPECT_EQ(spoken->text(QAccessible::Value), "390 percent of a core");
    QStringList lines;
    for (MemberLine* const line : row->findChildren<MemberLine*>()) {
        const QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(line);
        EXPECT_EQ(told->role(), QAccessible::TreeItem);
        lines += told->text(QAccessible::Name) + ": " + told->text(QAccessible::Value);
    }
    EXPECT_EQ(lines, QStringList({"make, pid 400: 300 percent of a core", "cc1plus, pid 401: 90 percent of a core"}));
    QTest::keyClick(row, Qt::Key_Right);
    EXPECT_TRUE(row->isExpanded());
    QTest::keyClick(row, Qt::Key_Left);
    EXPECT_EQ(row->height(), folded);
}

/// Rows as a test makes them, in a panel.
struct MadeList {
    explicit MadeList(const QSize& size = {616, 296}) {
        model.rows = {row("game", 112, 92), row("browser", 64, {}), row("indexer", 38, {})};
        model.rows[0].heatStop = 3;
        model.rows[0].isNamedForGraphics = true;
        show();
        stage.picture(panel, size);
    }

    static SuspectRowModel row(const QString& key, double percent, std::optional<double> graphics) {
        SuspectRowModel row{.key = key, .name = key, .about = "an app you opened", .percent = percent};
        row.graphicsPercent = graphics;
        row.graphicsFigure = "92%";
        row.figure = QString::number(percent) + '%';
        row.members = {{.key = "a", .name = "a", .percent = 10}, {.key = "b", .name = "b", .percent = 5}};
        return row;
    }

    void show() { panel.show(model); }

    SuspectRow* shown(const QString& key) {
        for (SuspectRow* const each : panel.findChildren<SuspectRow*>())
            if (each->key() == key && each->isVisible())
                return each;
        return nullptr;
    }

    /// The places of a row's bars, its members' aside.
    QStringList bars(const QString& key) {
        QStringList places;
        for (CoreBar* const bar : shown(key)->findChildren<CoreBar*>(Qt::FindDirectChildrenOnly))
            if (bar->isVisible())
                places += QString("%1..%2").arg(bar->y()).arg(bar->y() + bar->height());
        return places;
    }

    Stage stage;
    SuspectsPanel panel{stage.look};
    SuspectsModel model{.title = "Suspects",
                        .caption = "last 20 seconds · one cell is one core",
                        .captionWithoutCells = "last 20 seconds",
                        .graphicsCaption = "graphics processor",
                        .cores = 16};
};

TEST(GraphicsRowTests, WhoeverRendersStandsFirstWhereThatIsWhatHeats) {
    Stage stage;
    stage.play("design-graphics.jsonl.gz");
    ASSERT_TRUE(stage.hub.verdict().isOfGraphics);
    const SuspectsModel model = suspectsModel(stage.hub);
    QStringList names;
    for (const SuspectRowModel& row : model.rows)
        names += row.name + (row.graphicsPercent ? "+" : "");
    EXPECT_EQ(names.mid(0, 4), QStringList({"SuperTuxKart+", "Firefox+", "GNOME Shell+", "File indexing"}));
    EXPECT_TRUE(model.rows[0].graphicsStop().has_value());
    EXPECT_FALSE(model.rows[0].coreStop().has_value());
    EXPECT_EQ(model.rows[0].spokenFigure, "90 percent of the graphics processor, 112 percent of a core");
    EXPECT_FALSE(model.unaccounted.has_value());
}

TEST(GraphicsRowTests, OnlyWhatDidGraphicsWorkHasASecondBar) {
    MadeList list;
    EXPECT_EQ(list.bars("game"), QStringList({"14..22", "29..35"}));
    EXPECT_EQ(list.bars("browser"), QStringList("20..28"));
    EXPECT_EQ(list.panel.caption(), "last 20 seconds · one cell is one core");
    const QImage row = list.shown("game")->grab().toImage();
    const QColor heat = list.stage.theme.heatFill(3);
    const auto hasHeat = [&](int y) {
        for (int x = 0; x < row.width(); ++x)
            if (row.pixelColor(x, y) == heat)
                return true;
        return false;
    };
    EXPECT_FALSE(hasHeat(18)) << "the cores' bar is neutral";
    EXPECT_TRUE(hasHeat(32));

    // In a narrow window the longer caption finds no room beside what explains the icon.
    list.panel.resize(360, 296);
    list.panel.setNarrow(true);
    EXPECT_EQ(list.panel.caption(), "last 20 seconds");
    // The game ends: one bar again, and the caption as ever.
    list.model.rows[0] = MadeList::row("game", 3, {});
    list.show();
    EXPECT_EQ(list.bars("game"), QStringList("20..28"));
    EXPECT_EQ(list.panel.caption(), "last 20 seconds · one cell is one core");
    list.model.rows[0].graphicsPercent = 40;
    list.show();
    list.stage.theme.setTextScale(1.5);
    EXPECT_EQ(list.shown("game")->height(), 27 + 21 + 12 + 14 + 15) << "each bar has a line of its own";
}

TEST(SuspectsPanelTests, OneRowIsUnfoldedAtATimeAndKeepsItsMembersWhereTheyAre) {
    MadeList list;
    QSignalSpy unfolded(&list.panel, &SuspectsPanel::unfolded);
    QTest::mouseClick(list.shown("game"), Qt::LeftButton);
    QTest::mouseClick(list.shown("browser"), Qt::LeftButton);
    EXPECT_FALSE(list.shown("game")->isExpanded());
    EXPECT_EQ(list.panel.unfoldedKey(), "browser");
    EXPECT_EQ(unfolded.last()[0].toString(), "browser");
    const int high = list.shown("browser")->height();

    const auto order = [&list] {
        QString keys;
        for (MemberLine* const line : list.shown("browser")->findChildren<MemberLine*>())
            if (line->isVisible())
                keys += line->model().key;
        return keys;
    };
    EXPECT_EQ(order(), "ab");
    list.model.rows[1].members = {{.key = "c", .name = "c", .percent = 40},
                                  {.key = "b", .name = "b × 2", .percent = 30},
                                  {.key = "a", .name = "a", .percent = 10},
                                  {.key = "z", .name = "2 that ended", .percent = 90, .isSummary = true}};
    list.show();
    EXPECT_EQ(order(), "abcz") << "what is new comes behind, and the ended last";
    EXPECT_EQ(list.shown("browser")->height(), high + 2 * 24);
    list.model.rows[1].members.resize(1);
    list.show();
    EXPECT_EQ(order(), "c");
    EXPECT_EQ(list.shown("browser")->height(), high + 2 * 24) << "what is below stays where it is";
    // Its program ends, and comes back as another row.
    list.model.rows.erase(list.model.rows.begin() + 1);
    list.show();
    EXPECT_EQ(list.panel.unfoldedKey(), "");
}

TEST(UnaccountedTests, IsTheLastRowAndNoSuspect) {
    Stage stage;
    const std::vector<ProcessSample> rows{member(400, "make", 1189)};
    sample(stage, {rows, rows}, 85);
    const SuspectsModel model = suspectsModel(stage.hub);
    ASSERT_TRUE(model.unaccounted.has_value());
    EXPECT_EQ(model.unaccounted->figure, "171%");
    EXPECT_EQ(model.unaccounted->about, "interrupts, other users, a host's work");
    Stage accounted;
    sample(accounted, {rows, rows}, 80);
    EXPECT_FALSE(suspectsModel(accounted.hub).unaccounted.has_value()) << "less than a tenth of the machine";

    MadeList list;
    for (const char* const key : {"d", "e", "f"})
        list.model.rows.push_back(MadeList::row(key, 5, {}));
    list.model.unaccounted = model.unaccounted;
    list.show();
    auto* const row = list.panel.findChild<UnaccountedRow*>();
    ASSERT_NE(row, nullptr);
    EXPECT_TRUE(row->isVisible());
    EXPECT_EQ(list.shown("e"), nullptr) << "five rows at first, and it is one of them";
    EXPECT_EQ(row->y(), 44 + 4 * 48);
    EXPECT_EQ(list.panel.heightFor(616), 296);
    EXPECT_TRUE(row->toolTip().contains("work of the machine that hosts this one."));
    EXPECT_EQ(row->focusPolicy(), Qt::NoFocus);
    list.shown("game")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list.shown("game"), Qt::Key_End);
    EXPECT_EQ(list.shown("d")->focusPolicy(), Qt::StrongFocus) << "the keyboard's last is the one above";
    list.model.unaccounted.reset();
    list.show();
    EXPECT_FALSE(row->isVisible());
}

} // namespace
} // namespace vantoro
