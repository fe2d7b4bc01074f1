// The text of a report on one page, in one column or two: all of it can be selected as one text and copied.
#pragma once

#include "Views/Report/ReportArranger.h"
#include "Views/Shared/StepMeters.h"

#include <compare>
#include <map>
#include <memory>
#include <utility>

namespace vantoro {

/// Selected by pointer, or whole by the keyboard. A screen reader finds each paragraph and each row as an element.
class ReportPage : public PaintedWidget {
    Q_OBJECT
public:
    ReportPage(Look& look, ReportModel model, QWidget* parent = nullptr);
    ~ReportPage() override;

    /// Under each other rather than in two columns.
    void setOneColumn(bool one);
    QString selectedText() const;
    void selectAll();

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return heightFor(width, isOneColumn_); }
    /// How high the page is at this width; kept, since it is asked for while the sheet rises.
    int heightFor(int width, bool oneColumn) const;
    QSize sizeHint() const override;
    Description describe() override;

signals:
    /// A selection is being drawn to this point.
    void reached(const QPoint& point);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    // It has the keyboard when the sheet opens, to scroll by; a ring round everything then would only distract.
    bool isByKeyboard(Qt::FocusReason reason) const override {
        return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
    }
    void themeChanged() override;

private:
    class Voice;
    /// A place between two characters of a run.
    struct Place {
        std::size_t run = 0;
        int character = 0;

        auto operator<=>(const Place&) const = default;
    };

    void arrangeAnew();
    const ReportArrangement& arranged(int width) const;
    Place placeAt(const QPointF& point) const;
    void select(Place anchor, Place caret);
    void copySelection();

    ReportModel model_;
    bool isOneColumn_ = false;
    mutable std::unique_ptr<ReportArrangement> arrangement_;
    mutable std::map<std::pair<int, bool>, int> heights_;
    LevelPips* pips_;            // owned by Qt as a child
    std::vector<Voice*> voices_; // owned by Qt as children
    Place anchor_;
    Place caret_;
    bool isSelecting_ = false;
};

} // namespace vantoro
