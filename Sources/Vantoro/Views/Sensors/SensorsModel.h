// What the sensors pane shows: everything that is measured, by family, with what it has been since launch.
#pragma once

#include "Design/Gauges/GaugeFigures.h"
#include "Model/Live/SensorHub.h"
#include "Views/Settings/SettingsModel.h"

#include <array>
#include <QString>
#include <vector>

namespace vantoro {

/// One fan.
struct FanRowModel {
    QString label;
    QString speed;
    /// Empty for a fan that does not report.
    QString unit;
    /// Its lowest and highest since launch; empty while there is no difference.
    QString range;
    /// Within its limits, 0 to 1; none where they are not known.
    std::optional<double> position;
    std::optional<double> target;
    int heatStop = 0;
    QString floorText;
    QString targetText;
    QString ceilingText;
    QString spokenValue;
    /// It has a place within limits; else the speed is all there is to show.
    bool showsGauge = true;

    bool operator==(const FanRowModel&) const = default;
};

/// One temperature or power rail.
struct SensorRowModel {
    QString label;
    /// What the figure is; may be empty.
    QString source;
    QString range;
    QString value;
    bool isMissing = false;
    /// A computer other than a Mac has no row for what it has never told.
    bool isShown = true;
    SparklineLine line;
    /// The source and what the range means, in full.
    QString toolTip;
    QString spokenValue;
    /// Whether it unfolds into its single sensors, and while it is: their figures, coolest first, and how many.
    bool isExpandable = false;
    bool isExpanded = false;
    QString sensorsTitle;
    QStringList sensors;

    bool operator==(const SensorRowModel&) const = default;
};

/// A part of a whole, or with no share a figure beside it.
struct LegendEntry {
    QString label;
    QString value;
    std::optional<double> share;
    bool isMissing = false;

    bool operator==(const LegendEntry&) const = default;
};

struct LegendModel {
    QString figure;
    /// In the order of the shades, darkest first; row by row in two columns.
    std::vector<LegendEntry> entries;
    QString spokenValue;

    bool operator==(const LegendModel&) const = default;
};

/// Which rows of temperatures are unfolded, in the order of the figures' table.
using UnfoldedRows = std::array<bool, temperatureFigures.size()>;

struct SensorsModel {
    static constexpr std::size_t powerRows = 5;
    static constexpr std::size_t waitingRows = 3;

    QString machineName;
    QString summary;
    QString dataSources;
    /// Empty while they can be read.
    QString complaint;
    /// None on a machine without fans, and on one that reports none.
    std::optional<std::vector<FanRowModel>> fans;
    /// What is to be known of all their limits; empty where they are the drivers'.
    QString fansNote;
    /// In the order of the figures' table.
    std::vector<SensorRowModel> temperatures;
    /// None where no chip's temperature is known.
    std::optional<ThermalPressure> pressure;
    std::vector<SensorRowModel> power;
    /// What work waited for, how much of the time; no row shown where the system does not tell.
    std::vector<SensorRowModel> waiting;
    LegendModel processor;
    LegendModel memory;

    /// Whether any row of a panel is shown.
    static bool anyShown(const std::vector<SensorRowModel>& rows);
    /// All of it as a table of plain text, for the clipboard.
    QString plainText() const;

    bool operator==(const SensorsModel&) const = default;
};

SensorsModel sensorsModel(const SensorHub& hub, const SourceNames& names, const UnfoldedRows& unfolded);

} // namespace vantoro
