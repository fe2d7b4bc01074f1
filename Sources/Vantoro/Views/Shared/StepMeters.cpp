#include "Views/Shared/StepMeters.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Shared/Words.h"

#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {

constexpr double capsule = 6;
constexpr int steps = static_cast<int>(allThermalPressures.size());

double capsuleGap(FourStepMeter::Names names) {
    return names == FourStepMeter::Names::ends ? 3 : 4;
}

double nameGap(FourStepMeter::Names names) {
    return names == FourStepMeter::Names::ends ? 4 : 6;
}

} // namespace

FourStepMeter::FourStepMeter(Look& look, Names names, QWidget* parent) : PaintedWidget(look, parent), names_(names) {
    keepDirection();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void FourStepMeter::show(ThermalPressure pressure) {
    if (pressure == pressure_)
        return;
    pressure_ = pressure;
    update();
    announceChange();
}

QSize FourStepMeter::sizeHint() const {
    return {names_ == Names::ends ? 134 : 268,
            static_cast<int>(std::ceil(capsule + nameGap(names_) + lineHeight(Type::caption)))};
}

Description FourStepMeter::describe() {
    return {.role = QAccessible::ProgressBar,
            .name = spokenName(),
            .value = toQString(DiagnosisEngine::title(pressure_)),
            .number = static_cast<double>(pressure_),
            .most = steps - 1,
            .isDecoration = spokenName().isEmpty()};
}

void FourStepMeter::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double gap = capsuleGap(names_);
    const double width = (this->width() - gap * (steps - 1)) / steps;
    const double line = lineHeight(Type::caption);
    const double top = height() - line - nameGap(names_) - capsule;
    // No pressure has no colour; from there on the case skips a stop of the ramp.
    const QColor fill =
        pressure_ == ThermalPressure::nominal ? color(Tone::bar) : theme().heatFill(static_cast<int>(pressure_) + 1);
    for (const ThermalPressure step : allThermalPressures) {
        const int i = static_cast<int>(step);
        const QRectF box(i * (width + gap), top, width, capsule);
        const bool isFilled = step <= pressure_;
        painter.setPen(theme().increasesContrast() && !isFilled ? QPen(color(Tone::line), 1) : QPen(Qt::NoPen));
        painter.setBrush(isFilled ? fill : color(Tone::well));
        painter.drawRoundedRect(box, capsule / 2, capsule / 2);
        const bool isLast = i == steps - 1;
        const QString name = toQString(DiagnosisEngine::title(step));
        if (names_ == Names::all) {
            const bool isPresent = step == pressure_;
            drawText(painter, QRectF(box.left(), height() - line, width, line),
                     isPresent ? Type::caption.semibold() : Type::caption,
                     color(isPresent ? Tone::textPrimary : Tone::textTertiary), name);
        } else if (i == 0 || isLast) {
            const double half = (this->width() - gap) / 2.0;
            drawText(painter, QRectF(isLast ? this->width() - half : 0, height() - line, half, line), Type::caption,
                     color(Tone::textTertiary), name, isLast ? Qt::AlignRight : Qt::AlignLeft);
        }
    }
}

namespace {
constexpr int count = 5;
constexpr double pipWidth = 3;
constexpr double pitch = 6;
constexpr double outline = 1;
} // namespace

LevelPips::LevelPips(Look& look, Height height, QWidget* parent)
    : PaintedWidget(look, parent), height_(static_cast<int>(height)) {
    keepDirection();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void LevelPips::show(std::optional<int> level, int heatStop) {
    if (level == level_ && heatStop == heatStop_)
        return;
    level_ = level;
    heatStop_ = heatStop;
    update();
}

QSize LevelPips::sizeHint() const {
    const double scale = theme().textScale();
    return {qRound(((count - 1) * pitch + pipWidth + outline) * scale), qRound(height_ * scale)};
}

Description LevelPips::describe() {
    return {.isDecoration = true};
}

void LevelPips::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(theme().textScale(), theme().textScale());
    const int filled = level_ ? *level_ + 1 : 0;
    for (int i = 0; i < count; ++i) {
        const bool isFilled = i < filled;
        painter.setPen(QPen(isFilled ? theme().heatFill(heatStop_) : color(Tone::textTertiary), outline));
        painter.setBrush(isFilled ? QBrush(theme().heatFill(heatStop_)) : QBrush(Qt::NoBrush));
        const QRectF pip(outline / 2 + i * pitch, outline / 2, pipWidth, height_ - outline);
        painter.drawRoundedRect(pip, pipWidth / 2, pipWidth / 2);
    }
}

} // namespace vantoro
