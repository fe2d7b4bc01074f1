// The Now pane: where its parts stand, and that it reaches the shell.
#include "Views/Now/AdvicePanel.h"
#include "Views/Now/NowView.h"

#include "Support/HistoryBuilder.h"
#include "Views/Stage.h"

#include <QSignalSpy>

namespace vantoro {
namespace {

using testing::Stage;

/// The pane under an empty control bar, as the window shows it.
struct Window {
    explicit Window(Stage& stage, const QSize& size) : now(stage.context, &window) {
        bar.setFocusPolicy(Qt::StrongFocus);
        QPalette colors;
        colors.setColor(QPalette::Window, stage.theme.color(Tone::window));
        window.setPalette(colors);
        now.setGeometry(0, 52, size.width(), size.height() - 52);
        stage.picture(window, size);
        content = now.findChild<NowContent*>();
    }

    QRect frame(const QWidget& part) const { return {part.mapTo(&window, QPoint()), part.size()}; }

    QWidget window;
    QWidget bar{&window};
    NowView now;
    NowContent* content = nullptr;
};

TEST(NowTests, PartsStandWhereTheyBelongAtEverySize) {
    using Case = std::tuple<const char*, Theme::Appearance, QSize, int, int>;
    for (const auto& [scene, appearance, size, suspectsWidth, adviceWidth] :
         {Case{"design-fans", Theme::Appearance::dark, {1040, 830}, 616, 360},
          Case{"design-fans", Theme::Appearance::light, {1040, 830}, 616, 360},
          Case{"design-fanless", Theme::Appearance::dark, {1040, 830}, 616, 360},
          Case{"design-calm", Theme::Appearance::light, {1040, 830}, 616, 360},
          Case{"design-fans", Theme::Appearance::dark, {820, 830}, 472, 284}}) {
        Stage stage(appearance);
        stage.makeCores();
        stage.play(std::string(scene) + ".jsonl.gz");
        const Window window(stage, size);
        const bool isNarrow = size.width() < NowView::narrowBelow;
        const QRect suspects = window.frame(*window.content->suspects());
        const QRect advice = window.frame(*window.content->advice());
        const QRect facts = window.frame(*window.content->facts());
        EXPECT_EQ(suspects.x(), 24);
        EXPECT_EQ(suspects.width(), suspectsWidth);
        EXPECT_EQ(suspects.height(), 296);
        EXPECT_EQ(advice.size(), QSize(adviceWidth, 296));
        EXPECT_EQ(advice.top(), suspects.top());
        EXPECT_EQ(advice.right(), size.width() - 25);
        EXPECT_EQ(facts.top(), suspects.bottom() + 17);
        EXPECT_EQ(facts.size(), QSize(size.width() - 48, isNarrow ? 336 : 190));
        if (!isNarrow) {
            EXPECT_EQ(suspects.y(), 304);
        }
    }
}

TEST(NowTests, TheKeyboardGoesThroughItAsItIsRead) {
    Stage stage;
    stage.makeCores();
    stage.play("fans-compile.jsonl");
    Window window(stage, {1040, 830});
    QStringList stops;
    for (QWidget* at = window.bar.nextInFocusChain(); at != &window.bar; at = at->nextInFocusChain())
        if ((at->focusPolicy() & Qt::TabFocus) != 0 && at->isVisible())
            stops += QString(at->metaObject()->className()).section("::", -1);
    EXPECT_EQ(stops.join(' ').toStdString(), "FanRotor FanRotor SuspectRow Button FooterButton FactsPanel");

    const QSignalSpy explain(&window.now, &NowView::explainRequested);
    QTest::keyClick(window.now.findChild<FooterButton*>(), Qt::Key_Return);
    EXPECT_EQ(explain.count(), 1);
}

TEST(NowTests, APartThatGrowsPushesWhatFollows) {
    Stage stage;
    stage.makeCores();
    std::vector<ProcessSample> rows;
    for (int i = 0; i < 5; ++i)
        rows.push_back(testing::process(100 + i, "app" + std::to_string(i), 90.0 - i));
    stage.hub.accept(testing::fanMachine(0.6, rows));
    Window window(stage, {1040, 830});
    const int facts = window.content->facts()->y();
    const int advice = window.content->advice()->height();
    QTest::mouseClick(window.content->suspects()->findChild<SuspectRow*>(), Qt::LeftButton);
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    const int grown = window.content->suspects()->height();
    EXPECT_GT(grown, advice);
    EXPECT_EQ(window.content->advice()->height(), grown) << "they share their height";
    EXPECT_EQ(window.content->facts()->y(), facts + grown - advice);
    EXPECT_GE(window.content->height(), window.content->facts()->geometry().bottom());
    stage.theme.setTextScale(1.5);
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    EXPECT_GT(window.content->facts()->y(), facts);
    for (const QWidget* const part : window.content->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        EXPECT_TRUE(window.content->rect().contains(part->geometry())) << part->metaObject()->className();
}

} // namespace
} // namespace vantoro
