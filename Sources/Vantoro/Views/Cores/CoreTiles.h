// The processor cores as tiles: the name of each, how busy it is, its frequency, and a meter for each of the two.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Cores/CoresModel.h"

namespace vantoro {

class CoreTile : public PaintedWidget, private Animated {
public:
    static constexpr int nominalHeight = 88;

    explicit CoreTile(Look& look, QWidget* parent = nullptr);

    /// The meters head for the new values with this animation, none is at once; the texts change at once.
    void show(const CoreFigures& figures, const std::optional<Animation>& animation);
    using QWidget::show;

    /// Higher than nominal where type is larger.
    static int heightFor(const Theme& theme);
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool advance(double now) override;
    QRectF busyMeter() const;
    QRectF frequencyBar() const;
    bool isMoving(double now) const;
    void settle();

    CoreFigures figures_;
    AnimatedValue busy_;
    AnimatedValue frequency_;
    /// What the meters show at this moment.
    double paintedBusy_ = 0;
    double paintedFrequency_ = 0;
};

/// The tiles of one kind, in columns of equal width; a tile stays with its core.
class CoreGrid : public QWidget {
public:
    explicit CoreGrid(Look& look);

    void show(const std::vector<CoreFigures>& cores, const std::optional<Animation>& animation);
    using QWidget::show;
    void setColumns(int columns);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int) const override { return sizeHint().height(); }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent*) override { place(); }

private:
    void relayout();
    void place();

    Look& look_;
    std::vector<CoreTile*> tiles_; // owned by Qt as children
    int columns_ = 1;
};

} // namespace vantoro
