// What the dials beside the verdict show, in the Now pane and in the menu bar's panel.
#pragma once

#include "Design/Gauges/GaugeFigures.h"
#include "Model/Live/SensorHub.h"

#include <optional>
#include <QString>
#include <vector>

namespace vantoro {

/// Fans that tell their speeds only, as the driver orders them.
struct FanListModel {
    /// With more than these, one less and the way to the others.
    static constexpr std::size_t mostRows = 5;

    struct Row {
        QString name;
        /// "1,840"; none in the last row where it stands for the others, "3 more".
        QString figure;
        QString spoken;

        bool operator==(const Row&) const = default;
    };

    QString title;
    QString unit;
    std::vector<Row> rows;
    /// What is not known of them.
    QString foot;

    bool operator==(const FanListModel&) const = default;
};

/// The dials beside the verdict: the fans of a machine, the temperature of one whose fans say nothing, or how busy one
/// is that tells neither.
struct DialsModel {
    /// One or two fans, or one that stands for none; from three on they are shown small.
    std::vector<FanRotorFigures> rotors;
    /// In place of the rotors.
    std::optional<ThermalDialFigures> dial;
    /// Beside the dial, where there are fans.
    std::optional<FanListModel> fans;
    /// Below three or more rotors: "1,480" and "rpm peak".
    QString peakFigure;
    QString peakUnit;

    bool showsSmallRotors() const { return rotors.size() >= 3; }

    bool operator==(const DialsModel&) const = default;
};

DialsModel dialsModel(const SensorHub& hub);

/// The speeds of fans without limits in one line; beside rotors with the fans' names. Empty where there are none.
QString fanLine(const SensorHub& hub);

/// A fan's figures, coloured in the verdict's heat stop.
FanRotorFigures rotorFigures(const FanReading& fan, const SensorHub& hub);
/// The figures of a machine whose fans cannot be read: a wheel that stands still, and no speed.
FanRotorFigures absentRotorFigures();
/// What is not known of the fans' limits, and whether it is being learned; empty where only some are not known, and
/// will not be.
QString fanReachNote(const std::vector<FanReading>& fans);
/// Where a fan stands between its limits, 0 to 1; none where they lie no more than 1 rpm apart.
std::optional<double> fanPosition(const FanReading& fan);
/// Whether a dial stands in the fans' place: on a machine that is not judged by them, and while nothing has been found.
bool showsDial(const SensorHub& hub);
/// What it shows: the chip's temperature, or the busy share. Without its cursor while there is no verdict yet, and a
/// dash alone while nothing has been found.
ThermalDialFigures dialFigures(const SensorHub& hub);
/// How busy the processors are at this moment, in whole per cent; none while that is not known.
std::optional<int> busyPercent(const SensorHub& hub);
/// "66%"; "—" where it is not known.
QString percentText(std::optional<int> percent);

} // namespace vantoro
