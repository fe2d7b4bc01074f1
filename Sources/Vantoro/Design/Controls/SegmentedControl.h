// A row of choices of which one is taken: the pane switcher and the two- and three-way settings.
#pragma once

#include "Design/Controls/Pressable.h"

#include <QStringList>

namespace vantoro {

/// One stop of the keyboard: left and right move the choice. For a screen reader a list of tabs (or of radio buttons),
/// each segment an element of its own.
class SegmentedControl : public PaintedWidget {
    Q_OBJECT
public:
    /// Room around the control for the focus ring.
    static constexpr int ringMargin = 4;

    enum class Meaning { tabs, choices };

    SegmentedControl(Look& look, Meaning meaning, const QStringList& segments, QWidget* parent = nullptr);

    int current() const { return current_; }
    /// Without the signal: what the model says.
    void setCurrent(int index);
    /// Segments of this size each; without it they are as wide as their texts need, in a control of this height.
    void setSegmentSize(const QSize& size);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

signals:
    /// The user chose another segment.
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    int segmentWidth(int index) const;
    QRect segmentRect(int index) const;
    void placeSegments();
    void choose(int index);

    Meaning meaning_;
    QStringList texts_;
    std::vector<SpokenPart*> segments_; // owned by Qt as children
    int current_ = 0;
    std::optional<QSize> fixed_;
};

} // namespace vantoro
