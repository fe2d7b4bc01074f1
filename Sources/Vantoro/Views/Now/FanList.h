// Fans that tell no more than their speed.
#pragma once

#include "Design/Controls/Pressable.h"
#include "Views/Now/NowModel.h"

namespace vantoro {

/// Names and speeds one below the other, without a share, a colour or a level. No stop of the keyboard: it stands
/// beside the dial.
class FanList : public PaintedWidget {
    Q_OBJECT
public:
    explicit FanList(Look& look, QWidget* parent = nullptr);

    void show(const FanListModel& model);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

    using PaintedWidget::show;

signals:
    /// To see those that have no room here.
    void moreRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    class Line;

    int rowHigh() const;
    QStringList foot() const;
    void place();

    FanListModel model_;
    std::vector<Line*> lines_; // owned by Qt as children
};

} // namespace vantoro
