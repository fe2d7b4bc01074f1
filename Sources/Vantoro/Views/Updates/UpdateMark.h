// The icon or the ring of progress before a text about updates.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Updates/UpdatesModel.h"

namespace vantoro {

/// Turns only while it is seen and an installation runs.
class UpdateMark : public PaintedWidget, public Animated {
    Q_OBJECT
public:
    /// Square, `size` wide.
    UpdateMark(Look& look, int size, Tone tone, QWidget* parent);

    void show(const UpdateMarkModel& mark);
    using PaintedWidget::show;

    QSize sizeHint() const override { return {size_, size_}; }
    Description describe() override;
    bool advance(double now) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void themeChanged() override;

private:
    void turnIfSeen();

    int size_;
    Tone tone_;
    UpdateMarkModel mark_;
};

} // namespace vantoro
