#include "Views/MenuBar/MenuBarPanelModel.h"

#include "Views/Now/HeroModel.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

namespace {

QString watts(double power) {
    return power > 0 ? tr("%1 W").arg(std::lround(power)) : QStringLiteral("—");
}

const FanReading* hardestWorking(const std::vector<FanReading>& fans) {
    const auto hardest = std::max_element(fans.begin(), fans.end(), [](const FanReading& one, const FanReading& other) {
        return fanPosition(one).value_or(0) < fanPosition(other).value_or(0);
    });
    return hardest == fans.end() ? nullptr : &*hardest;
}

std::vector<MenuBarPanelModel::Figure> figures(const SensorHub& hub) {
    const Vitals& vitals = hub.vitals();
    const Format& format = hub.format();
    const auto temperature = [&format](double celsius) { return toQString(format.temperature(celsius)); };
    if (hub.cooling() == Cooling::passive)
        return {{.caption = tr("Whole chip"), .figure = temperature(vitals.temps.socMean)},
                {.caption = tr("Hottest core"), .figure = temperature(vitals.temps.soc)},
                {.caption = tr("Power"), .figure = watts(vitals.power.systemWatts)}};
    const bool hasFans = !vitals.fans.empty();
    return {{.caption = tr("Fans"),
             .figure = hasFans ? toQString(format.rpm(vitals.peakRPM())) : QStringLiteral("—"),
             .unit = hasFans ? tr("rpm") : QString()},
            {.caption = tr("Chip"), .figure = temperature(vitals.temps.soc)},
            {.caption = tr("Power"), .figure = watts(vitals.power.systemWatts)}};
}

} // namespace

MenuBarPanelModel menuBarPanelModel(const SensorHub& hub, const Settings& settings) {
    const Verdict& verdict = hub.verdict();
    const Measuring measuring = hub.measuring();
    MenuBarPanelModel model;
    if (measuring == Measuring::done) {
        model.eyebrow = eyebrowModel(verdict);
        model.eyebrow.duration.clear();
        const bool namesState = !isAtRest(verdict.state) && verdict.suspect.has_value();
        model.title = toQString(namesState ? verdict.statePhrase() : std::string_view(verdict.headline));
        if (const QString cause = toQString(verdict.cause); cause != model.title)
            model.cause = cause;
    } else {
        model.eyebrow = measuringEyebrow();
        model.title = lookingHeadline();
    }
    if (hub.cooling() == Cooling::passive || hasNothingForDials(hub)) {
        model.dial = thermalDialFigures(hub);
    } else {
        const FanReading* const fan = hardestWorking(hub.vitals().fans);
        model.rotor =
            fan != nullptr ? rotorFigures(*fan, verdictHeatStop(verdict), hub.format()) : absentRotorFigures();
        if (measuring != Measuring::done)
            model.rotor = withoutVerdict(*model.rotor);
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
