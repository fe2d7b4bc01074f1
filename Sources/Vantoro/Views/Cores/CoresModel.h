// What the cores pane shows: a tile per core, a summary per kind, and the spread of the single temperature sensors.
#pragma once

#include "Model/Records/Telemetry.h"
#include "Model/Text/Format.h"

#include <array>
#include <optional>
#include <QString>
#include <vector>

namespace vantoro {

class SensorHub;

/// One core, ready to draw.
struct CoreFigures {
    QString label;
    QString busyText;
    QString frequencyText;
    /// 0 to 1.
    double busy = 0;
    /// 0.001 to 1; none where the highest frequency is not known.
    std::optional<double> frequencyFill;
    bool isHighlighted = false;
    QString spokenValue;

    bool operator==(const CoreFigures&) const = default;
};

/// All cores of one kind.
struct CoreCluster {
    QString busyText;
    /// Empty where the highest frequency is not known.
    QString ceilingText;
    std::vector<CoreFigures> cores;

    bool operator==(const CoreCluster&) const = default;
};

/// Where one sensor stands on the ruler.
struct RulerTick {
    /// Along the ruler, 0 to 1.
    double position = 0;
    int heatStop = 0;
    /// The coolest and the hottest.
    bool isExtreme = false;

    bool operator==(const RulerTick&) const = default;
};

struct RulerMark {
    double position = 0;
    QString text;

    bool operator==(const RulerMark&) const = default;
};

/// A sorted list of temperatures.
struct Spread {
    struct Figure {
        QString label;
        QString value;

        bool operator==(const Figure&) const = default;
    };

    QString subtitle;
    QString caption;
    /// In place of all below while nothing was read; else empty.
    QString placeholder;
    std::array<Figure, 4> figures;
    std::vector<RulerTick> ticks;
    std::vector<RulerMark> marks;
    QString spokenValue;

    bool operator==(const Spread&) const = default;
};

struct CoresModel {
    /// How many of each kind; empty where that is not known.
    QString subtitle;
    /// In place of the tiles where nothing is known of the cores; else empty.
    QString coresNote;
    /// Performance first; a kind without cores is left out.
    std::vector<CoreCluster> clusters;
    int coreCount = 0;
    /// None on a machine without such sensors.
    std::optional<Spread> die;
    std::optional<Spread> gpu;
    /// Why the die's sensors are not shown; else empty.
    QString sensorsNote;

    bool operator==(const CoresModel&) const = default;
};

CoresModel coresModel(const SensorHub& hub);

/// Tiles in a row for this many cores in a window that is wide enough.
int columnCount(int cores);
/// The same where each tile is to keep its least width, in a grid of this width.
int narrowColumnCount(int cores, double gridWidth);

/// `ceiling` is the highest frequency of this kind of core in MHz, 0 when not known.
CoreFigures coreFigures(const Core& core, double ceiling);
CoreCluster clusterSummary(const std::vector<Core>& cores, double ceiling);
/// `areSilent` says of an empty list that it will stay so.
Spread spreadOf(const std::vector<double>& ascendingCelsius, bool areSilent, const QString& caption,
                const Format& format);

} // namespace vantoro
