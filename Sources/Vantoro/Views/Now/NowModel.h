// What the Now pane says: the answer at the top with its dials, what can be done, and the facts.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Views/Now/DialsModel.h"
#include "Views/Shared/Words.h"
#include "Views/Suspects/QuitModel.h"

#include <QString>
#include <vector>

namespace vantoro {

/// The answer at the top: how hard the machine works, why, and what its fans or its chip say.
struct HeroModel {
    EyebrowModel eyebrow;
    QString headline;
    /// Empty where there is nothing to add.
    QString detail;
    /// Fans told in one line: those without limits beside rotors, and all where a list has no room.
    QString fanLine;
    DialsModel dials;
    /// Whether drawn fans are to turn.
    bool rotorsTurn = true;

    bool operator==(const HeroModel&) const = default;
};

HeroModel heroModel(const SensorHub& hub, const Settings& settings);

/// What stands in a headline's place while there is no verdict yet.
QString lookingHeadline();

/// Which headlines a screen reader is told without being asked: the changes, at most one in ten seconds. The latest
/// is never lost, it comes when its time has come.
class HeadlineAnnouncer {
public:
    static constexpr double shortestInterval = 10;

    /// Called with what is on screen; whether to announce it now. The first one is not a change.
    bool isDue(const QString& headline, double now);

private:
    std::optional<QString> told_;
    std::optional<double> lastTime_;
};

/// A sentence, or the label of a quit button and the note below it.
struct AdviceItemModel {
    QString text;
    std::optional<std::int32_t> quitPID;
    QString note;

    bool operator==(const AdviceItemModel&) const = default;
};

struct AdviceModel {
    QString title;
    std::vector<AdviceItemModel> items;
    /// What became of the last quitting, in place of the quit button.
    std::optional<QuitResultModel> result;
    /// In place of the items when there is none.
    QString emptyText;
    QString explain;
    /// There is nothing to advise upon or to explain yet.
    bool isPending = false;

    bool operator==(const AdviceModel&) const = default;
};

AdviceModel adviceModel(const SensorHub& hub);

struct FactModel {
    /// An icon's name.
    QString symbol;
    QString title;
    QString value;
    QString detail;
    /// The figure below: a course, or the thermal pressure.
    std::optional<SparklineLine> line;
    std::optional<ThermalPressure> pressure;
    /// The value is a dash.
    bool isMissing = false;

    bool operator==(const FactModel&) const = default;
};

struct FactsModel {
    QString title;
    QString caption;
    std::vector<FactModel> facts;

    bool operator==(const FactsModel&) const = default;
};

FactsModel factsModel(const SensorHub& hub);

/// The largest share of the time in which some work waited; none where the system does not tell.
std::optional<double> largestStall(const StallShares& stalls);

} // namespace vantoro
