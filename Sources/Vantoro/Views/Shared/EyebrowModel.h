// The line over a headline: how hard the machine works, in pips and in a word, and for how long.
#pragma once

#include "Model/Records/Verdict.h"

#include <optional>
#include <QString>

namespace vantoro {

struct EyebrowModel {
    /// The level's raw value; none while a reading is awaited.
    std::optional<int> level;
    int heatStop = 0;
    QString label;
    bool isCritical = false;
    /// "for 6 minutes"; empty below three quarters of a minute.
    QString duration;
    /// "Loud, 4 of 5"
    QString spokenValue;

    bool operator==(const EyebrowModel&) const = default;
};

EyebrowModel eyebrowModel(const Verdict& verdict);
/// While there is no verdict yet.
EyebrowModel measuringEyebrow();

/// The heat stop of everything that is coloured by the verdict: its level, but the last one when it is critical.
int verdictHeatStop(const Verdict& verdict);

} // namespace vantoro
