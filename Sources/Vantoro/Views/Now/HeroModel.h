// The answer at the top of the Now pane: how hard the machine works, why, and what its fans or its chip say.
#pragma once

#include "Views/Now/DialsModel.h"
#include "Views/Shared/EyebrowModel.h"

namespace vantoro {

struct HeroModel {
    EyebrowModel eyebrow;
    QString headline;
    /// Empty where there is nothing to add.
    QString detail;
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

} // namespace vantoro
