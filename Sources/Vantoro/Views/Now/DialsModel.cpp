#include "Views/Now/DialsModel.h"

#include "Views/Shared/EyebrowModel.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

namespace {

/// How fast the wheel of a fan is drawn to turn: twice a second at its ceiling.
double turnsPerSecond(const FanReading& fan) {
    constexpr double fastest = 2;
    return fan.maxRPM > 0 && fan.rpm > 0 ? std::min(fastest, fastest * fan.rpm / fan.maxRPM) : 0;
}

QString spokenFan(const FanReading& fan) {
    const QString label = toQString(fan.label());
    return fan.index <= 1 ? tr("%1 fan").arg(label) : label;
}

} // namespace

std::optional<double> fanPosition(const FanReading& fan) {
    const double span = fan.maxRPM - fan.minRPM;
    if (!(span > 1))
        return std::nullopt;
    return std::clamp((fan.rpm - fan.minRPM) / span, 0.0, 1.0);
}

FanRotorFigures rotorFigures(const FanReading& fan, int heatStop, const Format& format) {
    FanRotorFigures figures;
    figures.figure = toQString(format.rpm(fan.rpm));
    figures.unit = tr("rpm");
    figures.label = toQString(fan.label());
    figures.caption = figures.label;
    figures.position = fanPosition(fan);
    figures.heatStop = heatStop;
    figures.turnsPerSecond = turnsPerSecond(fan);
    figures.spokenName = spokenFan(fan);
    figures.spokenValue = tr("%1 rpm").arg(figures.figure);
    if (figures.position) {
        const QString percent = QString::number(std::lround(*figures.position * 100));
        figures.caption += QStringLiteral(" · ") + tr("%1%").arg(percent);
        figures.spokenValue = tr("%1 rpm, %2 percent of its range").arg(figures.figure, percent);
    }
    return figures;
}

FanRotorFigures absentRotorFigures() {
    FanRotorFigures figures;
    figures.figure = QStringLiteral("—");
    figures.spokenName = tr("Fan");
    figures.spokenValue = tr("no reading");
    return figures;
}

FanRotorFigures withoutVerdict(FanRotorFigures figures) {
    figures.position.reset();
    figures.heatStop = 0;
    return figures;
}

bool hasNothingForDials(const SensorHub& hub) {
    if (hub.measuring() == Measuring::done)
        return false;
    const Temperatures& temps = hub.vitals().temps;
    return hub.cooling() == Cooling::passive ? !(temps.socMean > 0 || temps.soc > 0) : hub.vitals().fans.empty();
}

ThermalDialFigures thermalDialFigures(const SensorHub& hub) {
    if (hasNothingForDials(hub))
        return {.figure = QStringLiteral("—"),
                .smallFigure = QStringLiteral("—"),
                .isEmpty = true,
                .spokenName = tr("Measuring"),
                .spokenValue = tr("no reading")};
    const bool isMeasuring = hub.measuring() != Measuring::done;
    const Snapshot& snapshot = hub.snapshot();
    const Temperatures& temps = hub.vitals().temps;
    const Format& format = hub.format();
    ThermalDialFigures figures;
    const QString whole = toQString(format.temperature(temps.socMean));
    figures.smallFigure = toQString(format.degrees(temps.socMean));
    figures.figure = figures.smallFigure;
    figures.figure.remove(u'°');
    figures.unit = whole.mid(figures.figure.size());
    figures.caption = tr("whole chip");
    if (snapshot.chipHeat > 0 && !isMeasuring)
        figures.position = Snapshot::heatLoad(snapshot.chipHeat);
    figures.heatStop = isMeasuring ? 0 : verdictHeatStop(hub.verdict());
    figures.spokenName = tr("Chip heat");
    QStringList spoken{isMeasuring ? tr("Measuring") : toQString(hub.verdict().stateLabel())};
    if (temps.socMean > 0)
        spoken.append(tr("whole chip %1").arg(whole));
    if (temps.soc > 0) {
        figures.gapCaption = tr("hottest core");
        figures.gapFigure = toQString(format.temperature(temps.soc));
        spoken.append(tr("hottest core %1").arg(figures.gapFigure));
    }
    figures.spokenValue = spoken.join(QStringLiteral(", "));
    return figures;
}

DialsModel dialsModel(const SensorHub& hub) {
    DialsModel model;
    if (hub.cooling() == Cooling::passive || hasNothingForDials(hub)) {
        model.dial = thermalDialFigures(hub);
        return model;
    }
    const Vitals& vitals = hub.vitals();
    const int stop = verdictHeatStop(hub.verdict());
    for (const FanReading& fan : vitals.fans)
        model.rotors.push_back(hub.measuring() == Measuring::done
                                   ? rotorFigures(fan, stop, hub.format())
                                   : withoutVerdict(rotorFigures(fan, stop, hub.format())));
    if (model.rotors.empty())
        model.rotors.push_back(absentRotorFigures());
    if (model.showsSmallRotors()) {
        model.peakFigure = toQString(hub.format().rpm(vitals.peakRPM()));
        model.peakUnit = tr("rpm peak");
    }
    return model;
}

} // namespace vantoro
