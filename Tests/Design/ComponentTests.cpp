// The shared components: what they hold, how they are driven, and what a screen reader is told of them.
#include "Design/Controls/Button.h"
#include "Design/Controls/SegmentedControl.h"
#include "Design/Controls/Sheet.h"
#include "Design/Gauges/SmallGauges.h"
#include "Design/Panel.h"
#include "Design/TextLabel.h"
#include "Views/Now/AdvicePanel.h"
#include "Views/Settings/PopUpButton.h"
#include "Views/Settings/SettingsControls.h"
#include "Views/Shared/Words.h"
#include "Views/Suspects/SuspectRow.h"

#include "Views/Stage.h"

#include <QSignalSpy>
#include <QTextDocument>

namespace vantoro {
namespace {

using testing::Stage;

TEST(ThemeTests, EveryTextAndShapeStandsOutAgainstEverySurface) {
    for (const Theme::Appearance appearance : {Theme::Appearance::light, Theme::Appearance::dark}) {
        const Theme theme(appearance);
        for (const Tone surface : {Tone::window, Tone::panel, Tone::raised}) {
            for (const Tone text : {Tone::textPrimary, Tone::textSecondary, Tone::textTertiary})
                EXPECT_GE(contrast(theme.color(text), theme.color(surface)), surface == Tone::raised ? 4.2 : 4.5);
            for (int stop = 0; stop < Theme::heatStops; ++stop) {
                EXPECT_GE(contrast(theme.heatText(stop), theme.color(surface)), 4.5) << stop;
                if (surface != Tone::raised) {
                    EXPECT_GE(contrast(theme.heatFill(stop), theme.color(surface)), 3) << stop;
                }
            }
        }
        EXPECT_GE(contrast(theme.color(Tone::onAccent), theme.color(Tone::defaultButton)), 4.5);
    }
}

TEST(ThemeTests, AnyAccentOfTheSystemsStandsOutAndWhatIsOnItIsRead) {
    for (const Theme::Appearance appearance : {Theme::Appearance::light, Theme::Appearance::dark}) {
        for (const char* accent :
             {"#000000", "#ffffff", "#f6d32d", "#3584e4", "#808080", "#e62d42", "#18191b", "#2190a4"}) {
            Theme theme;
            theme.setAccent(QColor(accent));
            theme.setAppearance(appearance);
            for (const Tone surface : {Tone::window, Tone::panel, Tone::raised})
                EXPECT_GE(contrast(theme.color(Tone::accent), theme.color(surface)), 3) << accent;
            EXPECT_GE(contrast(theme.color(Tone::onAccent), theme.color(Tone::defaultButton)), 4.5) << accent;
            EXPECT_GE(contrast(theme.color(Tone::knobOnAccent), theme.color(Tone::accent)), 3) << accent;
            theme.setAccent({});
            EXPECT_EQ(theme.color(Tone::accent), Theme(appearance).color(Tone::accent));
        }
    }
    Theme theme;
    theme.setAccent(QColor("#1c71d8"));
    EXPECT_EQ(theme.color(Tone::accent), QColor("#1c71d8")) << "one that does is left as it is";
}

TEST(ComponentTests, WhatIsEmptyOrOffIsSeen) {
    for (const Theme::Appearance appearance : {Theme::Appearance::light, Theme::Appearance::dark}) {
        Stage stage(appearance);
        const QColor panel = stage.theme.color(Tone::panel);
        const auto strongest = [&](QWidget& widget, int x) {
            widget.setAutoFillBackground(true);
            widget.setPalette(QPalette(panel));
            const QImage image = stage.picture(widget, widget.sizeHint());
            double most = 1;
            for (int y = 0; y < image.height(); ++y)
                most = std::max(most, contrast(image.pixelColor(x, y), panel));
            return most;
        };
        CoreBar bar(stage.look);
        bar.QWidget::resize(bar.sizeHint());
        bar.show(110, 8, std::nullopt);
        bar.jump();
        EXPECT_GE(strongest(bar, 150), 3) << "an empty cell";
        Switch off(stage.look);
        EXPECT_GE(strongest(off, off.sizeHint().width() / 2), 3);
    }
    EXPECT_EQ(CoreBar::cellsIn(220, 16), 16);
    EXPECT_EQ(CoreBar::cellsIn(96, 16), 1) << "narrower than 6 points each";
    EXPECT_EQ(CoreBar::cellsIn(96, 12), 12);
    EXPECT_EQ(CoreBar::cellsIn(400, 32), 1);
    EXPECT_EQ(CoreBar::cellsIn(220, 0), 1);
}

TEST(AnimationClockTests, BeatsOnlyWhileSomethingMovesAndSomeoneCanSeeIt) {
    class Countdown : public Animated {
    public:
        bool advance(double) override { return --left > 0; }
        int left = 3;
    };
    double now = 0;
    AnimationClock clock([&now] { return now; });
    {
        Countdown countdown;
        clock.run(countdown);
        clock.run(countdown);
        EXPECT_TRUE(clock.isBeating());
        clock.setPaused(true);
        EXPECT_FALSE(clock.isBeating());
        clock.setPaused(false);
        for (int i = 0; i < 3; ++i)
            clock.beat();
        EXPECT_EQ(countdown.left, 0);
        EXPECT_FALSE(clock.isBeating());
        countdown.left = 3;
        clock.run(countdown);
        EXPECT_TRUE(clock.isBeating());
    }
    clock.beat();
    EXPECT_FALSE(clock.isBeating()) << "what is gone does not move";
}

TEST(ButtonTests, IsPressedByPointerKeyboardAndScreenReader) {
    Stage stage;
    Button button(stage.look, Button::Kind::bordered, "Quit Xcode");
    const QSignalSpy clicked(&button, &Button::clicked);
    button.show();
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Space);
    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(&button);
    ASSERT_NE(spoken, nullptr);
    EXPECT_EQ(spoken->role(), QAccessible::Button);
    EXPECT_EQ(spoken->text(QAccessible::Name), "Quit Xcode");
    spoken->actionInterface()->doAction("Press");
    EXPECT_EQ(clicked.count(), 3);
    button.setEnabled(false);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 3);
}

TEST(SegmentedControlTests, MovesByPointerAndArrowsAndSpeaksAsTabs) {
    Stage stage;
    SegmentedControl control(stage.look, SegmentedControl::Meaning::tabs, {"Now", "Cores", "Timeline"});
    control.setSegmentSize({88, 28});
    const QSignalSpy chosen(&control, &SegmentedControl::chosen);
    control.resize(control.sizeHint());
    control.show();
    QTest::mouseClick(&control, Qt::LeftButton, Qt::NoModifier, {200, 16});
    EXPECT_EQ(control.current(), 2);
    QTest::keyClick(&control, Qt::Key_Left);
    QTest::keyClick(&control, Qt::Key_Left);
    QTest::keyClick(&control, Qt::Key_Left);
    EXPECT_EQ(control.current(), 0) << "and no further";
    EXPECT_EQ(chosen.count(), 3);
    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(&control);
    ASSERT_EQ(spoken->childCount(), 3);
    EXPECT_EQ(spoken->role(), QAccessible::PageTabList);
    EXPECT_EQ(spoken->child(1)->text(QAccessible::Name), "Cores");
    EXPECT_TRUE(spoken->child(0)->state().selected);
    EXPECT_FALSE(spoken->child(1)->state().selected);
}

TEST(TextLabelTests, WrapsToTheHeightItAsksForAndSaysWhatItHides) {
    Stage stage;
    TextLabel label(stage.look, Type::body, Tone::textPrimary);
    const QString text = "A paragraph that is longer than one line of two hundred points can hold.";
    label.setText(text);
    label.resize(80, 18);
    label.show();
    EXPECT_EQ(label.toolTip(), plainTooltip(text)) << "elided";
    label.setWraps(true);
    const int height = label.heightForWidth(200);
    EXPECT_GT(height, 2 * 18);
    EXPECT_EQ(height % 18, 0);
    stage.theme.setTextScale(1.5);
    EXPECT_GT(label.heightForWidth(200), height);
}

TEST(KeyboardTests, AHeldKeyActivatesOnce) {
    Stage stage;
    Button button(stage.look, Button::Kind::bordered, "Quit Xcode");
    Switch toggle(stage.look);
    SegmentedControl segments(stage.look, SegmentedControl::Meaning::tabs, {"Now", "Cores", "Timeline"});
    PopUpButton popUp(stage.look, {"Auto", "Own processes"});
    AppIcons icons;
    SuspectRow row(stage.look, icons);
    row.show({.key = "A", .name = "A", .offersQuit = true}, {});
    const QSignalSpy clicks(&button, &Button::clicked);
    const QSignalSpy toggles(&toggle, &Switch::toggled);
    const QSignalSpy segmentsChosen(&segments, &SegmentedControl::chosen);
    const QSignalSpy rowToggles(&row, &SuspectRow::clicked);
    const QSignalSpy quits(&row, &SuspectRow::quitAsked);
    const auto hold = [](QWidget& widget, std::initializer_list<Qt::Key> keys) {
        for (const Qt::Key key : keys)
            for (const bool isRepeat : {false, true, true, true}) {
                QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, {}, isRepeat);
                QApplication::sendEvent(&widget, &press);
            }
    };
    for (QWidget* const widget : std::initializer_list<QWidget*>{&button, &toggle, &row})
        hold(*widget, {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter});
    hold(row, {Qt::Key_Delete});
    hold(segments, {Qt::Key_Right});
    hold(popUp, {Qt::Key_Space});
    for (const QSignalSpy* const pressed : {&clicks, &toggles, &rowToggles})
        EXPECT_EQ(pressed->count(), 3);
    EXPECT_EQ(quits.count(), 1);
    EXPECT_EQ(segmentsChosen.count(), 1);
    EXPECT_EQ(popUp.findChildren<ChoiceList*>().size(), 1);
}

TEST(TooltipTests, ShowNamesLetterForLetter) {
    const QString name = "<img src=\"/etc/logo.png\"> R&D <b>tool</b> that is far too long for its place";
    const auto isLiteral = [&name](const QString& tooltip) {
        QTextDocument shown;
        shown.setHtml(tooltip);
        return Qt::mightBeRichText(tooltip) && shown.toPlainText().contains(name);
    };
    Stage stage;
    TextLabel label(stage.look, Type::body, Tone::textPrimary);
    label.setText(name);
    BalancedLabel headline(stage.look, {{Type::small, 1}}, Tone::textPrimary);
    headline.setText(name);
    for (PaintedWidget* const widget : std::initializer_list<PaintedWidget*>{&label, &headline}) {
        stage.picture(*widget, {80, 18});
        EXPECT_TRUE(isLiteral(widget->toolTip())) << widget->toolTip().toStdString();
    }
    AppIcons icons;
    SuspectRow row(stage.look, icons);
    row.show({.key = name, .name = name}, {});
    stage.picture(row, {500, 48});
    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(&row, &enter);
    EXPECT_TRUE(isLiteral(row.toolTip())) << row.toolTip().toStdString();
    EXPECT_EQ(trayText("a<b>&amp;"), QString::fromUtf8("a‹b›＆amp;")) << "no mark-up, whoever reads it";
}

TEST(TypographyTests, FiguresOfOneLengthAreOneWidth) {
    const Theme theme;
    const QFont font = fontOf(Type::figure, theme);
    EXPECT_DOUBLE_EQ(tabularWidth(font, "1,111"), tabularWidth(font, "4,830"));
    EXPECT_EQ(elidedTabular(font, "4,830", 1000, Qt::ElideRight), "4,830");
    EXPECT_TRUE(elidedTabular(font, "a rather long name", 60, Qt::ElideRight).endsWith(QChar(0x2026)));
}

} // namespace
} // namespace vantoro
