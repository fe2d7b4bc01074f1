// The bar at the top of the window: the pane switcher in the middle, the badge and the settings button at the right.
#pragma once

#include "Design/Button.h"
#include "Design/SegmentedControl.h"
#include "Views/ControlBarModel.h"

namespace vantoro {

class BadgeView;

class ControlBar : public PaintedWidget {
    Q_OBJECT
public:
    static constexpr int barHeight = 52;
    /// Below this width a chip shows its icon and its button's word alone.
    static constexpr int narrowWidth = 960;

    explicit ControlBar(Look& look, QWidget* parent = nullptr);

    void showPane(Pane pane);
    void showBadge(const Badge& badge);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

signals:
    void paneChosen(Pane pane);
    void settingsRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void place();

    SegmentedControl* switcher_; // these three are owned by Qt as children
    BadgeView* badge_;
    Button* settings_;
};

} // namespace vantoro
