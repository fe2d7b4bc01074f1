#include "Views/MenuBar/MenuBarModel.h"

#include "Model/Diagnosis/Diagnosis.h"

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
    const bool isLooking = hub.measuring() != Measuring::done;
    QString figure;
    QString full;
    switch (hub.cooling()) {
    case Cooling::fans:
        model.symbol = QStringLiteral("fan.fill");
        figure = menuBarSpeed(vitals.peakRPM());
        if (!isLooking)
            model.secondsPerTurn = menuBarSecondsPerTurn(vitals.fanLoad(), reducesMotion);
        full = tr("%1 rpm").arg(toQString(hub.format().rpm(vitals.peakRPM())));
        break;
    case Cooling::passive:
    case Cooling::heat:
        model.variant = MenuBarVariant::thermometer;
        model.symbol = menuBarThermometer(isLooking ? StressLevel::idle : verdict.state);
        figure = toQString(hub.format().temperature(vitals.temps.socMean));
        full = tr("whole chip %1").arg(figure);
        break;
    case Cooling::load:
        model.variant = MenuBarVariant::gauge;
        model.symbol = QStringLiteral("gauge.with.dots.needle.67percent");
        figure = percentText(busyPercent(hub));
        full = tr("%1 busy").arg(figure);
        break;
    }
    if (isLooking) {
        model.tooltip = lookingHeadline();
        return model;
    }
    if (showsFigure)
        model.figure = figure;
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

namespace {

/// What the machine draws or, on a computer that does not tell, its processors.
MenuBarPanelModel::Figure powerFigure(const SensorHub& hub) {
    const PowerReading& power = hub.vitals().power;
    const bool isProcessors = !hub.words().isMac() && power.systemWatts <= 0 && power.cpuWatts.value_or(0) > 0;
    // As the fact has it, which is not rounded to halves first.
    const double watts = isProcessors ? hub.snapshot().power.cpuWatts.value_or(0) : power.systemWatts;
    return {.caption = isProcessors ? tr("Processors") : tr("Power"),
            .figure = watts > 0 ? tr("%1 W").arg(std::lround(watts)) : QStringLiteral("—")};
}

std::vector<MenuBarPanelModel::Figure> workFigures(const SensorHub& hub) {
    const Snapshot& now = hub.snapshot();
    const auto percent = [&hub](std::optional<double> share) {
        return hub.measuring() == Measuring::done && share
                   ? percentText(static_cast<int>(std::clamp(*share, 0.0, 100.0)))
                   : percentText(std::nullopt);
    };
    std::optional<double> memory;
    if (now.memory.totalBytes > 0)
        memory = DiagnosisEngine::memoryPressure(now.memory) * 100;
    return {{.caption = tr("Busy"), .figure = percentText(busyPercent(hub))},
            {.caption = tr("Memory"), .figure = percent(memory)},
            {.caption = tr("Waiting"), .figure = percent(largestStall(now.stalls))}};
}

const FanReading* hardestWorking(const std::vector<FanReading>& fans) {
    const auto hardest = std::max_element(fans.begin(), fans.end(), [](const FanReading& one, const FanReading& other) {
        return fanPosition(one).value_or(-1) < fanPosition(other).value_or(-1);
    });
    return hardest == fans.end() ? nullptr : &*hardest;
}

std::vector<MenuBarPanelModel::Figure> figures(const SensorHub& hub) {
    const Vitals& vitals = hub.vitals();
    const Format& format = hub.format();
    const auto temperature = [&format](double celsius) { return toQString(format.temperature(celsius)); };
    if (hub.cooling() == Cooling::load)
        return workFigures(hub);
    if (hub.cooling() != Cooling::fans)
        return {{.caption = tr("Whole chip"), .figure = temperature(vitals.temps.socMean)},
                {.caption = tr("Hottest core"), .figure = temperature(vitals.temps.soc)},
                powerFigure(hub)};
    const bool hasFans = !vitals.fans.empty();
    return {{.caption = tr("Fans"),
             .figure = hasFans ? toQString(format.rpm(vitals.peakRPM())) : QStringLiteral("—"),
             .unit = hasFans ? tr("rpm") : QString()},
            {.caption = tr("Chip"), .figure = temperature(vitals.temps.soc)},
            powerFigure(hub)};
}

} // namespace

MenuBarPanelModel menuBarPanelModel(const SensorHub& hub, const Settings& settings) {
    const Verdict& verdict = hub.verdict();
    const Measuring measuring = hub.measuring();
    MenuBarPanelModel model;
    if (measuring == Measuring::done) {
        model.eyebrow = eyebrowModel(verdict);
        model.eyebrow.duration.clear();
        const bool namesState = !isAtRest(namedLevel(verdict)) && verdict.suspect.has_value();
        model.title = toQString(namesState ? verdict.statePhrase() : verdict.headline);
        if (const QString cause = toQString(verdict.cause); cause != model.title)
            model.cause = cause;
    } else {
        model.eyebrow = measuringEyebrow();
        model.title = lookingHeadline();
    }
    if (showsDial(hub)) {
        model.dial = dialFigures(hub);
    } else {
        const FanReading* const fan = hardestWorking(hub.vitals().fans);
        model.rotor = fan != nullptr ? rotorFigures(*fan, hub) : absentRotorFigures();
    }
    model.figures = figures(hub);
    if (measuring == Measuring::looking)
        for (MenuBarPanelModel::Figure& figure : model.figures)
            figure = {.caption = figure.caption, .figure = QStringLiteral("—"), .unit = QString()};
    SuspectsModel suspects = suspectsModel(hub);
    suspects.rows.resize(std::min(suspects.rows.size(), MenuBarPanelModel::mostSuspects));
    model.suspects = std::move(suspects.rows);
    model.cores = suspects.cores;
    if (model.suspects.empty())
        model.noSuspects = suspects.isPending ? tr("first list pending") : suspects.emptyText;
    model.rotorTurns = settings.value(Setting::spinRotors);
    return model;
}

QRect placedPanel(const QSize& size, const QRect& item, const std::optional<QPoint>& pointer, const QRect& available) {
    constexpr int gap = 8;
    QRect panel(QPoint(), size);
    const QRect anchor = item.isValid() ? item : pointer ? QRect(*pointer, QSize(1, 1)) : QRect();
    if (anchor.isValid()) {
        const bool isAtBottom = anchor.center().y() > available.center().y();
        panel.moveLeft(anchor.left() + (anchor.width() - size.width()) / 2);
        if (isAtBottom)
            panel.moveBottom(std::min(anchor.top(), available.bottom() + 1) - gap - 1);
        else
            panel.moveTop(std::max(anchor.bottom() + 1, available.top()) + gap);
    } else {
        panel.moveCenter(available.center());
    }
    // The top left corner comes last: where the panel is larger than the screen, its beginning is seen.
    panel.moveRight(std::min(panel.right(), available.right()));
    panel.moveBottom(std::min(panel.bottom(), available.bottom()));
    panel.moveLeft(std::max(panel.left(), available.left()));
    panel.moveTop(std::max(panel.top(), available.top()));
    return panel;
}

} // namespace vantoro
