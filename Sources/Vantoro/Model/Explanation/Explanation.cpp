#include "Model/Explanation/Explanation.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Text/Numbers.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

/// Lower than what the verdict asks of a culprit: the report lists more contributors than the verdict blames.
constexpr double leastContributorCPU = 3.0;
constexpr std::size_t mostContributorRows = 6;
constexpr double comparedSeconds = 90;
constexpr double leastTriggerGrowth = 15.0;
constexpr double leastShownChange = 4.0;
constexpr std::size_t mostTriggerRows = 4;

double graphicsOf(const ProcessGroup& group) {
    return group.gpuPercent.value_or(0);
}

std::string drivingBody(const std::vector<ProcessGroup>& groups, const SnapshotRun& window, const Verdict& verdict,
                        bool isAllAccounted) {
    if (verdict.ranWhileQuiet)
        return std::string(ranTheSameSentence);
    if (groups.empty())
        return "No program that can be read does noticeable work.";
    if (verdict.isOfMemory && verdict.suspect) {
        const std::string held = DiagnosisEngine::heldText(*verdict.suspect, window.back().memory);
        return fmt::format(
            "Memory is short, and {} holds the most of it{}{}. Work that only makes room counts below like "
            "any other.",
            friendlyName(*verdict.suspect, verdict.system), held.empty() ? "" : ": ", held);
    }
    const auto shareOf = [&verdict](const ProcessGroup& group) {
        return verdict.isOfGraphics ? graphicsOf(group) : group.totalCPU;
    };
    double total = 0;
    for (const ProcessGroup& group : groups)
        total += shareOf(group);
    const double share = total == 0 ? 0 : shareOf(groups.front()) / total;
    const std::string name = friendlyName(groups.front(), verdict.system);
    const bool isOfWork = verdict.speaksOfWork();
    const bool isAtEase = isAtRest(verdict.state) && verdict.system != SystemKind::macos;
    const bool isBlamed = !verdict.suspect || verdict.suspect->key == groups.front().key;
    if (total > 0 && share > 0.6 && isBlamed)
        return fmt::format("{} accounts for roughly {}% of {} work in the window that {}. This is a "
                           "single-culprit situation.",
                           name, truncated(share * 100),
                           verdict.isOfGraphics ? "the programs' graphics"
                           : isAllAccounted     ? "all the CPU"
                                                : "the accounted CPU",
                           isOfWork   ? "made the machine busy"
                           : isAtEase ? "led up to now"
                                      : "heated the machine");
    if (verdict.isOfGraphics)
        return fmt::format("{} leads at {}% of the programs' graphics work, with others contributing.", name,
                           truncated(share * 100));
    if (groups.size() >= 4)
        return fmt::format("No single process dominates. The load is spread across {} workloads, which together add "
                           "up to about {}% CPU — that total is {}, not any one entry.",
                           groups.size(), truncated(togetherCPU(groups, window)),
                           isOfWork                           ? "what keeps the machine busy"
                           : verdict.cooling == Cooling::fans ? "what the fans are responding to"
                                                              : "what is heating the chip");
    return fmt::format("{} leads at {}% of the measured load, with a few others contributing meaningfully.", name,
                       truncated(share * 100));
}

Explanation::Row contributorRow(const ProcessGroup& group, const Verdict& verdict) {
    std::string detail(systemWords(verdict.system).kindPhrase(group.kind));
    if (group.members.size() >= 2)
        detail += fmt::format(" · {} processes", group.members.size());
    if (group.sustained > 0.6)
        detail += " · sustained";
    if (graphicsOf(group) >= 1)
        detail += fmt::format(" · {}% of the graphics processor", truncated(graphicsOf(group)));
    return {.label = friendlyName(group, verdict.system),
            .value = fmt::format("{}%", truncated(group.totalCPU)),
            .detail = std::move(detail),
            .emphasised = verdict.suspect && group.key == verdict.suspect->key};
}

struct Change {
    std::string name;
    /// Percentage points of CPU, or of the graphics processor where that is what the verdict is of.
    double growth = 0;
};

/// How much the work of each group changed from one stretch to the next, most growth first.
std::vector<Change> changes(const SnapshotRun& before, const SnapshotRun& after, const Verdict& verdict) {
    const auto shareOf = [&verdict](const ProcessGroup& group) {
        return verdict.isOfGraphics ? graphicsOf(group) : group.totalCPU;
    };
    std::unordered_map<std::string, double> shareBefore;
    for (const ProcessGroup& group : History::groups(before))
        shareBefore.emplace(group.key, shareOf(group));
    std::vector<Change> changes;
    for (const ProcessGroup& group : History::groups(after)) {
        const auto earlier = shareBefore.find(group.key);
        changes.push_back({.name = friendlyName(group, verdict.system),
                           .growth = shareOf(group) - (earlier != shareBefore.end() ? earlier->second : 0)});
    }
    std::ranges::stable_sort(changes, std::greater{}, &Change::growth);
    return changes;
}

Explanation::Row changeRow(const Change& change, bool isTrigger, const Verdict& verdict) {
    const bool grew = change.growth > 0;
    const Cooling cooling = verdict.cooling;
    return {
        .label = change.name,
        .value =
            fmt::format("{}{}{}", grew ? "+" : "", truncated(change.growth), verdict.isOfGraphics ? " points" : "%"),
        .detail = std::string(!grew ? "fell back"
                                    : byCooling(cooling, "increased as the fans rose", "increased as the chip heated",
                                                "increased as the chip heated", "increased as the load rose")),
        .emphasised = isTrigger};
}

/// "What's drawing the power": the applications of the stretch that led up to now; none when none did noticeable work.
std::optional<Explanation::Section> drivingSection(const History& history, const Verdict& verdict) {
    const SnapshotRun window = DiagnosisEngine::causeWindow(history);
    std::vector<ProcessGroup> groups = DiagnosisEngine::causes(history, leastContributorCPU);
    if (verdict.isOfGraphics)
        std::ranges::stable_sort(groups, std::greater{}, graphicsOf);
    const std::optional<double> rest = unaccountedCPU(window, history.processorCount());
    if (groups.empty() && !rest)
        return std::nullopt;
    Explanation::Section section{.symbol = "list.bullet.indent",
                                 .title = "What's drawing the power",
                                 .body = drivingBody(groups, window, verdict, !rest)};
    for (std::size_t i = 0; i < std::min(groups.size(), mostContributorRows); ++i)
        section.rows.push_back(contributorRow(groups[i], verdict));
    if (rest)
        section.rows.push_back({.label = "Not accounted for",
                                .value = fmt::format("{}%", truncated(*rest)),
                                .detail = "Interrupts, programs of other users that may not be read, or work of the "
                                          "machine that hosts this one."});
    return section;
}

/// "What changed": whose work grew most when the ramp began; none without a ramp or without noticeable growth.
std::optional<Explanation::Section> triggerSection(const History& history, const Verdict& verdict, const Snapshot& now,
                                                   const Format& format) {
    const std::optional<UnixSeconds> start = history.lastRampStart(std::nullopt);
    if (!start)
        return std::nullopt;
    const std::vector<Change> ranked = changes(history.slice(*start - comparedSeconds, *start),
                                               history.slice(*start, *start + comparedSeconds), verdict);
    if (ranked.empty() || ranked.front().growth < leastTriggerGrowth)
        return std::nullopt;
    Explanation::Section section{.symbol = "arrow.triangle.branch", .title = "What changed"};
    section.body = fmt::format(
        "{}{}. Comparing the 90 seconds before that against the 90 seconds after, {} grew by {} percentage points of "
        "{} — more than anything else. That makes it the most likely trigger, even if it isn't the largest consumer "
        "overall.",
        byCooling(now.cooling, "The fans began climbing around ", "The chip began heating up around ",
                  "The chip began heating up around ", "The load rose around "),
        format.timeOfDay(*start), ranked.front().name, truncated(ranked.front().growth),
        verdict.isOfGraphics ? "the graphics processor" : "CPU");
    for (std::size_t i = 0; i < std::min(ranked.size(), mostTriggerRows); ++i)
        if (std::abs(ranked[i].growth) >= leastShownChange)
            section.rows.push_back(changeRow(ranked[i], i == 0, verdict));
    return section;
}

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
    append(explanation.sections, stateSection(history, verdict, snapshot, format));
    append(explanation.sections, drivingSection(history, verdict));
    append(explanation.sections, triggerSection(history, verdict, snapshot, format));
    append(explanation.sections, normalitySection(verdict, snapshot, format));
    append(explanation.sections, actionSection(verdict, snapshot));
    return explanation;
}

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
