// The base of every widget of ours: it paints itself from the theme, says to a screen reader what it is, and shows
// where the keyboard is. With it what its values glide by.
#pragma once

#include "Design/AnimationClock.h"
#include "Design/Icons.h"
#include "Design/Theme.h"
#include "Design/Typography.h"
#include "Model/Text/Motion.h"

#include <functional>
#include <optional>
#include <QAccessible>
#include <QString>
#include <QWidget>
#include <vector>

namespace vantoro {

/// A text as the mark-up that shows it letter for letter, and wraps; nothing of nothing.
QString plainTooltip(const QString& text);

/// What every widget draws with; one for the whole program, made by the shell. All of it outlives the widgets.
struct Look {
    Theme& theme;
    Icons& icons;
    AnimationClock& clock;
    const Motion& motion;
    /// While what was published together is being shown: its animation.
    const std::optional<Animation>* transaction = nullptr;

    /// How a change of value is to be shown now; none (at once) also where the system asks for stillness.
    std::optional<Animation> update() const;
};

/// What a screen reader is told of a widget.
struct Description {
    struct Action {
        QString name;
        std::function<void()> run;
    };

    QAccessible::Role role = QAccessible::Grouping;
    QString name;
    QString value;
    /// For meters and sliders: where the value stands in its range.
    std::optional<double> number;
    double least = 0;
    double most = 1;
    /// Sets it, where a screen reader may.
    std::function<void(double)> setNumber;
    bool isSelected = false;
    bool isSelectable = false;
    bool isExpanded = false;
    bool isExpandable = false;
    /// Pure decoration: left out of what is read.
    bool isDecoration = false;
    /// The first is the default one.
    std::vector<Action> actions;
};

class PaintedWidget : public QWidget {
    Q_OBJECT
public:
    explicit PaintedWidget(Look& look, QWidget* parent = nullptr);

    /// What a screen reader is told; a grouping without a name unless a widget says otherwise.
    virtual Description describe() { return {}; }
    /// The tooltip, shown letter for letter and wrapped: names are other people's, and what looks like mark-up in one
    /// is part of it. Hides the toolkit's, which would read it as mark-up.
    void setToolTip(const QString& text) { QWidget::setToolTip(plainTooltip(text)); }
    /// What a screen reader calls it, where the view model has to say: the text beside it, what it measures.
    void setSpokenName(const QString& name) { spokenName_ = name; }
    /// Tells a screen reader that the name, the value or the state has changed.
    void announceChange(QAccessible::Event change = QAccessible::ValueChanged);
    /// Whether the keyboard is here and shown to be: reached by it rather than by the pointer.
    bool hasKeyboard() const { return hasFocus() && showsKeyboard_; }

protected:
    /// A key that is held activates once: its repeats of Space, Return and Delete reach no widget of ours. What
    /// has the focus learns here how it came by it.
    bool event(QEvent* event) override;
    Look& look() const { return look_; }
    Theme& theme() const { return look_.theme; }
    QColor color(Tone tone) const { return look_.theme.color(tone); }
    const QString& spokenName() const { return spokenName_; }
    QFont font(const TextStyle& style) const { return fontOf(style, look_.theme); }
    /// Whether any of it is on screen: neither hidden nor scrolled out of sight. What is not does not move.
    bool isInSight() const { return isVisible() && !visibleRegion().isEmpty(); }
    /// The share of a way that is this long below which nobody sees a difference.
    double smallestSeen(double length) const;
    /// Widgets reckon as if read from left to right; where the layout runs from right to left, this is where the
    /// rectangle stands then. Text and icons are mirrored as they are drawn.
    QRectF mirrored(const QRectF& rectangle) const;
    QRect mirrored(const QRect& rectangle) const;
    Qt::Alignment mirrored(Qt::Alignment alignment) const;
    /// Gauges, charts and rulers run from left to right in every language.
    void keepDirection() { setLayoutDirection(Qt::LeftToRight); }
    /// One line of text in this style and colour.
    void drawText(QPainter& painter, const QRectF& rectangle, const TextStyle& style, const QColor& color,
                  const QString& text, Qt::Alignment alignment = Qt::AlignLeft,
                  Qt::TextElideMode elide = Qt::ElideRight) const;
    /// Broken lines one below the other from the rectangle's top on; where the next one would stand.
    double drawLines(QPainter& painter, const QRectF& rectangle, const TextStyle& style, const QColor& color,
                     const QStringList& lines, Qt::Alignment alignment = Qt::AlignLeft,
                     Qt::TextElideMode elide = Qt::ElideRight) const;
    /// An icon centred in the rectangle.
    void drawIcon(QPainter& painter, const QRectF& rectangle, const QString& name, int size, const QColor& color) const;
    double textWidth(const TextStyle& style, const QString& text) const;
    double lineHeight(const TextStyle& style) const { return lineHeightOf(style, look_.theme); }

    /// Whether who comes by this reason comes by the keyboard.
    virtual bool isByKeyboard(Qt::FocusReason reason) const;
    /// A key was pressed here: the keyboard is shown, whatever brought the focus.
    void keyUsed();
    /// The ring round what has the keyboard, and nothing without it: 2 points of accent within the rectangle.
    void drawFocusRing(QPainter& painter, const QRectF& rectangle, double radius) const;

    /// After the theme changed; the widget is laid out and painted anew anyway.
    virtual void themeChanged() {}

private:
    Look& look_;
    QString spokenName_;
    bool showsKeyboard_ = false;
};

/// Makes every PaintedWidget known to screen readers by its description. Once, before the first window.
void installAccessibility();

/// One value that glides to where it was sent, on the one clock: a member of the widget that shows it. What the user
/// does glides whatever the setting for readings says, but not where the system asks for stillness.
class Glide : public Animated {
public:
    /// `moved` is called at every beat while the value is under way.
    Glide(Look& look, double value, std::function<void()> moved)
        : look_(look), value_(value), moved_(std::move(moved)) {}

    double value() const { return value_.at(look_.clock.now()); }
    /// Heads for the target by a spring of this response; there at once where nobody sees it.
    void set(double target, double responseSeconds, bool isSeen);
    /// Stands at its target and asks for no more beats: for a widget that is being hidden.
    void settle();

    bool advance(double now) override;

private:
    Look& look_;
    AnimatedValue value_;
    std::function<void()> moved_;
};

} // namespace vantoro
