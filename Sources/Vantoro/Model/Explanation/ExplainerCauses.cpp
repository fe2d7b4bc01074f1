#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Model/Explanation/ExplainerSections.h"
#include "Model/Text/WholeNumber.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vantoro::explainer {

namespace {

/// Lower than what the verdict asks of a culprit: the report lists more contributors than the verdict blames.
constexpr double leastContributorCPU = 3.0;
constexpr std::size_t mostContributorRows = 6;
constexpr double comparedSeconds = 90;
constexpr double leastTriggerGrowth = 15.0;
constexpr double leastShownChange = 4.0;
constexpr std::size_t mostTriggerRows = 4;

std::string drivingBody(const std::vector<ProcessGroup>& groups, const Snapshot& now) {
    double total = 0;
    for (const ProcessGroup& group : groups)
        total += group.totalCPU;
    const double share = total == 0 ? 0 : groups.front().totalCPU / total;
    const std::string name = friendlyName(groups.front().displayName);
    if (total > 0 && share > 0.6)
        return fmt::format("{} accounts for roughly {}% of all the CPU work in the window that heated the machine. "
                           "This is a single-culprit situation.",
                           name, truncated(share * 100));
    if (groups.size() >= 4)
        return fmt::format("No single process dominates. The load is spread across {} workloads, which together add "
                           "up to about {}% CPU — that total is {}, not any one entry.",
                           groups.size(), truncated(total),
                           now.cooling == Cooling::passive ? "what is heating the chip"
                                                           : "what the fans are responding to");
    return fmt::format("{} leads at {}% of the measured load, with a few others contributing meaningfully.", name,
                       truncated(share * 100));
}

Explanation::Row contributorRow(const ProcessGroup& group, const Verdict& verdict) {
    std::string detail(kindPhrase(group.kind));
    if (group.members.size() >= 2)
        detail += fmt::format(" · {} processes", group.members.size());
    if (group.sustained > 0.6)
        detail += " · sustained";
    return {.label = friendlyName(group.displayName),
            .value = fmt::format("{}%", truncated(group.totalCPU)),
            .detail = std::move(detail),
            .emphasised = verdict.suspect && group.key == verdict.suspect->key};
}

struct Change {
    std::string name;
    /// Percentage points of CPU.
    double growth = 0;
};

/// How much the work of each group changed from one stretch to the next, most growth first.
std::vector<Change> changes(const SnapshotRun& before, const SnapshotRun& after) {
    std::unordered_map<std::string, double> cpuBefore;
    for (const ProcessGroup& group : History::group(History::aggregate(before)))
        cpuBefore.emplace(group.key, group.totalCPU);
    std::vector<Change> changes;
    for (const ProcessGroup& group : History::group(History::aggregate(after))) {
        const auto earlier = cpuBefore.find(group.key);
        changes.push_back({.name = friendlyName(group.displayName),
                           .growth = group.totalCPU - (earlier != cpuBefore.end() ? earlier->second : 0)});
    }
    std::ranges::stable_sort(changes, std::greater{}, &Change::growth);
    return changes;
}

Explanation::Row changeRow(const Change& change, bool isTrigger, bool isFanless) {
    const bool grew = change.growth > 0;
    return {.label = change.name,
            .value = fmt::format("{}{}%", grew ? "+" : "", truncated(change.growth)),
            .detail = !grew       ? "fell back"
                      : isFanless ? "increased as the chip heated"
                                  : "increased as the fans rose",
            .emphasised = isTrigger};
}

} // namespace

std::optional<Explanation::Section> drivingSection(const History& history, const Verdict& verdict,
                                                   const Snapshot& now) {
    const std::vector<ProcessGroup> groups = DiagnosisEngine::causes(history, leastContributorCPU);
    if (groups.empty())
        return std::nullopt;
    Explanation::Section section{
        .symbol = "list.bullet.indent", .title = "What's drawing the power", .body = drivingBody(groups, now)};
    for (std::size_t i = 0; i < std::min(groups.size(), mostContributorRows); ++i)
        section.rows.push_back(contributorRow(groups[i], verdict));
    return section;
}

std::optional<Explanation::Section> triggerSection(const History& history, const Snapshot& now, const Format& format) {
    const std::optional<UnixSeconds> start = history.lastRampStart(std::nullopt);
    if (!start)
        return std::nullopt;
    const std::vector<Change> ranked =
        changes(history.slice(*start - comparedSeconds, *start), history.slice(*start, *start + comparedSeconds));
    if (ranked.empty() || ranked.front().growth < leastTriggerGrowth)
        return std::nullopt;
    const bool isFanless = now.cooling == Cooling::passive;
    Explanation::Section section{.symbol = "arrow.triangle.branch", .title = "What changed"};
    section.body = fmt::format(
        "{}{}. Comparing the 90 seconds before that against the 90 seconds after, {} grew by {} percentage points of "
        "CPU — more than anything else. That makes it the most likely trigger, even if it isn't the largest consumer "
        "overall.",
        isFanless ? "The chip began heating up around " : "The fans began climbing around ", format.timeOfDay(*start),
        ranked.front().name, truncated(ranked.front().growth));
    for (std::size_t i = 0; i < std::min(ranked.size(), mostTriggerRows); ++i)
        if (std::abs(ranked[i].growth) >= leastShownChange)
            section.rows.push_back(changeRow(ranked[i], i == 0, isFanless));
    return section;
}

} // namespace vantoro::explainer
