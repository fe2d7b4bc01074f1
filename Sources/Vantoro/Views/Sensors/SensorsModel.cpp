#include "Views/Sensors/SensorsModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Now/NowModel.h"
#include "Views/Shared/Words.h"
#include "Views/Timeline/TimelineModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <QStringList>

namespace vantoro {

namespace {

constexpr double shownSeconds = 900;

QString dash() {
    return QStringLiteral("—");
}

/// "41–90°C"; the unit only once, nothing where both ends read the same.
QString rangeText(const QString& lowest, const QString& highest, const QString& unit) {
    return lowest == highest ? QString() : lowest + QStringLiteral("–") + highest + unit;
}

QString watts(double value) {
    return QString::number(value, 'f', 1);
}

QString temperatureRange(const std::optional<Span>& span, const Format& format) {
    if (!span)
        return {};
    const QString lowest = toQString(format.degrees(span->lowest));
    const QString highest = toQString(format.temperature(span->highest));
    const QString degrees = toQString(format.degrees(span->highest));
    return lowest == degrees ? QString() : lowest.chopped(1) + QStringLiteral("–") + highest;
}

QString powerRange(const std::optional<Span>& span) {
    return span ? rangeText(watts(span->lowest), watts(span->highest), tr(" W")) : QString();
}

/// To the peak in whole tens of watts, and never less than 10.
double graphicsCeiling(const std::vector<TimePoint>& points) {
    double peak = 0;
    for (const TimePoint& point : points)
        peak = std::max(peak, point.value);
    return std::max(10.0, std::ceil(peak / 10) * 10);
}

template <class Figure>
SparklineLine course(const SensorHub& hub, double least, double most, Figure figure) {
    SparklineLine line;
    line.points = thinnedSeries(hub.history(), figure);
    line.least = least;
    line.most = most;
    line.to = hub.snapshot().timestamp;
    line.from = line.to - shownSeconds;
    return line;
}

/// The texts that follow from the row's figures. `explanation` is for a source that the row itself does not name.
void finish(SensorRowModel& row, const QString& explanation) {
    if (row.isMissing) {
        row.value = dash();
        row.line = {};
    }
    QStringList about{row.source.isEmpty() ? explanation : row.source};
    if (!row.range.isEmpty())
        about.append(tr("lowest and highest since launch: %1").arg(row.range));
    row.toolTip = about.join('\n');
    row.spokenValue = (QStringList{row.value} + about).join(", ");
}

QString trUnlessEmpty(const char* text) {
    return *text != '\0' ? tr(text) : QString();
}

// The table of temperatures knows no translations: these are its texts, for whoever extracts them.
[[maybe_unused]] constexpr const char* temperatureTexts[] = {
    QT_TRANSLATE_NOOP("vantoro", "Hottest core"), QT_TRANSLATE_NOOP("vantoro", "hottest die sensor"),
    QT_TRANSLATE_NOOP("vantoro", "Whole chip"),   QT_TRANSLATE_NOOP("vantoro", "mean of the die sensors"),
    QT_TRANSLATE_NOOP("vantoro", "GPU"),          QT_TRANSLATE_NOOP("vantoro", "hottest graphics sensor"),
    QT_TRANSLATE_NOOP("vantoro", "Battery"),      QT_TRANSLATE_NOOP("vantoro", "mean of the battery sensors"),
    QT_TRANSLATE_NOOP("vantoro", "Enclosure"),    QT_TRANSLATE_NOOP("vantoro", "mean of the enclosure sensors"),
};

SensorRowModel temperatureRow(const SensorHub& hub, std::size_t place) {
    const TemperatureFigure& figure = temperatureFigures.at(place);
    const double celsius = hub.vitals().temps.*figure.celsius;
    SensorRowModel row;
    row.label = tr(figure.label);
    row.source = trUnlessEmpty(figure.source);
    row.range = temperatureRange(hub.extremes().temps.at(place), hub.format());
    row.value = toQString(hub.format().temperature(celsius));
    row.isMissing = !(celsius > 0);
    row.line = course(hub, figure.least, figure.most,
                      [&figure](const Snapshot& snapshot) { return snapshot.temps.*figure.celsius; });
    row.isShown = hub.words().isMac() || !row.isMissing || hub.extremes().temps.at(place);
    finish(row, trUnlessEmpty(figure.explanation));
    return row;
}

void unfold(SensorRowModel& row, bool isExpanded, const std::vector<double>& sensors, bool areSilent,
            const Format& format) {
    row.isExpandable = true;
    row.isExpanded = isExpanded;
    if (!isExpanded)
        return;
    if (sensors.empty())
        row.sensorsTitle = areSilent ? tr("None of its sensors measures at the moment.") : tr("Measuring…");
    else
        row.sensorsTitle =
            sensors.size() == 1 ? tr("1 sensor") : tr("%1 sensors, coolest to hottest").arg(sensors.size());
    for (const double celsius : sensors)
        row.sensors.append(toQString(format.degrees(celsius)));
}

double processorWatts(const PowerReading& power) {
    return power.cpuWatts.value_or(0);
}

struct PowerKind {
    const char* label;
    /// On a Mac; anywhere else.
    const char* source;
    const char* sourceElsewhere;
    std::function<double(const PowerReading&)> figure;
    std::optional<Span> Extremes::*span;
    double (*ceiling)(const std::vector<TimePoint>&);
};

const std::array<PowerKind, SensorsModel::powerRows>& powerKinds() {
    static const std::array<PowerKind, SensorsModel::powerRows> kinds{{
        {QT_TRANSLATE_NOOP("vantoro", "System"), QT_TRANSLATE_NOOP("vantoro", "whole-machine draw"),
         "whole-machine draw", &PowerReading::systemWatts, &Extremes::systemWatts, powerCeiling},
        {QT_TRANSLATE_NOOP("vantoro", "Adapter"), QT_TRANSLATE_NOOP("vantoro", "coming in from the charger"),
         QT_TRANSLATE_NOOP("vantoro", "coming in from the power supply"), &PowerReading::adapterWatts,
         &Extremes::adapterWatts, powerCeiling},
        {QT_TRANSLATE_NOOP("vantoro", "Battery"), QT_TRANSLATE_NOOP("vantoro", "charge or discharge"),
         "charge or discharge", &PowerReading::batteryWatts, &Extremes::batteryWatts, powerCeiling},
        {QT_TRANSLATE_NOOP("vantoro", "GPU"),
         QT_TRANSLATE_NOOP("vantoro", "IOReport's cumulative energy counter, differentiated over time."),
         QT_TRANSLATE_NOOP("vantoro", "the graphics processor's own meter or energy counter"), &PowerReading::gpuWatts,
         &Extremes::gpuWatts, graphicsCeiling},
        {QT_TRANSLATE_NOOP("vantoro", "Processors"), "",
         QT_TRANSLATE_NOOP("vantoro", "the processors' energy counters"), processorWatts, &Extremes::cpuWatts,
         powerCeiling},
    }};
    return kinds;
}

SensorRowModel powerRow(const SensorHub& hub, const PowerKind& kind) {
    SensorRowModel row;
    row.label = tr(kind.label);
    const bool isMac = hub.words().isMac();
    row.source = trUnlessEmpty(isMac ? kind.source : kind.sourceElsewhere);
    row.range = powerRange(hub.extremes().*kind.span);
    row.value = tr("%1 W").arg(watts(kind.figure(hub.vitals().power)));
    // A small draw may be rounded to 0.0 and is a reading all the same.
    row.isMissing = kind.figure(hub.snapshot().power) == 0;
    row.isShown = isMac ? *kind.source != '\0' : !row.isMissing || hub.extremes().*kind.span;
    row.line = course(hub, 0, 0, [&kind](const Snapshot& snapshot) { return kind.figure(snapshot.power); });
    row.line.most = kind.ceiling(row.line.points);
    finish(row, {});
    return row;
}

/// A stall of this name as it stands beside the others.
SensorRowModel waitingRow(const SensorHub& hub, const char* label, std::optional<double> StallShares::*stall) {
    const std::optional<double> share = hub.snapshot().stalls.*stall;
    SensorRowModel row{.label = tr(label), .isMissing = !share, .isShown = share.has_value()};
    row.value = toQString(DiagnosisEngine::pct(share.value_or(0)));
    row.line = course(hub, 0, 40, [stall](const Snapshot& snapshot) { return (snapshot.stalls.*stall).value_or(-1); });
    row.line.countsZero = true;
    for (const TimePoint& point : row.line.points)
        row.line.most = std::max(row.line.most, std::ceil(point.value / 10) * 10);
    finish(row, tr("share of the last 10 seconds in which some work had to wait"));
    return row;
}

QString slowedBy(const std::vector<ThrottleReason>& reasons) {
    static constexpr std::array<const char*, 5> names{
        QT_TRANSLATE_NOOP("vantoro", "temperature"), QT_TRANSLATE_NOOP("vantoro", "power limit"),
        QT_TRANSLATE_NOOP("vantoro", "current limit"), QT_TRANSLATE_NOOP("vantoro", "firmware"),
        QT_TRANSLATE_NOOP("vantoro", "power profile")};
    QStringList texts;
    for (const ThrottleReason reason : reasons)
        texts.append(tr(names.at(static_cast<std::size_t>(reason))));
    return texts.isEmpty() ? tr("nothing") : texts.join(", ");
}

bool knowsLimits(const FanReading& fan) {
    return fan.maxRPM - fan.minRPM > 1;
}

QString fansNote(const std::vector<FanReading>& fans) {
    const QString note = fanReachNote(fans);
    return note.isEmpty() && std::ranges::any_of(fans, &FanReading::hasLearnedLimits) ? tr("limits learned by watching")
                                                                                      : note;
}

FanRowModel fanRow(const SensorHub& hub, const FanReading& fan) {
    const auto speed = [&hub](double rpm) { return toQString(hub.format().rpm(rpm)); };
    FanRowModel row{.label = toQString(fan.label(hub.words().kind)), .speed = speed(fan.rpm), .unit = tr("rpm")};
    const auto span = hub.extremes().fans.find(fan.index);
    if (span != hub.extremes().fans.end())
        row.range = rangeText(speed(span->second.lowest), speed(span->second.highest), {});
    const double width = fan.maxRPM - fan.minRPM;
    const bool hasLimits = knowsLimits(fan);
    row.showsGauge = hasLimits || hub.words().isMac();
    const auto position = [&](double rpm) { return std::clamp((rpm - fan.minRPM) / width, 0.0, 1.0); };
    QStringList spoken{tr("%1 rpm").arg(row.speed)};
    if (row.showsGauge) {
        row.floorText = tr("floor %1").arg(hasLimits ? speed(fan.minRPM) : dash());
        row.targetText = tr("target %1").arg(speed(fan.targetRPM));
        row.ceilingText = tr("ceiling %1").arg(hasLimits ? speed(fan.maxRPM) : dash());
        spoken += {row.floorText, row.targetText, row.ceilingText};
    }
    if (hasLimits) {
        row.position = position(fan.rpm);
        row.target = position(fan.targetRPM);
        row.heatStop = static_cast<int>(DiagnosisEngine::stressLevel(*row.position));
    }
    if (!row.range.isEmpty())
        spoken.append(tr("lowest and highest since launch: %1").arg(row.range));
    row.spokenValue = spoken.join(", ");
    return row;
}

/// Of a Mac while it is judged by them; of any other machine whatever turns.
bool showsFans(const SensorHub& hub) {
    if (!hub.words().isMac())
        return !hub.vitals().fans.empty();
    // A fan that was never seen is none, whatever the machine is taken for.
    return hub.cooling() == Cooling::fans && (!hub.isReady() || !hub.extremes().fans.empty());
}

/// What is missing as a whole is said once.
QString complaint(const SensorHub& hub, const SensorsModel& model) {
    if (hub.words().isMac() && !hub.sensorsAvailable())
        return tr("The sensors could not be read.");
    if (!hub.isReady())
        return {};
    const bool hasPower = SensorsModel::anyShown(model.power);
    if (hub.words().isMac() ? hub.extremes() == Extremes()
                            : !model.fans && !SensorsModel::anyShown(model.temperatures) && !hasPower)
        return tr("This computer reports no temperatures, fans or power.");
    return !hub.words().isMac() && !model.fans && !SensorsModel::anyShown(model.temperatures)
               ? tr("This computer reports no temperatures or fans.")
               : QString();
}

std::vector<FanRowModel> fanRows(const SensorHub& hub) {
    std::vector<FanRowModel> rows;
    for (const FanReading& fan : hub.vitals().fans)
        rows.push_back(fanRow(hub, fan));
    if (rows.empty())
        rows.push_back({.label = tr("Fan"), .speed = dash(), .spokenValue = dash()});
    return rows;
}

void finish(LegendModel& legend) {
    QStringList spoken;
    for (LegendEntry& entry : legend.entries) {
        entry.isMissing = entry.value == dash();
        spoken.append(entry.label + u' ' + entry.value);
    }
    legend.spokenValue = spoken.join(", ");
}

LegendModel processorLegend(const SensorHub& hub) {
    const CPULoad& cpu = hub.vitals().cpu;
    const bool isKnown = hub.hasProcessFigures();
    const auto part = [isKnown](const QString& label, double percent) {
        return LegendEntry{label, isKnown ? toQString(DiagnosisEngine::pct(percent)) : dash(),
                           isKnown ? std::clamp(percent / 100, 0.0, 1.0) : 0};
    };
    LegendModel legend;
    if (isKnown)
        legend.figure =
            tr("%1 busy").arg(toQString(DiagnosisEngine::pct(DiagnosisEngine::busyPercent(hub.snapshot().cpu))));
    legend.entries = {part(tr("Apps"), cpu.userPercent),
                      part(tr("System"), cpu.systemPercent),
                      part(tr("Idle"), cpu.idlePercent),
                      {tr("Load average"), isKnown ? QString::number(cpu.loadAverage, 'f', 1) : dash(), std::nullopt}};
    if (const auto busy = hub.snapshot().gpuPercent)
        legend.entries.push_back({tr("Graphics processor"), toQString(DiagnosisEngine::pct(*busy)), std::nullopt});
    if (const auto& throttle = hub.snapshot().throttle)
        legend.entries.push_back({tr("Slowed down by"), slowedBy(*throttle), std::nullopt});
    finish(legend);
    return legend;
}

LegendModel memoryLegend(const SensorHub& hub) {
    const MemoryLoad& memory = hub.vitals().memory;
    const bool isKnown = memory.totalBytes > 0;
    const auto bytes = [isKnown](std::uint64_t count) { return isKnown ? toQString(Format::bytes(count)) : dash(); };
    const auto part = [&](const QString& label, std::uint64_t count) {
        const double share = isKnown ? static_cast<double>(count) / static_cast<double>(memory.totalBytes) : 0;
        return LegendEntry{label, bytes(count), std::clamp(share, 0.0, 1.0)};
    };
    const std::uint64_t named = memory.wiredBytes + memory.compressedBytes;
    // The figures come from several counters, read one after the other: they need not add up.
    const std::uint64_t used = std::max(std::min(memory.usedBytes, memory.totalBytes), named);
    const std::uint64_t other = used - named;
    const std::uint64_t unused = memory.totalBytes > used ? memory.totalBytes - used : 0;
    LegendModel legend;
    if (isKnown)
        legend.figure =
            tr("%1 pressure").arg(toQString(DiagnosisEngine::pct(DiagnosisEngine::memoryPressure(memory) * 100)));
    const QString swapped = toQString(hub.format().rpm(static_cast<double>(memory.swapOutEvents)));
    legend.entries = {part(tr("Wired"), memory.wiredBytes),
                      part(tr("Compressed"), memory.compressedBytes),
                      part(tr("Other in use"), other),
                      part(tr("Unused"), unused),
                      {tr("Total"), bytes(memory.totalBytes), std::nullopt},
                      {tr("Pages swapped out"), isKnown ? swapped : dash(), std::nullopt}};
    // A Linux kernel that tells none has none, or does not count it.
    const bool tellsNone = isKnown && !hub.words().isMac();
    if (tellsNone && memory.compressedBytes == 0)
        legend.entries.erase(legend.entries.begin() + 1);
    if (tellsNone && memory.wiredBytes == 0)
        legend.entries.erase(legend.entries.begin());
    if (memory.availableBytes)
        legend.entries.push_back({tr("Available"), bytes(*memory.availableBytes), std::nullopt});
    finish(legend);
    return legend;
}

} // namespace

bool SensorsModel::anyShown(const std::vector<SensorRowModel>& rows) {
    return std::ranges::any_of(rows, &SensorRowModel::isShown);
}

SensorsModel sensorsModel(const SensorHub& hub, const SourceNames& names, const UnfoldedRows& unfolded) {
    SensorsModel model;
    model.machineName = toQString(hub.machineName());
    model.summary = toQString(hub.sensorSummary());
    model.dataSources = vantoro::dataSources(hub, names);
    if (showsFans(hub))
        model.fans = fanRows(hub);
    if (model.fans && !hub.words().isMac())
        model.fansNote = fansNote(hub.vitals().fans);
    for (std::size_t place = 0; place < temperatureFigures.size(); ++place) {
        SensorRowModel& row = model.temperatures.emplace_back(temperatureRow(hub, place));
        const SensorFamily family = temperatureFigures.at(place).family;
        if (family == SensorFamily::chip && hub.hasDieSensors())
            unfold(row, unfolded[place], hub.dieSensors(), hub.dieSensorsAreSilent(), hub.format());
        else if (family == SensorFamily::graphics && hub.hasGPUSensors())
            unfold(row, unfolded[place], hub.gpuSensors(), hub.gpuSensorsAreSilent(), hub.format());
    }
    if (hub.words().isMac() || hub.cooling() != Cooling::load)
        model.pressure = hub.vitals().thermalPressure;
    for (const PowerKind& kind : powerKinds())
        model.power.push_back(powerRow(hub, kind));
    model.waiting = {waitingRow(hub, QT_TRANSLATE_NOOP("vantoro", "For memory"), &StallShares::memory),
                     waitingRow(hub, QT_TRANSLATE_NOOP("vantoro", "For the disk"), &StallShares::io),
                     waitingRow(hub, QT_TRANSLATE_NOOP("vantoro", "For the processors"), &StallShares::cpu)};
    model.complaint = complaint(hub, model);
    model.processor = processorLegend(hub);
    model.memory = memoryLegend(hub);
    return model;
}

} // namespace vantoro
