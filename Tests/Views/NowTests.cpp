// The Now pane: where its parts stand, and that it reaches the shell.
#include "Views/NowContent.h"
#include "Views/NowView.h"

#include "Views/Stage.h"

#include <cstdlib>
#include <QSignalSpy>

namespace vantoro {
namespace {

using testing::Stage;

/// The pane under an empty control bar, as the window shows it.
struct Window {
    explicit Window(Stage& stage, const QSize& size) : now(stage.context, &window) {
        QPalette colors;
        colors.setColor(QPalette::Window, stage.theme.color(Tone::window));
        window.setPalette(colors);
        now.setGeometry(0, 52, size.width(), size.height() - 52);
        picture = stage.picture(window, size);
        content = now.findChild<NowContent*>();
    }

    QRect frame(const QWidget& part) const { return {part.mapTo(&window, QPoint()), part.size()}; }

    /// For a human's eye, where one asks for it.
    void save(const char* name) const {
        if (const char* const folder = std::getenv("VANTORO_PICTURES"); folder != nullptr)
            picture.save(QString(folder) + '/' + name + ".png");
    }

    QWidget window;
    NowView now;
    QImage picture;
    NowContent* content = nullptr;
};

TEST(NowTests, PartsStandWhereTheyBelongAtEverySize) {
    struct Case {
        const char* scene;
        Theme::Appearance appearance;
        QSize size;
        int suspects;
        int advice;
    };
    for (const Case& c : {Case{"design-fans", Theme::Appearance::dark, {1040, 830}, 616, 360},
                          Case{"design-fans", Theme::Appearance::light, {1040, 830}, 616, 360},
                          Case{"design-fanless", Theme::Appearance::dark, {1040, 830}, 616, 360},
                          Case{"design-calm", Theme::Appearance::light, {1040, 830}, 616, 360},
                          Case{"design-fans", Theme::Appearance::dark, {820, 830}, 472, 284}}) {
        Stage stage(c.appearance);
        stage.makeCores();
        stage.play(std::string(c.scene) + ".jsonl.gz");
        const Window window(stage, c.size);
        const bool isNarrow = c.size.width() < NowView::narrowBelow;
        window.save((std::string("now-") + c.scene + (isNarrow ? "-narrow" : "") +
                     (c.appearance == Theme::Appearance::dark ? "-dark" : "-light"))
                        .c_str());
        const QRect suspects = window.frame(*window.content->suspects());
        const QRect advice = window.frame(*window.content->advice());
        const QRect facts = window.frame(*window.content->facts());
        EXPECT_EQ(suspects.x(), 24);
        EXPECT_EQ(suspects.width(), c.suspects);
        EXPECT_EQ(suspects.height(), 296);
        EXPECT_EQ(advice.size(), QSize(c.advice, 296));
        EXPECT_EQ(advice.top(), suspects.top());
        EXPECT_EQ(advice.right(), c.size.width() - 25);
        EXPECT_EQ(facts.top(), suspects.bottom() + 17);
        EXPECT_EQ(facts.size(), QSize(c.size.width() - 48, isNarrow ? 336 : 190));
        if (!isNarrow) {
            EXPECT_EQ(suspects.y(), 304);
        }
    }
}

} // namespace
} // namespace vantoro
