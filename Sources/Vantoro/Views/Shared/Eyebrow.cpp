#include "Views/Shared/Eyebrow.h"

#include "Views/Shared/StepMeters.h"

#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {
constexpr int regularHeight = 20;
constexpr int smallHeight = 16;
constexpr int triangleSize = 16;
} // namespace

Eyebrow::Eyebrow(Look& look, Size size, QWidget* parent)
    : PaintedWidget(look, parent)
    , size_(size)
    , pips_(new LevelPips(look, size == Size::small ? LevelPips::Height::small : LevelPips::Height::regular, this)) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Eyebrow::show(const EyebrowModel& model) {
    if (model == model_)
        return;
    const bool speaksAnew = model.spokenValue != model_.spokenValue;
    model_ = model;
    pips_->show(model.level, model.heatStop);
    placePips();
    updateGeometry();
    update();
    if (speaksAnew)
        announceChange();
}

int Eyebrow::pipsLeft() const {
    return model_.isCritical ? scaledTriangle() + gap() : 0;
}

double Eyebrow::textLeft() const {
    return pipsLeft() + pips_->sizeHint().width() + gap();
}

QSize Eyebrow::sizeHint() const {
    double width = textLeft() + textWidth(labelStyle(), model_.label);
    if (!model_.duration.isEmpty())
        width += gap() + textWidth(durationStyle(), model_.duration);
    return {static_cast<int>(std::ceil(width)), minimumSizeHint().height()};
}

QSize Eyebrow::minimumSizeHint() const {
    return {80, qRound((size_ == Size::small ? smallHeight : regularHeight) * theme().textScale())};
}

Description Eyebrow::describe() {
    return {.role = QAccessible::StaticText, .name = vantoro::tr("Stress level"), .value = model_.spokenValue};
}

int Eyebrow::scaledTriangle() const {
    return qRound(triangleSize * theme().textScale());
}

void Eyebrow::placePips() {
    const QSize size = pips_->sizeHint();
    pips_->setGeometry(mirrored(QRect(QPoint(pipsLeft(), (height() - size.height()) / 2), size)));
}

void Eyebrow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRectF line(rect());
    const QColor word =
        model_.level || model_.isCritical ? theme().heatText(model_.heatStop) : color(Tone::textSecondary);
    if (model_.isCritical)
        drawIcon(painter, QRectF(0, 0, scaledTriangle(), line.height()),
                 QStringLiteral("exclamationmark.triangle.fill"), scaledTriangle(), theme().heatFill(model_.heatStop));
    const double left = textLeft();
    const double labelWidth = textWidth(labelStyle(), model_.label);
    drawText(painter, QRectF(left, 0, std::max(0.0, line.width() - left), line.height()), labelStyle(), word,
             model_.label);
    const double durationLeft = left + labelWidth + gap();
    if (!model_.duration.isEmpty() && durationLeft < line.width())
        drawText(painter, QRectF(durationLeft, 0, line.width() - durationLeft, line.height()), durationStyle(),
                 color(Tone::textSecondary), model_.duration);
}

void Eyebrow::resizeEvent(QResizeEvent* event) {
    placePips();
    PaintedWidget::resizeEvent(event);
}

void Eyebrow::themeChanged() {
    placePips();
}

} // namespace vantoro
