// One application in the list: what it is, how many cores it keeps busy, and on request what is known of it.
#pragma once

#include "Design/Controls/Button.h"
#include "Design/Gauges/SmallGauges.h"
#include "Design/Icons.h"
#include "Design/PaintedWidget.h"
#include "Views/Suspects/SuspectsModel.h"

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

    int heightFor(int width) const;
    /// The height of a row that is not expanded.
    static int plainHeight(const Theme& theme);
    Description describe() override;

signals:
    void quitAsked();
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
    bool isStacked() const;
    QRect figureRect() const;
    QRect barRect() const;
    int quitWidth() const;
    double nameWidth() const;
    void place();
    void paintFigure(QPainter& painter);
    void showQuit();

    AppIcons& icons_;
    SuspectRowModel model_;
    QString expandAction_;
    QString quitAction_;
    int cores_ = 0;
    QString forceAction_;
    CoreBar* bar_; // owned by Qt as a child
    Button* quit_; // owned by Qt as a child
    bool isExpanded_ = false;
    bool isNarrow_ = false;
    bool isFirst_ = false;
    bool isMoving_ = false;
    /// From the figure, at 0, to what stands in its place.
    Glide fade_;
};

} // namespace vantoro
