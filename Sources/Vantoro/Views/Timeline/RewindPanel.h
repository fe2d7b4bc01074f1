// The panel beside the charts: the picked moment's readings and processes, or how to pick one.
#pragma once

#include "Design/Controls/Button.h"
#include "Views/Timeline/RewindModel.h"

namespace vantoro {

/// Repaints only the rows that say something else than before. Processes that find no room are counted in a last row.
class RewindPanel : public PaintedWidget {
    Q_OBJECT
public:
    explicit RewindPanel(Look& look, QWidget* parent = nullptr);

    void show(const RewindModel& model);
    using QWidget::show;

    Button& unpin() { return *unpin_; }

    QSize minimumSizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

signals:
    void unpinAsked();

private:
    void placeUnpin();
    QRectF titleRect() const;
    QRectF readingRect(std::size_t row) const;
    QRectF processRect(std::size_t row) const;
    double belowReadings() const;
    double scaled(double points) const { return points * theme().textScale(); }
    /// How many processes are named, so that all fit or a last row says how many do not.
    std::size_t namedProcesses() const;
    void paintHint(QPainter& painter) const;
    /// Only the rows that lie in what is to be painted.
    void paintReadings(QPainter& painter, const QRegion& dirty) const;
    void paintProcesses(QPainter& painter, const QRegion& dirty) const;
    void paintProcess(QPainter& painter, const QRectF& row, const RewindModel::Process& process) const;

    RewindModel model_;
    Button* unpin_; // owned by Qt as a child
};

} // namespace vantoro
