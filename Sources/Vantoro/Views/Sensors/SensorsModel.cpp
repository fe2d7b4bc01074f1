#include "Views/Sensors/SensorsModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Now/NowModel.h"
#include "Views/Shared/Words.h"
#include "Views/Timeline/TimelineModel.h"

#include <algorithm>
#include <cmath>
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

struct PowerKind {
    const char* label;
    const char* source;
    double PowerReading::*figure;
    std::optional<Span> Extremes::*span;
    double (*ceiling)(const std::vector<TimePoint>&);
};

constexpr PowerKind powerKinds[] = {
    {QT_TRANSLATE_NOOP("vantoro", "System"), QT_TRANSLATE_NOOP("vantoro", "whole-machine draw"),
     &PowerReading::systemWatts, &Extremes::systemWatts, powerCeiling},
    {QT_TRANSLATE_NOOP("vantoro", "Adapter"), QT_TRANSLATE_NOOP("vantoro", "coming in from the charger"),
     &PowerReading::adapterWatts, &Extremes::adapterWatts, powerCeiling},
    {QT_TRANSLATE_NOOP("vantoro", "Battery"), QT_TRANSLATE_NOOP("vantoro", "charge or discharge"),
     &PowerReading::batteryWatts, &Extremes::batteryWatts, powerCeiling},
    {QT_TRANSLATE_NOOP("vantoro", "GPU"),
     QT_TRANSLATE_NOOP("vantoro", "IOReport's cumulative energy counter, differentiated over time."),
     &PowerReading::gpuWatts, &Extremes::gpuWatts, graphicsCeiling},
};

SensorRowModel powerRow(const SensorHub& hub, const PowerKind& kind) {
    SensorRowModel row;
    row.label = tr(kind.label);
    row.source = tr(kind.source);
    row.range = powerRange(hub.extremes().*kind.span);
    row.value = tr("%1 W").arg(watts(hub.vitals().power.*kind.figure));
    // A small draw may be rounded to 0.0 and is a reading all the same.
    row.isMissing = hub.snapshot().power.*kind.figure == 0;
    row.line = course(hub, 0, 0, [&kind](const Snapshot& snapshot) { return snapshot.power.*kind.figure; });
    row.line.most = kind.ceiling(row.line.points);
    finish(row, {});
    return row;
}

FanRowModel fanRow(const SensorHub& hub, const FanReading& fan) {
    const auto speed = [&hub](double rpm) { return toQString(hub.format().rpm(rpm)); };
    FanRowModel row{.label = toQString(fan.label()), .speed = speed(fan.rpm), .unit = tr("rpm")};
    const auto span = hub.extremes().fans.find(fan.index);
    if (span != hub.extremes().fans.end())
        row.range = rangeText(speed(span->second.lowest), speed(span->second.highest), {});
    const double width = fan.maxRPM - fan.minRPM;
    const bool knowsLimits = width > 1;
    const auto position = [&](double rpm) { return std::clamp((rpm - fan.minRPM) / width, 0.0, 1.0); };
    row.floorText = tr("floor %1").arg(knowsLimits ? speed(fan.minRPM) : dash());
    row.targetText = tr("target %1").arg(speed(fan.targetRPM));
    row.ceilingText = tr("ceiling %1").arg(knowsLimits ? speed(fan.maxRPM) : dash());
    QStringList spoken{tr("%1 rpm").arg(row.speed)};
    if (knowsLimits) {
        row.position = position(fan.rpm);
        row.target = position(fan.targetRPM);
        row.heatStop = static_cast<int>(DiagnosisEngine::stressLevel(*row.position));
    }
    spoken += {row.floorText, row.targetText, row.ceilingText};
    if (!row.range.isEmpty())
        spoken.append(tr("lowest and highest since launch: %1").arg(row.range));
    row.spokenValue = spoken.join(", ");
    return row;
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
    finish(legend);
    return legend;
}

/// Rows of cells, set in columns.
class Table {
public:
    explicit Table(const QString& title) : title_(title) {}

    void add(const QStringList& cells) { rows_.push_back(cells); }

    QString text() const {
        std::vector<qsizetype> widths;
        for (const QStringList& row : rows_) {
            // A line of a single cell runs across the columns.
            if (row.size() == 1)
                continue;
            widths.resize(std::max(widths.size(), static_cast<std::size_t>(row.size())));
            for (qsizetype i = 0; i < row.size(); ++i)
                widths[static_cast<std::size_t>(i)] = std::max(widths[static_cast<std::size_t>(i)], row[i].size());
        }
        QString text = title_ + u'\n';
        for (const QStringList& row : rows_) {
            QString line;
            for (qsizetype i = 0; i < row.size(); ++i)
                line += QStringLiteral("  ") +
                        row[i].leftJustified(row.size() > 1 ? widths[static_cast<std::size_t>(i)] : 0);
            while (line.endsWith(u' '))
                line.chop(1);
            text += line + u'\n';
        }
        return text;
    }

private:
    QString title_;
    std::vector<QStringList> rows_;
};

void add(Table& table, const SensorRowModel& row) {
    table.add({row.label, row.value, row.range, row.source});
    if (row.isExpanded)
        table.add({QStringLiteral("  ") + row.sensorsTitle + (row.sensors.isEmpty() ? QString() : tr(": ")) +
                   row.sensors.join(u' ')});
}

QString legendText(const QString& title, const LegendModel& legend) {
    Table table(legend.figure.isEmpty() ? title : title + QStringLiteral(" · ") + legend.figure);
    for (const LegendEntry& entry : legend.entries)
        table.add({entry.label, entry.value});
    return table.text();
}

} // namespace

SensorsModel sensorsModel(const SensorHub& hub, const SourceNames& names, const UnfoldedRows& unfolded) {
    SensorsModel model;
    model.machineName = toQString(hub.machineName());
    model.summary = toQString(hub.sensorSummary());
    model.dataSources = vantoro::dataSources(hub.processSource(), names);
    if (!hub.sensorsAvailable())
        model.complaint = tr("The sensors could not be read.");
    else if (hub.isReady() && hub.extremes() == Extremes())
        model.complaint = tr("This computer reports no temperatures, fans or power.");
    // A fan that was never seen is none, whatever the machine is taken for.
    const bool mayHaveFans = !hub.isReady() || !hub.extremes().fans.empty();
    if (hub.cooling() == Cooling::fans && mayHaveFans)
        model.fans = fanRows(hub);
    for (std::size_t place = 0; place < temperatureFigures.size(); ++place) {
        SensorRowModel& row = model.temperatures.emplace_back(temperatureRow(hub, place));
        const SensorFamily family = temperatureFigures.at(place).family;
        if (family == SensorFamily::chip && hub.hasDieSensors())
            unfold(row, unfolded[place], hub.dieSensors(), hub.dieSensorsAreSilent(), hub.format());
        else if (family == SensorFamily::graphics && hub.hasGPUSensors())
            unfold(row, unfolded[place], hub.gpuSensors(), hub.gpuSensorsAreSilent(), hub.format());
    }
    model.pressure = hub.vitals().thermalPressure;
    for (const PowerKind& kind : powerKinds)
        model.power.push_back(powerRow(hub, kind));
    model.processor = processorLegend(hub);
    model.memory = memoryLegend(hub);
    return model;
}

QString SensorsModel::plainText() const {
    QStringList parts;
    QString head = machineName + u'\n' + summary + u'\n' + dataSources + u'\n';
    if (!complaint.isEmpty())
        head += complaint + u'\n';
    parts.append(head);
    if (fans) {
        Table table(vantoro::tr("Fans"));
        for (const FanRowModel& fan : *fans)
            table.add({fan.label, fan.unit.isEmpty() ? fan.speed : fan.speed + u' ' + fan.unit, fan.range,
                       fan.floorText, fan.targetText, fan.ceilingText});
        parts.append(table.text());
    }
    Table heat(vantoro::tr("Temperatures"));
    for (const SensorRowModel& row : temperatures)
        add(heat, row);
    heat.add({vantoro::tr("Thermal pressure"), toQString(DiagnosisEngine::title(pressure))});
    parts.append(heat.text());
    Table rails(vantoro::tr("Power"));
    for (const SensorRowModel& row : power)
        add(rails, row);
    parts.append(rails.text());
    parts.append(legendText(vantoro::tr("Processor"), processor));
    parts.append(legendText(vantoro::tr("Memory"), memory));
    return parts.join(u'\n');
}

} // namespace vantoro
