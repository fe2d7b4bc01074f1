// The list of suspects: what a row says, and how the list is driven.
#include "Views/Suspects/SuspectsModel.h"
#include "Views/Suspects/SuspectsPanel.h"

#include "Support/HistoryBuilder.h"
#include "Views/Stage.h"

#include <QSignalSpy>

namespace vantoro {
namespace {

using namespace testing;

/// A machine that works for these rows for half a minute.
void work(Stage& stage, Snapshot snapshot, double seconds = 30) {
    const UnixSeconds end = snapshot.timestamp;
    for (double age = seconds; age >= 0; age -= 2) {
        snapshot.timestamp = end - age;
        stage.hub.accept(snapshot);
    }
}

SuspectRowModel row(const QString& key, double percent, bool offersQuit = true) {
    return {.key = key,
            .name = key,
            .about = "an app you opened",
            .symbol = "window",
            .percent = percent,
            .figure = QString::number(percent) + '%',
            .offersQuit = offersQuit,
            .quitPID = static_cast<std::int32_t>(1000 + key.front().unicode()),
            .explanation = "It's a thing.",
            .details = "peak 1%"};
}

SuspectsModel list(std::vector<SuspectRowModel> rows) {
    SuspectsModel model{.title = "Suspects", .rows = std::move(rows), .cores = 12};
    model.unfoldAction = "Unfold";
    model.foldAction = "Fold";
    model.unfoldedWord = "unfolded";
    model.quitAction = "Quit…";
    if (model.rows.size() > SuspectsModel::rowsAtFirst) {
        model.showAll = "Show all";
        model.showFewer = "Show fewer";
    }
    return model;
}

std::vector<SuspectRow*> shownRows(const SuspectsPanel& panel) {
    std::vector<SuspectRow*> rows;
    for (SuspectRow* const row : panel.findChildren<SuspectRow*>())
        if (row->isVisible())
            rows.push_back(row);
    std::sort(rows.begin(), rows.end(), [](const SuspectRow* a, const SuspectRow* b) { return a->y() < b->y(); });
    return rows;
}

TEST(SuspectsModelTests, RowsSayWhatAnApplicationIsAndWhetherItMayBeEnded) {
    Stage stage;
    std::vector<ProcessSample> rows = application(100, "Xcode", 440, 11);
    rows.push_back(process(300, "mds_stores", 31, ProcessKind::systemDaemon));
    rows.back().memoryBytes = 412ULL << 20U;
    rows.push_back(process(301, "AirPlayXPCHelper", 20, ProcessKind::commandLine));
    rows.push_back(process(302, "WindowServer", 10, ProcessKind::helper));
    rows.push_back(process(303, "zsh", 5, ProcessKind::commandLine));
    rows.push_back(process(304, "kext", 2, ProcessKind::kernel));
    rows.push_back(process(0, "kernel_task", 300, ProcessKind::kernel)); // the slowing itself, while heat presses
    Snapshot snapshot = fanMachine(0.6, rows);
    snapshot.thermalPressure = ThermalPressure::serious;
    work(stage, snapshot);

    const SuspectsModel model = suspectsModel(stage.hub);
    EXPECT_EQ(model.title, "Suspects");
    EXPECT_EQ(model.showAll, "Show all 6");
    struct Expected {
        const char* name;
        const char* about;
        const char* symbol;
        const char* figure;
        const char* details;
        bool offersQuit;
    };
    const std::vector<Expected> expected{
        {"Xcode", "a helper of an app you opened · 11 processes", "window", "440%", "peak 40% · sustained", true},
        {"Spotlight indexing", "a macOS background service · mds_stores", "gearshape", "31%",
         "peak 31% · 412 MB · pid 300 · sustained", false},
        {"AirPlay helper", "command-line work · AirPlayXPCHelper", "terminal", "20%", "peak 20% · pid 301", true},
        {"WindowServer", "a helper of an app you opened", "window", "10%", "peak 10% · pid 302", false},
        {"zsh", "command-line work", "terminal", "5%", "peak 5% · pid 303", true},
        {"kext", "the kernel", "cpu", "2%", "peak 2% · pid 304", false},
    };
    ASSERT_EQ(model.rows.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const SuspectRowModel& shown = model.rows[i];
        EXPECT_EQ(shown.name, QString(expected[i].name));
        EXPECT_EQ(shown.about, QString(expected[i].about));
        EXPECT_EQ(shown.symbol, QString(expected[i].symbol));
        EXPECT_EQ(shown.figure, QString(expected[i].figure));
        EXPECT_EQ(shown.details, QString(expected[i].details));
        EXPECT_EQ(shown.offersQuit, expected[i].offersQuit) << expected[i].name;
        // The one named by the verdict, and critical pressure takes the hottest stop.
        EXPECT_EQ(shown.heatStop, i == 0 ? std::optional(4) : std::nullopt);
    }
    EXPECT_TRUE(model.rows[1].explanation.startsWith("It's Spotlight building its search index."));
    EXPECT_TRUE(model.rows[0].explanation.isEmpty());

    Stage calm;
    EXPECT_TRUE(suspectsModel(calm.hub).isPending);
    work(calm, fanMachine(0));
    EXPECT_EQ(suspectsModel(calm.hub).title, "Busiest right now");
    EXPECT_EQ(suspectsModel(calm.hub).emptyText, "Nothing is working the machine hard right now.");
}

TEST(SuspectsPanelTests, RowsStayWithTheirApplicationsAndGlideToTheirPlaces) {
    Stage stage;
    SuspectsPanel panel(stage.look);
    panel.resize(616, 296);
    panel.show();
    panel.show(list({row("A", 300), row("B", 60), row("C", 20)}));
    const std::vector<SuspectRow*> before = shownRows(panel);
    ASSERT_EQ(before.size(), 3U);
    const int top = before[0]->y();

    panel.show(list({row("B", 320), row("A", 290), row("D", 10)}));
    EXPECT_EQ(before[1]->key(), "B");
    EXPECT_EQ(before[2]->key(), "D") << "takes over the widget that is free";
    EXPECT_EQ(panel.findChildren<SuspectRow*>().size(), 3);
    EXPECT_EQ(before[1]->y(), top + 48) << "under way, not there";
    stage.seconds += 0.15;
    stage.clock.beat();
    EXPECT_GT(before[1]->y(), top);
    EXPECT_LT(before[1]->y(), top + 48);
    stage.seconds += 5;
    stage.clock.beat();
    EXPECT_EQ(before[1]->y(), top);
    EXPECT_FALSE(stage.clock.isBeating());

    // Nobody sees it: it is there at once, and nothing beats.
    panel.hide();
    panel.show(list({row("A", 300), row("B", 60)}));
    EXPECT_EQ(before[0]->y(), top);
    EXPECT_FALSE(stage.clock.isBeating());
}

TEST(SuspectsPanelTests, IsDrivenByKeyboardAndPointer) {
    Stage stage;
    SuspectsPanel panel(stage.look);
    panel.show(list({row("A", 300), row("B", 60, false), row("C", 20), row("D", 9), row("E", 8), row("F", 7)}));
    stage.picture(panel, {616, 296});
    QSignalSpy quit(&panel, &SuspectsPanel::quitRequested);
    QSignalSpy height(&panel, &SuspectsPanel::heightChanged);
    const std::vector<SuspectRow*> rows = shownRows(panel);
    ASSERT_EQ(rows.size(), 5U);
    int stops = 0;
    for (const SuspectRow* const shown : rows)
        stops += shown->focusPolicy() == Qt::StrongFocus ? 1 : 0;
    EXPECT_EQ(stops, 1);

    rows[0]->setFocus(Qt::TabFocusReason);
    QTest::keyClick(rows[0], Qt::Key_Delete);
    ASSERT_EQ(quit.count(), 1) << "and nothing has been ended, only asked for";
    EXPECT_EQ(quit[0][0].toInt(), 1000 + 'A');
    QTest::keyClick(rows[0], Qt::Key_Up);
    QTest::keyClick(rows[0], Qt::Key_Down);
    EXPECT_TRUE(rows[1]->focusPolicy() == Qt::StrongFocus);
    QTest::keyClick(rows[1], Qt::Key_Delete);
    EXPECT_EQ(quit.count(), 1) << "not offered here";
    QTest::keyClick(rows[1], Qt::Key_Return);
    EXPECT_TRUE(rows[1]->isExpanded());
    EXPECT_EQ(rows[1]->height(), 48 - 2 + 17 + 6 + 14 + 12);
    EXPECT_EQ(height.count(), 1);
    EXPECT_GT(panel.heightFor(616), 296);
    panel.resize(616, panel.heightFor(616));
    QTest::mouseClick(rows[1], Qt::LeftButton);
    EXPECT_FALSE(rows[1]->isExpanded());

    const auto button = [](SuspectRow* of) { return of->findChild<Button*>(); };
    const QPoint cursor = QCursor::pos();
    for (SuspectRow* const hovered : {rows[0], rows[1]}) {
        QTest::mouseMove(hovered);
        QCoreApplication::processEvents();
        EXPECT_EQ(button(hovered)->isVisible(), hovered == rows[0]);
        EXPECT_EQ(button(hovered)->text(), "Quit…");
    }
    EXPECT_FALSE(button(rows[0])->isVisible()) << "the pointer has gone on";
    QCursor::setPos(cursor);

    for (Button* const all : panel.findChildren<Button*>(Qt::FindDirectChildrenOnly))
        QTest::mouseClick(all, Qt::LeftButton);
    EXPECT_EQ(shownRows(panel).size(), 6U);
    EXPECT_EQ(panel.heightFor(616), 44 + 6 * 48 + 12);
    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(shownRows(panel)[0]);
    EXPECT_EQ(spoken->role(), QAccessible::TreeItem);
    EXPECT_EQ(spoken->text(QAccessible::Name), "A, an app you opened");
    EXPECT_TRUE(spoken->actionInterface()->actionNames().contains("Quit…"));
}

/// A window with a list that the pointer can be over.
struct PointedList {
    PointedList() {
        panel.setParent(&window);
        window.resize(640, 400);
        panel.setGeometry(0, 0, 616, 296);
        window.show();
        stage.settle();
        panel.show(list({row("A", 300), row("B", 60), row("C", 20)}));
        stage.settle();
        // It was over the list before it moved at all, and is known to be anywhere once it has.
        point({300, 200});
        point(beside);
    }

    // Every test of the program has the one cursor.
    ~PointedList() { QCursor::setPos(cursor); }

    QString order() {
        QString keys;
        for (const SuspectRow* const shown : shownRows(panel))
            keys += shown->key();
        return keys;
    }

    QString hovered() {
        QString keys;
        for (const SuspectRow* const shown : shownRows(panel))
            if (shown->isHovered())
                keys += shown->key();
        return keys;
    }

    void point(const QPoint& at) {
        QTest::mouseMove(&window, at); // which moves the cursor, too
        stage.settle();
    }

    static constexpr QPoint beside{300, 350};
    const QPoint cursor = QCursor::pos();
    Stage stage;
    QWidget window;
    SuspectsPanel& panel = *new SuspectsPanel(stage.look); // owned by the window
};

TEST(SuspectsPanelTests, WhatIsUnderThePointerStaysThereAndIsWhatIsMarked) {
    PointedList list_;
    list_.point({300, 44 + 48 + 20});
    EXPECT_EQ(list_.hovered(), "B");
    list_.panel.show(list({row("D", 400), row("B", 320), row("A", 290), row("C", 20)}));
    list_.stage.settle();
    EXPECT_EQ(list_.order(), "ABCD") << "figures change, places do not, and what is new comes last";
    EXPECT_EQ(list_.hovered(), "B");
    list_.panel.show(list({row("D", 400), row("B", 320), row("C", 20)}));
    list_.stage.settle();
    EXPECT_EQ(list_.order(), "BCD") << "what has ended goes";
    EXPECT_EQ(list_.hovered(), "C") << "which is what a click would reach now";
    list_.point(PointedList::beside);
    EXPECT_EQ(list_.order(), "DBC");
    EXPECT_EQ(list_.hovered(), "");
}

TEST(SuspectsPanelTests, RowsKeepTheirOrderWhileTheKeyboardIsInTheList) {
    PointedList list_;
    list_.window.activateWindow();
    shownRows(list_.panel)[1]->setFocus(Qt::TabFocusReason);
    list_.panel.show(list({row("B", 320), row("A", 290), row("C", 20)}));
    EXPECT_EQ(list_.order(), "ABC");
    shownRows(list_.panel)[1]->clearFocus();
    list_.stage.settle();
    EXPECT_EQ(list_.order(), "BAC");
}

TEST(SuspectsPanelTests, RowsThatChangePlacesDoNotShowThroughEachOther) {
    PointedList list_;
    list_.panel.show(list({row("B", 320), row("A", 290), row("C", 20)}));
    list_.stage.seconds += 0.1;
    list_.stage.clock.beat();
    const std::vector<SuspectRow*> rows = shownRows(list_.panel);
    ASSERT_NE(rows[0]->y(), 44) << "under way";
    // What is drawn of a moving row covers what was there, where the row itself has nothing to draw.
    for (SuspectRow* const moving : {rows[0], rows[1]}) {
        QImage drawn(moving->size(), QImage::Format_ARGB32_Premultiplied);
        drawn.fill(Qt::magenta);
        moving->render(&drawn, {}, {}, QWidget::DrawChildren);
        EXPECT_EQ(drawn.pixelColor(2, 24), list_.stage.theme.color(Tone::panel));
    }
}

TEST(SuspectsPanelTests, WaitsIsEmptyAndSaysWhereItsListComesFrom) {
    Stage stage(Theme::Appearance::light);
    SuspectsPanel panel(stage.look);
    panel.show({.title = "Busiest right now", .caption = "first list pending", .isPending = true});
    stage.picture(panel, {296, 296});
    EXPECT_EQ(panel.heightFor(616), 296);
    panel.show({.title = "Busiest right now", .emptyText = "Nothing is working the machine hard right now."});
    SuspectsModel model = list({row("A", 300)});
    model.footer = "Syscalls — top was blocked on this Mac · 412 without figures";
    panel.show(model);
    panel.setNarrow(true);
    EXPECT_EQ(panel.heightFor(616), 296 + 12 + 14 + 12);
    panel.resize(296, panel.heightFor(296));
    stage.theme.setTextScale(1.5);
    EXPECT_EQ(shownRows(panel)[0]->height(), 27 + 21 + 12 + 14) << "two lines, and the bar below them";
    panel.resize(616, panel.heightFor(616));
}

TEST(AppIconsTests, AnEntrysOwnIconIsFoundAndNothingIsMadeUp) {
    const QTemporaryDir folder;
    const QString icon = folder.filePath("app.png");
    QPixmap drawing(64, 64);
    drawing.fill(Qt::red);
    ASSERT_TRUE(drawing.save(icon));
    QFile entry(folder.filePath("app.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Action new]\nIcon=/nowhere.png\n[Desktop Entry]\nIcon=" + icon.toUtf8() + "\n");
    entry.close();
    AppIcons icons;
    EXPECT_EQ(icons.pixmap(entry.fileName(), 28, 1).width(), 28);
    EXPECT_TRUE(icons.pixmap(folder.filePath("gone.desktop"), 28, 1).isNull());
    EXPECT_TRUE(icons.pixmap("/Applications/Nowhere.app", 28, 1).isNull());
    EXPECT_TRUE(icons.pixmap({}, 28, 1).isNull());
}

} // namespace
} // namespace vantoro
