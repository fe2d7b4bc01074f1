#include "Views/MenuBar/MenuBarModel.h"

#include "Views/Now/HeroModel.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

bool showsMenuBarFigure(StressLevel state, bool always) {
    return always || !isAtRest(state);
}

QString menuBarSpeed(double rpm) {
    return QString::number(static_cast<qint64>(rpm));
}

QString menuBarThermometer(StressLevel state) {
    if (isAtRest(state))
        return QStringLiteral("thermometer.low");
    return state == StressLevel::moderate ? QStringLiteral("thermometer.medium") : QStringLiteral("thermometer.high");
}

std::optional<double> menuBarSecondsPerTurn(double fanLoad, bool reducesMotion) {
    constexpr double stillUpTo = 0.25;
    if (!(fanLoad > stillUpTo) || reducesMotion)
        return std::nullopt;
    return 2.2 - 1.7 * (std::trunc(8 * fanLoad) / 8);
}

MenuBarModel menuBarModel(const SensorHub& hub, bool alwaysShowsFigure, bool reducesMotion) {
    const Verdict& verdict = hub.verdict();
    const Vitals& vitals = hub.vitals();
    const bool showsFigure = showsMenuBarFigure(verdict.state, alwaysShowsFigure);
    MenuBarModel model;
    if (hub.measuring() != Measuring::done) {
        const bool isFan = hub.cooling() == Cooling::fans;
        model.variant = isFan ? MenuBarVariant::fan : MenuBarVariant::thermometer;
        model.symbol = isFan ? QStringLiteral("fan.fill") : menuBarThermometer(StressLevel::idle);
        model.tooltip = lookingHeadline();
        return model;
    }
    QString full;
    if (hub.cooling() == Cooling::passive) {
        const QString temperature = toQString(hub.format().temperature(vitals.temps.socMean));
        model.variant = MenuBarVariant::thermometer;
        model.symbol = menuBarThermometer(verdict.state);
        if (showsFigure)
            model.figure = temperature;
        full = tr("whole chip %1").arg(temperature);
    } else {
        model.symbol = QStringLiteral("fan.fill");
        if (showsFigure)
            model.figure = menuBarSpeed(vitals.peakRPM());
        model.secondsPerTurn = menuBarSecondsPerTurn(vitals.fanLoad(), reducesMotion);
        full = tr("%1 rpm").arg(toQString(hub.format().rpm(vitals.peakRPM())));
    }
    model.tooltip = toQString(verdict.headline) + u'\n' + full;
    return model;
}

namespace {

constexpr double firstTurnSeconds = 0.35;
/// Two fifths of a quarter turn: more between two pictures would look like standing still or turning back.
constexpr double longestStep = 0.1;

} // namespace

void MenuBarSpin::appear(double now) {
    firstTurnLeft_ = 1;
    lastPicture_ = now;
}

bool MenuBarSpin::isTurning(const std::optional<double>& secondsPerTurn) const {
    return secondsPerTurn || firstTurnLeft_ > 0;
}

bool MenuBarSpin::advance(double now, const std::optional<double>& secondsPerTurn) {
    constexpr double tolerance = 1e-3;
    const double elapsed = now - lastPicture_;
    if (elapsed < interval_ - tolerance)
        return false;
    const int before = frame();
    lastPicture_ = now;
    if (!isTurning(secondsPerTurn)) {
        turns_ = 0;
        return frame() != before;
    }
    const double step = std::min(elapsed / secondsPerTurn.value_or(firstTurnSeconds), longestStep);
    turns_ = std::fmod(turns_ + step, 1.0);
    firstTurnLeft_ = std::max(0.0, firstTurnLeft_ - step);
    if (!isTurning(secondsPerTurn))
        turns_ = 0;
    return frame() != before;
}

int MenuBarSpin::frame() const {
    const double quarters = turns_ * 4;
    return static_cast<int>((quarters - std::floor(quarters)) * framesPerQuarter) % framesPerQuarter;
}

} // namespace vantoro
