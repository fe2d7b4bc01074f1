#include "Design/PaintedWidget.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <utility>

namespace vantoro {

namespace {

/// Speaks for any widget of ours from its description.
class DescribedInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit DescribedInterface(PaintedWidget* widget) : QAccessibleWidget(widget) {}

    QAccessible::Role role() const override { return description().role; }

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name)
            return description().name;
        if (kind == QAccessible::Value)
            return description().value;
        return QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        const Description what = description();
        state.selectable = what.isSelectable;
        state.selected = what.isSelected;
        state.checkable = what.role == QAccessible::CheckBox;
        state.checked = state.checkable && what.isSelected;
        state.expandable = what.isExpandable;
        state.expanded = what.isExpandable && what.isExpanded;
        state.collapsed = what.isExpandable && !what.isExpanded;
        state.invisible = state.invisible || what.isDecoration;
        state.readOnly = what.actions.empty();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface && description().number)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override { return description().number.value_or(0); }
    QVariant minimumValue() const override { return description().least; }
    QVariant maximumValue() const override { return description().most; }
    QVariant minimumStepSize() const override { return {}; }
    void setCurrentValue(const QVariant& value) override {
        if (const Description what = description(); what.setNumber)
            what.setNumber(value.toDouble());
    }

    QStringList actionNames() const override {
        QStringList names;
        for (const Description::Action& action : description().actions)
            names.append(action.name);
        names.append(QAccessibleWidget::actionNames());
        names.removeDuplicates();
        return names;
    }

    void doAction(const QString& name) override {
        for (const Description::Action& action : description().actions)
            if (action.name == name) {
                action.run();
                return;
            }
        QAccessibleWidget::doAction(name);
    }

private:
    Description description() const { return static_cast<PaintedWidget*>(object())->describe(); }
};

bool activates(int key) {
    return key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Delete ||
           key == Qt::Key_Backspace || key == Qt::Key_Escape;
}

QAccessibleInterface* describedInterface(const QString&, QObject* object) {
    PaintedWidget* const widget = qobject_cast<PaintedWidget*>(object);
    return widget != nullptr ? new DescribedInterface(widget) : nullptr; // Qt owns it
}

} // namespace

std::optional<Animation> Look::update() const {
    if (theme.reducesMotion() || clock.isPaused())
        return std::nullopt;
    return transaction != nullptr ? *transaction : motion.update();
}

QString plainTooltip(const QString& text) {
    return text.isEmpty() ? QString() : "<qt>" + text.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")) + "</qt>";
}

PaintedWidget::PaintedWidget(Look& look, QWidget* parent) : QWidget(parent), look_(look) {
    connect(&look.theme, &Theme::changed, this, [this] {
        themeChanged();
        updateGeometry();
        update();
    });
}

bool PaintedWidget::event(QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        showsKeyboard_ = isByKeyboard(static_cast<QFocusEvent*>(event)->reason());
    } else if (event->type() == QEvent::FocusOut) {
        // A pop-up only borrows the keyboard.
        if (static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason)
            showsKeyboard_ = false;
    } else if (event->type() == QEvent::KeyPress) {
        const auto* const press = static_cast<QKeyEvent*>(event);
        if (press->isAutoRepeat() && activates(press->key())) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

bool PaintedWidget::isByKeyboard(Qt::FocusReason reason) const {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason ||
           reason == Qt::OtherFocusReason;
}

void PaintedWidget::keyUsed() {
    if (!std::exchange(showsKeyboard_, true))
        update();
}

void PaintedWidget::announceChange(QAccessible::Event change) {
    if (!QAccessible::isActive())
        return;
    if (change == QAccessible::ValueChanged) {
        QAccessibleValueChangeEvent event(this, describe().value);
        QAccessible::updateAccessibility(&event);
    } else {
        QAccessibleEvent event(this, change);
        QAccessible::updateAccessibility(&event);
    }
}

void PaintedWidget::drawText(QPainter& painter, const QRectF& rectangle, const TextStyle& style, const QColor& color,
                             const QString& text, Qt::Alignment alignment, Qt::TextElideMode elide) const {
    painter.setPen(color);
    drawLine(painter, mirrored(rectangle), font(style), text, mirrored(alignment), elide);
}

double PaintedWidget::drawLines(QPainter& painter, const QRectF& rectangle, const TextStyle& style, const QColor& color,
                                const QStringList& lines, Qt::Alignment alignment, Qt::TextElideMode elide) const {
    QRectF line(rectangle.left(), rectangle.top(), rectangle.width(), lineHeight(style));
    for (const QString& text : lines) {
        drawText(painter, line, style, color, text, alignment, elide);
        line.translate(0, line.height());
    }
    return line.top();
}

void PaintedWidget::drawIcon(QPainter& painter, const QRectF& rectangle, const QString& name, int size,
                             const QColor& color) const {
    const QRectF place = mirrored(rectangle);
    const bool pointsAlong = name == QLatin1String("chevron.right") || name == QLatin1String("list.bullet.indent");
    if (!pointsAlong || !isRightToLeft()) {
        look_.icons.draw(painter, place, name, size, color);
        return;
    }
    const QTransform before = painter.transform();
    painter.translate(2 * place.center().x(), 0);
    painter.scale(-1, 1);
    look_.icons.draw(painter, place, name, size, color);
    painter.setTransform(before);
}

double PaintedWidget::smallestSeen(double length) const {
    constexpr double pixels = 0.25;
    return length > 0 ? pixels / devicePixelRatioF() / length : 0;
}

QRectF PaintedWidget::mirrored(const QRectF& rectangle) const {
    return isRightToLeft() ? rectangle.translated(width() - rectangle.left() - rectangle.right(), 0) : rectangle;
}

QRect PaintedWidget::mirrored(const QRect& rectangle) const {
    return QStyle::visualRect(layoutDirection(), rect(), rectangle);
}

Qt::Alignment PaintedWidget::mirrored(Qt::Alignment alignment) const {
    return QStyle::visualAlignment(layoutDirection(), alignment);
}

double PaintedWidget::textWidth(const TextStyle& style, const QString& text) const {
    return tabularWidth(font(style), text);
}

void PaintedWidget::drawFocusRing(QPainter& painter, const QRectF& rectangle, double radius) const {
    if (!hasKeyboard())
        return;
    constexpr double width = 2;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color(Tone::accent), width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rectangle.adjusted(width / 2, width / 2, -width / 2, -width / 2), radius, radius);
}

void installAccessibility() {
    QAccessible::installFactory(describedInterface);
}

void Glide::set(double target, double responseSeconds, bool isSeen) {
    const bool glides = isSeen && !look_.theme.reducesMotion() && !look_.clock.isPaused();
    value_.set(target, look_.clock.now(),
               glides ? std::optional<Animation>(SpringAnimation{.responseSeconds = responseSeconds}) : std::nullopt);
    if (glides)
        look_.clock.run(*this);
    moved_();
}

void Glide::settle() {
    look_.clock.stop(*this);
    value_.set(value_.target(), look_.clock.now(), std::nullopt);
}

bool Glide::advance(double now) {
    moved_();
    return !value_.isAtRest(now);
}

} // namespace vantoro
