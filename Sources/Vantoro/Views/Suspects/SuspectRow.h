// One application in the list: what it is, how many cores and how much of the graphics processor it keeps busy, and on
// request its processes and what else is known of it.
#pragma once

#include "Design/Controls/Button.h"
#include "Design/Icons.h"
#include "Design/PaintedWidget.h"
#include "Views/Suspects/SuspectLines.h"

namespace vantoro {

/// As wide as its panel, so that what marks the whole row reaches the panel's edges. Asked for its height by the panel,
/// which places it.
class SuspectRow : public Pressable {
    Q_OBJECT
public:
    SuspectRow(Look& look, AppIcons& icons, QWidget* parent = nullptr);

    const QString& key() const { return model_.key; }
    /// `words` names the actions; the bar has `cores` cells.
    void show(const SuspectRowModel& model, const SuspectsModel& words);
    using QWidget::show;
    bool isExpanded() const { return isExpanded_; }
    void setExpanded(bool expanded);
    /// A shorter bar.
    void setNarrow(bool narrow);
    /// No separator above it.
    void setFirst(bool first);
    /// Everything at once, and no press counts any more: the row has come to stand for another application.
    void jump();
    /// On its way to another place: what it passes over is not seen through it.
    void setMoving(bool moving);
    /// What lies under the pointer is marked, and offers to be ended.
    void setHovered(bool hovered) override;

    /// Whether its bar shows the cores one by one.
    bool hasCells() const { return CoreBar::cellsIn(barRect().width(), cores_) == cores_; }
    bool hasGraphics() const { return model_.graphicsPercent.has_value(); }

    int heightFor(int width) const;
    Description describe() override;

signals:
    void quitAsked();
    /// By the keyboard: unfolded, or folded.
    void unfoldAsked(bool unfold);
    /// The keyboard goes to another row: so many further, or to the first or last.
    void moved(int rows);
    /// The pointer has come, here on the screen.
    void entered(const QPoint& screen);
    /// The pointer or the keyboard has gone.
    void attentionChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void themeChanged() override;

private:
    bool isStacked() const { return SuspectPlaces::areStacked(theme()); }
    QRect figureRect() const;
    QRect barRect() const;
    QRect graphicsRect() const;
    /// Its lines of text and bars, without what is unfolded.
    int plainHeight() const;
    int explanationHeight(int width) const;
    /// What it was before stays where it was; what is new comes behind.
    void keepMembersOrder(const std::vector<MemberModel>& before);
    /// The last line of what is unfolded, in this width.
    QString foot(double width) const;
    void showMembers();
    int quitWidth() const;
    double nameWidth() const;
    void place();
    void paintFigure(QPainter& painter);
    void showQuit();

    AppIcons& icons_;
    SuspectRowModel model_;
    QString unfoldAction_;
    QString foldAction_;
    QString unfoldedWord_;
    QString quitAction_;
    int cores_ = 0;
    QString forceAction_;
    CoreBar* bar_; // owned by Qt as children
    Button* quit_;
    CoreBar* graphics_ = nullptr; // made when first needed, as these
    std::vector<MemberLine*> members_;
    /// As many as there have been since it was unfolded: what is below does not move when a process ends.
    std::size_t memberRoom_ = 0;
    bool isExpanded_ = false;
    bool isNarrow_ = false;
    bool isFirst_ = false;
    bool isMoving_ = false;
    /// From the figure, at 0, to what stands in its place.
    Glide fade_;
};

} // namespace vantoro
