// The panel that opens from the menu bar.
#pragma once

#include "Views/MenuBar/MenuBarModel.h"
#include "Views/Shared/View.h"

namespace vantoro {

class BalancedLabel;
class Button;
class Eyebrow;
class FanRotor;
class ThermalDial;
class UpdateRow;

/// A small window of its own. Closes on Escape and when it loses the keyboard.
class MenuBarPanel : public View {
    Q_OBJECT
public:
    static constexpr int panelWidth = 340;
    /// Room around the card for its shadow, as far as the screen has it.
    static constexpr int shadowMargin = 40;

    explicit MenuBarPanel(ViewContext& context, QWidget* parent = nullptr);
    ~MenuBarPanel() override;

    /// Opens at the menu-bar item's place or, where that is not known, at the pointer; closes when it is open.
    void toggle(const QRect& item, const std::optional<QPoint>& pointer);

    void refresh() override;
    QSize sizeHint() const override;
    Description describe() override;

signals:
    void openRequested();
    void settingsRequested();
    void quitRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool event(QEvent* event) override;

private:
    class Figures;
    class SuspectLine;

    void showModel(const MenuBarPanelModel& model);
    /// Puts everything in its place from top to bottom; the height that it takes.
    int layOut();
    int layOutHead(int y);
    void moveIntoPlace();
    int leadingShadow() const { return isRightToLeft() ? shadow_.right() : shadow_.left(); }
    QRect cardRect() const { return {shadow_.left(), shadow_.top(), cardWidth(), laidOutHeight_}; }
    /// It grows with the type.
    int cardWidth() const { return qRound(panelWidth * theme().textScale()); }

    MenuBarPanelModel model_;
    Eyebrow* eyebrow_; // owned by Qt as children, as are all below
    BalancedLabel* title_;
    BalancedLabel* cause_;
    FanRotor* rotor_;
    ThermalDial* dial_;
    Figures* figures_;
    std::vector<SuspectLine*> suspects_;
    BalancedLabel* noSuspects_;
    UpdateRow* update_;
    Button* open_;
    Button* settings_;
    Button* quit_;
    std::vector<int> separators_;
    int laidOutHeight_ = 0;
    QMargins shadow_{shadowMargin, shadowMargin, shadowMargin, shadowMargin};
    /// Where the screen has no room for more.
    std::size_t mostSuspects_ = 0;
    QRect item_;
    std::optional<QPoint> pointer_;
    double hiddenAt_ = -1;
};

} // namespace vantoro
