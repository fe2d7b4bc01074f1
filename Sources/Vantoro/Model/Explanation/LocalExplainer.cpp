#include "Model/Explanation/LocalExplainer.h"

#include "Model/Explanation/ExplainerSections.h"
#include "Model/Text/WholeNumber.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace vantoro {

namespace {

double observedSeconds(const History& history) {
    if (history.snapshots().empty())
        return 0;
    return history.snapshots().back().timestamp - history.snapshots().front().timestamp;
}

std::string subhead(const History& history) {
    const std::size_t count = history.snapshots().size();
    const std::int64_t minutes = std::max<std::int64_t>(1, rounded(observedSeconds(history) / 60));
    return fmt::format("Based on {} {} over the last {} minute{}.", count, count == 1 ? "sample" : "samples", minutes,
                       minutes == 1 ? "" : "s");
}

void append(std::vector<Explanation::Section>& sections, std::optional<Explanation::Section> section) {
    if (section)
        sections.push_back(std::move(*section));
}

} // namespace

Explanation LocalExplainer::explain(const History& history, const Verdict& verdict, const Snapshot& snapshot,
                                    const Format& format) {
    Explanation explanation{.headline = verdict.headline, .subhead = subhead(history), .severity = verdict.severity};
    append(explanation.sections, explainer::stateSection(history, verdict, snapshot, format));
    append(explanation.sections, explainer::drivingSection(history, verdict, snapshot));
    append(explanation.sections, explainer::triggerSection(history, snapshot, format));
    append(explanation.sections, explainer::normalitySection(verdict, snapshot, format));
    append(explanation.sections, explainer::actionSection(verdict, snapshot));
    return explanation;
}

} // namespace vantoro
