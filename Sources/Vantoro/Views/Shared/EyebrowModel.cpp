#include "Views/Shared/EyebrowModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Shared/Words.h"

namespace vantoro {

int verdictHeatStop(const Verdict& verdict) {
    return static_cast<int>(verdict.severity == Severity::critical ? StressLevel::extreme : verdict.state);
}

EyebrowModel eyebrowModel(const Verdict& verdict) {
    constexpr double shortestMentioned = 45;
    EyebrowModel model;
    model.heatStop = verdictHeatStop(verdict);
    model.label = toQString(verdict.stateLabel());
    model.isCritical = verdict.severity == Severity::critical;
    model.spokenValue = model.label;
    if (!verdict.awaitingReading) {
        model.level = static_cast<int>(verdict.state);
        model.spokenValue = tr("%1, %2 of 5").arg(model.label).arg(*model.level + 1);
    }
    if (verdict.sustainedFor > shortestMentioned)
        model.duration = tr("for %1").arg(toQString(DiagnosisEngine::duration(verdict.sustainedFor)));
    return model;
}

EyebrowModel measuringEyebrow() {
    const QString label = tr("Measuring");
    return {.label = label, .spokenValue = label};
}

} // namespace vantoro
