// The line over a headline: triangle, pips, level and duration.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Shared/Words.h"

namespace vantoro {

class LevelPips;

class Eyebrow : public PaintedWidget {
    Q_OBJECT
public:
    enum class Size : std::uint8_t { regular, small };

    explicit Eyebrow(Look& look, Size size = Size::regular, QWidget* parent = nullptr);

    void show(const EyebrowModel& model);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

    using PaintedWidget::show;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    int scaledTriangle() const;
    void placePips();
    int pipsLeft() const;
    double textLeft() const;

    int gap() const { return size_ == Size::small ? 8 : 10; }
    TextStyle labelStyle() const { return size_ == Size::small ? Type::small.semibold() : Type::sectionTitle; }
    TextStyle durationStyle() const { return size_ == Size::small ? Type::small : Type::body; }

    Size size_;
    EyebrowModel model_;
    LevelPips* pips_; // owned by Qt as a child
};

} // namespace vantoro
