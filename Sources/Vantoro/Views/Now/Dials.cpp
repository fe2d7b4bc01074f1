#include "Views/Now/Dials.h"

#include "Design/Gauges/FanRotor.h"
#include "Design/Gauges/FigureLine.h"
#include "Design/Gauges/ThermalDial.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {

constexpr int dialSize = 196;
constexpr int regularSize = 148;
constexpr int narrowSize = 120;
constexpr int smallSize = 64;
constexpr int regularGap = 24;
constexpr int narrowGap = 16;
constexpr int smallGap = 8;
constexpr double peakLineHeight = 22;

static_assert(Dials::ringMargin == FanRotor::ringMargin && Dials::ringMargin == ThermalDial::ringMargin);

} // namespace

Dials::Dials(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

int Dials::diameter(bool narrow) const {
    return model_.showsSmallRotors() ? smallSize : narrow ? narrowSize : regularSize;
}

int Dials::gap(bool narrow) const {
    return model_.showsSmallRotors() ? smallGap : narrow ? narrowGap : regularGap;
}

Dials::Grid Dials::grid(bool narrow) const {
    const int count = std::max(1, static_cast<int>(model_.rotors.size()));
    if (!model_.showsSmallRotors())
        return {.columns = count};
    // As wide as two large rotors would be, the rows about equally full.
    const int room = narrow ? 2 * narrowSize + narrowGap : 2 * regularSize + regularGap;
    const int most = (room + smallGap) / (smallSize + smallGap);
    const int rows = (count + most - 1) / most;
    return {.columns = (count + rows - 1) / rows, .rows = rows};
}

QSize Dials::rotorSize(bool narrow) const {
    QSize largest(diameter(narrow), diameter(narrow));
    for (const FanRotor* rotor : rotors_)
        largest = largest.expandedTo(rotor->sizeAt(diameter(narrow)) - QSize(2 * ringMargin, 2 * ringMargin));
    return largest;
}

void Dials::show(const DialsModel& model) {
    if (model == model_)
        return;
    const bool isOther = model.dial.has_value() != model_.dial.has_value() ||
                         model.rotors.size() != model_.rotors.size() || (rotors_.empty() && dial_ == nullptr);
    const bool peakChanged = model.peakFigure != model_.peakFigure;
    const QSize before = sizeHint();
    model_ = model;
    if (isOther)
        rebuild();
    for (std::size_t i = 0; i < rotors_.size(); ++i)
        rotors_[i]->show(model.rotors[i]);
    if (dial_ != nullptr && model.dial)
        dial_->show(*model.dial);
    if (sizeHint() != before)
        updateGeometry();
    if (isOther)
        place();
    if (peakChanged)
        update();
}

void Dials::setNarrow(bool narrow) {
    if (narrow == narrow_)
        return;
    narrow_ = narrow;
    for (FanRotor* rotor : rotors_)
        rotor->setDiameter(diameter(narrow_));
    updateGeometry();
    place();
}

void Dials::setTurning(bool allowed) {
    turning_ = allowed;
    for (FanRotor* rotor : rotors_)
        rotor->setTurning(allowed);
}

void Dials::rebuild() {
    for (FanRotor* rotor : rotors_)
        delete rotor;
    rotors_.clear();
    delete dial_;
    dial_ = nullptr;
    if (model_.dial) {
        dial_ = new ThermalDial(look(), dialSize, Tone::window, this);
        dial_->show();
        return;
    }
    const auto captions = model_.showsSmallRotors() ? FanRotor::Captions::label : FanRotor::Captions::full;
    for (std::size_t i = 0; i < model_.rotors.size(); ++i) {
        rotors_.push_back(new FanRotor(look(), diameter(narrow_), captions, Tone::window, this));
        rotors_.back()->setTurning(turning_);
        rotors_.back()->show();
    }
}

QSize Dials::sizeWhen(bool narrow) const {
    const QSize margins(2 * ringMargin, 2 * ringMargin);
    if (model_.dial)
        return QSize(dialSize, dialSize) + margins;
    const Grid laid = grid(narrow);
    const QSize one = rotorSize(narrow);
    int height = laid.rows * one.height() + (laid.rows - 1) * smallGap;
    if (model_.showsSmallRotors())
        height += smallGap + static_cast<int>(std::ceil(peakLineHeight * theme().textScale()));
    return QSize(laid.columns * one.width() + (laid.columns - 1) * gap(narrow), height) + margins;
}

Description Dials::describe() {
    Description what;
    if (model_.showsSmallRotors()) {
        what.role = QAccessible::StaticText;
        what.name = model_.peakFigure + u' ' + model_.peakUnit;
    }
    return what;
}

void Dials::place() {
    if (dial_ != nullptr) {
        dial_->setGeometry(QRect({0, 0}, dial_->sizeHint()));
        return;
    }
    const Grid laid = grid(narrow_);
    const QSize one = rotorSize(narrow_);
    const int count = static_cast<int>(rotors_.size());
    for (int i = 0; i < count; ++i) {
        const int row = i / laid.columns;
        const int inRow = std::min(laid.columns, count - row * laid.columns);
        const int rowWidth = inRow * one.width() + (inRow - 1) * gap(narrow_);
        const int left = (width() - 2 * ringMargin - rowWidth) / 2 + (i % laid.columns) * (one.width() + gap(narrow_));
        rotors_[static_cast<std::size_t>(i)]->setGeometry(
            QRect(QPoint(left, row * (one.height() + smallGap)), one + QSize(2 * ringMargin, 2 * ringMargin)));
    }
}

void Dials::paintEvent(QPaintEvent*) {
    if (!model_.showsSmallRotors())
        return;
    QPainter painter(this);
    const double height = peakLineHeight * theme().textScale();
    drawFigureLine(painter, QRectF(0, this->height() - ringMargin - height, width(), height),
                   {model_.peakFigure, model_.peakUnit}, theme(), Qt::AlignHCenter);
}

void Dials::resizeEvent(QResizeEvent* event) {
    place();
    PaintedWidget::resizeEvent(event);
}

void Dials::themeChanged() {
    place();
}

} // namespace vantoro
