#include "Views/Shared/FourStepMeter.h"

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

void FourStepMeter::setSpokenName(const QString& name) {
    spoken_ = name;
}

QSize FourStepMeter::sizeHint() const {
    return {names_ == Names::ends ? 134 : 268,
            static_cast<int>(std::ceil(capsule + nameGap(names_) + lineHeight(Type::caption)))};
}

Description FourStepMeter::describe() {
    return {.role = QAccessible::ProgressBar,
            .name = spoken_,
            .value = toQString(DiagnosisEngine::title(pressure_)),
            .number = static_cast<double>(pressure_),
            .most = steps - 1,
            .isDecoration = spoken_.isEmpty()};
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

} // namespace vantoro
