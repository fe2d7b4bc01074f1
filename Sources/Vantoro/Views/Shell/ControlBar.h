// The bar at the top of the window: the pane switcher in the middle; the badge, what there is to say of updates, and
// the settings button at the right.
#pragma once

#include "Design/Controls/Button.h"
#include "Design/Controls/SegmentedControl.h"
#include "Views/Shell/Panes.h"
#include "Views/Shell/ShellModel.h"
#include "Views/Updates/UpdatesModel.h"

namespace vantoro {

class BadgeView;
class UpdateChip;

class ControlBar : public PaintedWidget {
    Q_OBJECT
public:
    static constexpr int barHeight = 52;
    /// Below this width a chip shows its icon and its button's word alone.
    static constexpr int narrowWidth = 960;

    explicit ControlBar(Look& look, QWidget* parent = nullptr);

    void showPane(Pane pane);
    void showBadge(const Badge& badge);
    void showUpdate(const UpdateLine& line);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

signals:
    void paneChosen(Pane pane);
    void settingsRequested();
    void updatePressed(UpdateCommand command);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void place();

    SegmentedControl* switcher_; // these four are owned by Qt as children
    BadgeView* badge_;
    UpdateChip* chip_;
    Button* settings_;
};

} // namespace vantoro
