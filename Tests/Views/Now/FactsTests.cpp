// The facts: their courses, and how many stand in a row.
#include "Views/Now/FactsPanel.h"
#include "Views/Now/NowModel.h"

#include "Support/HistoryBuilder.h"
#include "Views/Stage.h"

#include <QRegularExpression>

namespace vantoro {
namespace {

using namespace testing;

const FactModel* fact(const FactsModel& model, const QString& title) {
    for (const FactModel& found : model.facts)
        if (found.title == title)
            return &found;
    return nullptr;
}

TEST(FactsModelTests, CoursesAreScaledThinnedAndMarkedWhereTheRampBegan) {
    Stage stage;
    stage.play("design-fans.jsonl.gz");
    const FactsModel model = factsModel(stage.hub);
    ASSERT_EQ(model.facts.size(), 6U);
    const QRegularExpression caption("^last 15 minutes · dashed line: .*\\d:\\d\\d.*, when the fans began climbing$");
    EXPECT_TRUE(caption.match(model.caption).hasMatch()) << model.caption.toStdString();
    using Case = std::tuple<const char*, double, double>;
    for (const auto& [title, least, most] : {Case{"CPU", 0, 100}, Case{"GPU", 0, 10}, Case{"Chip", 30, 100},
                                             Case{"Power", 0, 60}, Case{"Memory", 0, 100}}) {
        const FactModel* const shown = fact(model, title);
        ASSERT_TRUE(shown != nullptr && shown->line) << title;
        EXPECT_EQ(shown->line->least, least) << title;
        EXPECT_EQ(shown->line->most, most) << title;
        EXPECT_EQ(shown->line->to - shown->line->from, 900);
        ASSERT_TRUE(shown->line->ramp);
        EXPECT_EQ(shown->line->points.size(), stage.hub.series().cpu.size()) << title;
        EXPECT_EQ(shown->line->points.back().time, stage.hub.series().cpu.back().time) << title;
    }
    EXPECT_EQ(fact(model, "Thermal")->pressure, ThermalPressure::fair);

    Stage calm;
    calm.hub.accept(fanMachine(0));
    EXPECT_EQ(factsModel(calm.hub).caption, "last 15 minutes");
    EXPECT_EQ(factsModel(calm.hub).facts.size(), 2U) << "what is not measured is no fact";
}

TEST(FactsPanelTests, CellsShareTheWidthAndStandThreeToARowWhereItIsTight) {
    Stage stage;
    FactsPanel panel(stage.look);
    FactsModel model{.title = "Facts", .caption = "last 15 minutes"};
    for (const char* const title : {"CPU", "GPU", "Chip", "Power", "Memory"})
        model.facts.push_back({.symbol = "cpu", .title = title, .value = "31%", .detail = "Pressure"});
    panel.show(model);
    stage.picture(panel, {992, 190});
    const QList<FactCell*> cells = panel.findChildren<FactCell*>();
    ASSERT_EQ(cells.size(), 5);
    EXPECT_EQ(panel.heightFor(992), 190);
    EXPECT_EQ(cells[0]->width(), cells[4]->width());
    EXPECT_EQ(cells[0]->y(), cells[4]->y());
    panel.setNarrow(true);
    EXPECT_EQ(panel.heightFor(992), 336);
    EXPECT_EQ(cells[3]->pos(), cells[0]->pos() + QPoint(0, 146));
    panel.setNarrow(false);
    stage.theme.setTextScale(1.25);
    EXPECT_GT(cells[3]->y(), cells[0]->y());
    model.facts.resize(4);
    panel.show(model);
    EXPECT_FALSE(cells[4]->isVisible());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(cells[0])->text(QAccessible::Name), "CPU, 31%, Pressure");
}

} // namespace
} // namespace vantoro
