// The five pips of a stress level: as many filled as the level counts.
#pragma once

#include "Design/PaintedWidget.h"

namespace vantoro {

/// Stands beside a word that says the same, so it is hidden from screen readers.
class LevelPips : public PaintedWidget {
    Q_OBJECT
public:
    enum class Height : std::uint8_t { regular = 14, small = 12 };

    explicit LevelPips(Look& look, Height height = Height::regular, QWidget* parent = nullptr);

    /// The level by its raw value, 0 to 4; none, while a reading is awaited, leaves all five empty.
    void show(std::optional<int> level, int heatStop);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

    using PaintedWidget::show;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int height_;
    std::optional<int> level_;
    int heatStop_ = 0;
};

} // namespace vantoro
