#include "Model/Explanation/Conclusion.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Explanation/LocalExplainer.h"
#include "Model/History/Suspects.h"

namespace vantoro {

Conclusion conclude(const History& history, const Format& format) {
    Conclusion conclusion;
    if (!history.snapshots().empty())
        conclusion.snapshot = history.snapshots().back();
    conclusion.verdict = DiagnosisEngine::evaluate(history, format);
    conclusion.suspects = rankedSuspects(history);
    conclusion.explanation = LocalExplainer::explain(history, conclusion.verdict, conclusion.snapshot, format);
    conclusion.series = chartSeries(history);
    return conclusion;
}

} // namespace vantoro
