// The thinner lines of the list: the members of a row that is unfolded, and what nobody can be blamed for.
#pragma once

#include "Design/Gauges/SmallGauges.h"
#include "Design/Panel.h"
#include "Views/Suspects/SuspectsModel.h"

namespace vantoro {

/// Where things stand in every line of the list, as read from left to right.
namespace SuspectPlaces {
inline constexpr int tileSize = 28;
inline constexpr int textLeft = Space::panelPadding + tileSize + 12;
inline constexpr int figureWidth = 52;
inline constexpr int barGap = 12;
inline constexpr int wideBar = 220;
inline constexpr int narrowBar = 128;
/// What a bar in a line of its own adds to the height.
inline constexpr int stackedBar = 14;

/// What rows are drawn for; larger type makes them higher.
inline constexpr int rowAtFirst = 48;
// Two bars in one row: where their middles are, and how far one is below the other where they have lines of their own.
inline constexpr int upperBar = 18;
inline constexpr int lowerBar = 32;
inline constexpr int betweenBars = 15;
inline constexpr int graphicsHeight = 6;
inline constexpr int barIcon = 12;
inline constexpr int barIconGap = 6;
// What is unfolded.
inline constexpr int explanationGap = 2;
inline constexpr int detailsGap = 6;
inline constexpr int membersGap = 4;
inline constexpr int footerPadding = 12;

/// With text this large a bar has a line of its own below the name.
inline bool areStacked(const Theme& theme) {
    return theme.textScale() >= 1.25;
}

/// The height of a row's two lines of text, and of the row while it shows no more.
int textHeight(const Theme& theme);
int rowHeight(const Theme& theme);

/// In a line of this width and, beside the bar, of this height.
QRect figure(const Theme& theme, int width, int height);
/// `barHeight` is drawn in the middle of the line, or below it where bars have their own.
QRect bar(const Theme& theme, int width, int height, int barHeight, bool isNarrow);
} // namespace SuspectPlaces

/// A process of an unfolded row, or several of them. What the pointer does here is the row's.
class MemberLine : public PaintedWidget {
    Q_OBJECT
public:
    MemberLine(Look& look, QWidget* parent);

    void show(const MemberModel& model, int cores, bool isNarrow);
    using QWidget::show;

    static int heightIn(const Theme& theme);
    const MemberModel& model() const { return model_; }
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override { place(); }

private:
    int textLine() const;
    double nameRoom() const;
    void place();

    MemberModel model_;
    bool isNarrow_ = false;
    CoreBar* bar_; // owned by Qt as a child
};

/// The work that belongs to no row: no suspect, so that neither pointer nor keyboard finds anything to press.
class UnaccountedRow : public PaintedWidget {
    Q_OBJECT
public:
    UnaccountedRow(Look& look, QWidget* parent);

    void show(const UnaccountedModel& model, int cores);
    using QWidget::show;
    void setNarrow(bool narrow);
    /// No separator above it.
    void setFirst(bool first);
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override { place(); }

private:
    QRect barRect() const;
    void place();

    UnaccountedModel model_;
    bool isNarrow_ = false;
    bool isFirst_ = false;
    CoreBar* bar_; // owned by Qt as a child
};

} // namespace vantoro
