// A scrolling column: what it holds keeps the window's margins and grows to 1280 points, then stands in the middle.
#pragma once

#include "Design/PaintedWidget.h"

#include <QScrollArea>
#include <QVBoxLayout>

namespace vantoro {

/// Scrolls only down, and only when what it holds is higher than itself; a thin bar lies over the right margin. What
/// gets the keyboard scrolls into view. A pane that holds nothing to reach by keyboard takes the focus itself
/// (setFocusPolicy): arrows and page keys scroll it, and its bar is in the accent's colour meanwhile.
class ScrollPane : public QScrollArea {
    Q_OBJECT
public:
    static constexpr int widestContent = 1280;

    explicit ScrollPane(Look& look, QWidget* parent = nullptr);

    /// Where the panels go, with the panel gap between them and the window's margins around.
    QVBoxLayout* column() const { return column_; }

    /// Lies on something else than a window, with other margins round what it holds.
    void setSurface(Tone surface);
    void setContentMargins(const QMargins& margins) { margins_ = margins; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void applyTheme();

    Look& look_;
    QWidget* content_;
    QVBoxLayout* column_;
    Tone surface_ = Tone::window;
    std::optional<QMargins> margins_;
};

} // namespace vantoro
