// The answer at the top of the Now pane: eyebrow, headline and detail at the left, the dials at the right.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Now/NowModel.h"

#include <vector>

namespace vantoro {

class FanList;
class FanRotor;
class ThermalDial;

class Dials : public PaintedWidget {
    Q_OBJECT
public:
    /// Room on every side of what is drawn, for the focus rings.
    static constexpr int ringMargin = 4;

    explicit Dials(Look& look, QWidget* parent = nullptr);

    void show(const DialsModel& model);
    /// In a narrow window one or two rotors are smaller.
    void setNarrow(bool narrow);
    /// Whether the wheels may turn.
    void setTurning(bool allowed);

    QSize sizeHint() const override { return sizeWhen(narrow_); }
    /// What it would ask for in a narrow window, or in a wide one.
    QSize sizeWhen(bool narrow) const;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

    using PaintedWidget::show;

signals:
    /// To see all fans.
    void sensorsRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    struct Grid {
        int columns = 1;
        int rows = 1;
    };
    int diameter(bool narrow) const;
    int gap(bool narrow) const;
    Grid grid(bool narrow) const;
    QSize rotorSize(bool narrow) const;
    void rebuild();
    void place();

    DialsModel model_;
    std::vector<FanRotor*> rotors_; // owned by Qt as children
    ThermalDial* dial_ = nullptr;   // owned by Qt as a child
    FanList* fans_ = nullptr;       // owned by Qt as a child; in a wide window, beside the dial
    bool narrow_ = false;
    bool turning_ = true;
};

class BalancedLabel;
class Eyebrow;
class TextLabel;

/// Stands within the window's margins, 8 points below the control bar and the panel gap above what follows;
/// grows with its text.
class Hero : public PaintedWidget {
    Q_OBJECT
public:
    explicit Hero(Look& look, QWidget* parent = nullptr);

    void show(const HeroModel& model);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    using PaintedWidget::show;

signals:
    /// To see all fans.
    void sensorsRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;
    void themeChanged() override;

private:
    struct Measures {
        int textWidth = 0;
        int headlineHeight = 0;
        int detailHeight = 0;
        int fanLineHeight = 0;
        int textHeight = 0;
        int middle = 0;
        int height = 0;
    };
    Measures measure(int width) const;
    bool isNarrow(int width) const;
    /// The text keeps the room of the longest that it has been within the last minute; whether that is another now.
    bool noteTextHeight();
    void place();

    HeroModel model_;
    Eyebrow* eyebrow_; // owned by Qt as children
    BalancedLabel* headline_;
    BalancedLabel* detail_;
    TextLabel* fanLine_;
    Dials* dials_;
    HeadlineAnnouncer announcer_;
    struct Seen {
        int textHeight = 0;
        double until = 0;
    };
    std::vector<Seen> seen_;
    int textRoom_ = 0;
    int roomWidth_ = -1;
};

} // namespace vantoro
