#include "Views/Now/DialsModel.h"

#include "Model/Diagnosis/Diagnosis.h"
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

QString nameOf(const FanReading& fan, const SensorHub& hub) {
    return toQString(fan.label(hub.words().kind));
}

QString spokenFan(const FanReading& fan, const SensorHub& hub) {
    const QString label = nameOf(fan, hub);
    return hub.words().isMac() && fan.name.empty() && fan.index <= 1 ? tr("%1 fan").arg(label) : label;
}

QString emDash() {
    return QStringLiteral("—");
}

} // namespace

std::optional<double> fanPosition(const FanReading& fan) {
    const double span = fan.maxRPM - fan.minRPM;
    if (!(span > 1))
        return std::nullopt;
    return std::clamp((fan.rpm - fan.minRPM) / span, 0.0, 1.0);
}

QString fanReachNote(const std::vector<FanReading>& fans) {
    const auto learning = std::ranges::count_if(fans, &FanReading::learnsLimits);
    const auto unknown = std::ranges::count_if(
        fans, [](const FanReading& fan) { return !fanPosition(fan).has_value() && !fan.learnsLimits; });
    if (learning > 0)
        return unknown == 0   ? tr("limits are learned within a day")
               : unknown == 1 ? tr("limits are learned within a day; what another can reach is not known")
                              : tr("limits are learned within a day; what others can reach is not known");
    if (unknown == 0 || unknown < std::ssize(fans))
        return {};
    return unknown == 1 ? tr("what it can reach is not known") : tr("what they can reach is not known");
}

FanRotorFigures rotorFigures(const FanReading& fan, const SensorHub& hub) {
    const bool isMeasuring = hub.measuring() != Measuring::done;
    FanRotorFigures figures;
    figures.figure = toQString(hub.format().rpm(fan.rpm));
    figures.unit = tr("rpm");
    figures.label = nameOf(fan, hub);
    figures.caption = figures.label;
    figures.position = fanPosition(fan);
    figures.heatStop = isMeasuring ? 0 : dialHeatStop(hub.verdict());
    figures.turnsPerSecond = turnsPerSecond(fan);
    figures.spokenName = spokenFan(fan, hub);
    figures.spokenValue = tr("%1 rpm").arg(figures.figure);
    if (figures.position) {
        const QString percent = QString::number(std::lround(*figures.position * 100));
        figures.caption += QStringLiteral(" · ") + tr("%1%").arg(percent);
        figures.spokenValue = tr("%1 rpm, %2 percent of its range").arg(figures.figure, percent);
    }
    // The speed alone, and nothing in a colour.
    if (isMeasuring)
        figures.position.reset();
    return figures;
}

FanRotorFigures absentRotorFigures() {
    FanRotorFigures figures;
    figures.figure = emDash();
    figures.spokenName = tr("Fan");
    figures.spokenValue = tr("no reading");
    return figures;
}

namespace {

/// Whether nothing has been found yet that a dial could show.
bool hasNothingForDials(const SensorHub& hub) {
    if (hub.measuring() == Measuring::done)
        return false;
    const Vitals& vitals = hub.vitals();
    switch (hub.cooling()) {
    case Cooling::fans:
        return vitals.fans.empty();
    case Cooling::passive:
    case Cooling::heat:
        return !(vitals.temps.socMean > 0 || vitals.temps.soc > 0);
    case Cooling::load:
        break;
    }
    return true;
}

ThermalDialFigures thermalFigures(const SensorHub& hub) {
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
    figures.heatStop = isMeasuring ? 0 : dialHeatStop(hub.verdict());
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

int coreCount(const SensorHub& hub) {
    const std::optional<RecordedProcessors> processors = hub.processors();
    return processors ? processors->performance + processors->efficiency : static_cast<int>(hub.cores().size());
}

ThermalDialFigures busyFigures(const SensorHub& hub) {
    const int percent = busyPercent(hub).value_or(0);
    const int cores = coreCount(hub);
    ThermalDialFigures figures;
    figures.figure = QString::number(percent);
    figures.unit = tr("%");
    figures.caption = cores > 1 ? tr("of %1 cores").arg(cores) : cores == 1 ? tr("of 1 core") : tr("busy");
    figures.smallFigure = percentText(percent);
    figures.position = hub.verdict().load;
    figures.heatStop = dialHeatStop(hub.verdict());
    figures.spokenName = tr("Busy share");
    QStringList spoken{toQString(hub.verdict().stateLabel()), tr("%1 percent %2").arg(percent).arg(figures.caption)};
    if (cores > 1 && !hub.cores().empty() && hub.coresAreMeasured()) {
        const long busiest = std::lround(100 * std::ranges::max_element(hub.cores(), {}, &Core::busy)->busy);
        figures.gapCaption = tr("busiest core");
        figures.gapFigure = tr("%1%").arg(busiest);
        spoken.append(tr("busiest core %1 percent").arg(busiest));
    }
    figures.spokenValue = spoken.join(QStringLiteral(", "));
    return figures;
}

/// On a Mac every fan has its rotor, limits or not.
bool hasRotor(const FanReading& fan, const SensorHub& hub) {
    return hub.words().isMac() || fanPosition(fan).has_value();
}

FanListModel fanList(const SensorHub& hub) {
    const std::vector<FanReading>& fans = hub.vitals().fans;
    FanListModel model{.title = tr("Fans"), .unit = tr("rpm"), .rows = {}, .foot = fanReachNote(fans)};
    const std::size_t shown = fans.size() > FanListModel::mostRows ? FanListModel::mostRows - 1 : fans.size();
    for (std::size_t i = 0; i < shown; ++i) {
        const QString name = nameOf(fans[i], hub);
        const QString speed = toQString(hub.format().rpm(fans[i].rpm));
        model.rows.push_back({name, speed, tr("%1, %2 rpm").arg(name, speed)});
    }
    if (shown < fans.size()) {
        const QString more = tr("%1 more").arg(fans.size() - shown);
        model.rows.push_back({more, QString(), more});
    }
    return model;
}

} // namespace

bool showsDial(const SensorHub& hub) {
    return hub.cooling() != Cooling::fans || hasNothingForDials(hub);
}

ThermalDialFigures dialFigures(const SensorHub& hub) {
    const bool isUnknown = hub.cooling() == Cooling::load && !busyPercent(hub);
    if (hasNothingForDials(hub) || isUnknown)
        return {.figure = emDash(),
                .smallFigure = emDash(),
                .isEmpty = true,
                .spokenName = isUnknown ? tr("Busy share") : tr("Measuring"),
                .spokenValue = tr("no reading")};
    return hub.cooling() == Cooling::load ? busyFigures(hub) : thermalFigures(hub);
}

std::optional<int> busyPercent(const SensorHub& hub) {
    if (hub.measuring() != Measuring::done || !hub.hasProcessFigures())
        return std::nullopt;
    return static_cast<int>(std::clamp(DiagnosisEngine::busyPercent(hub.snapshot().cpu), 0.0, 100.0));
}

QString percentText(std::optional<int> percent) {
    return percent ? tr("%1%").arg(*percent) : emDash();
}

QString fanLine(const SensorHub& hub) {
    if (hub.cooling() != Cooling::heat && hub.cooling() != Cooling::fans)
        return {};
    const bool isBesideRotors = hub.cooling() == Cooling::fans;
    QStringList speeds;
    for (const FanReading& fan : hub.vitals().fans)
        if (const QString speed = toQString(hub.format().rpm(fan.rpm)); !isBesideRotors)
            speeds += speed;
        else if (!hasRotor(fan, hub))
            speeds += nameOf(fan, hub) + u' ' + speed;
    if (speeds.isEmpty())
        return {};
    return (isBesideRotors ? tr("%1 rpm") : tr("Fans %1 rpm")).arg(speeds.join(QStringLiteral(" · ")));
}

DialsModel dialsModel(const SensorHub& hub) {
    DialsModel model;
    const Vitals& vitals = hub.vitals();
    if (showsDial(hub)) {
        model.dial = dialFigures(hub);
        if (hub.cooling() == Cooling::heat && !vitals.fans.empty())
            model.fans = fanList(hub);
        return model;
    }
    for (const FanReading& fan : vitals.fans)
        if (hasRotor(fan, hub))
            model.rotors.push_back(rotorFigures(fan, hub));
    if (model.rotors.empty())
        model.rotors.push_back(absentRotorFigures());
    if (model.showsSmallRotors()) {
        model.peakFigure = toQString(hub.format().rpm(vitals.peakRPM()));
        model.peakUnit = tr("rpm peak");
    }
    return model;
}

} // namespace vantoro
