#include "Model/Explanation/Explanation.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Model/Text/Numbers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

/// Seconds from which the length of an episode is worth a sentence.
constexpr double notableDuration = 30;

double meanLoad(const SnapshotRun& run, std::size_t from, std::size_t to, Cooling cooling) {
    double sum = 0;
    for (std::size_t i = from; i < to; ++i)
        sum += DiagnosisEngine::load(run[i], cooling);
    return sum / static_cast<double>(to - from);
}

/// Where the load has been heading over the last minute.
std::string trend(const History& history) {
    constexpr double lookBackSeconds = 60;
    constexpr std::size_t fewestSnapshots = 6;
    constexpr double noticeable = 0.05;
    const SnapshotRun run = history.recent(lookBackSeconds);
    if (run.size() < fewestSnapshots)
        return "not enough history yet";
    const Cooling cooling = run.back().cooling;
    const std::size_t middle = run.size() / 2;
    const double change = meanLoad(run, middle, run.size(), cooling) - meanLoad(run, 0, middle, cooling);
    if (change > noticeable)
        return cooling == Cooling::passive ? "heating up" : "climbing";
    if (change < -noticeable)
        return cooling == Cooling::passive ? "cooling down" : "winding down";
    return "steady";
}

const char* temperatureBand(double celsius) {
    if (celsius > 95)
        return "very hot, near the limit";
    if (celsius > 85)
        return "hot";
    return celsius > 68 ? "warm" : "cool";
}

Explanation::Row powerRow(const PowerReading& power) {
    return {.label = "System power",
            .value = fmt::format("{:.0f} W", power.systemWatts),
            .detail = power.adapterWatts > 5 ? fmt::format("{} W from the charger", truncated(power.adapterWatts))
                                             : "on battery"};
}

Explanation::Row processorRow(const CPULoad& cpu) {
    const double busy = std::clamp(DiagnosisEngine::busyPercent(cpu), 0.0, 100.0);
    return {
        .label = "CPU",
        .value = fmt::format("{}% busy", truncated(busy)),
        .detail = fmt::format("{}% apps, {}% system", truncated(cpu.userPercent), truncated(cpu.systemPercent)),
    };
}

Explanation::Row pressureRow(ThermalPressure pressure) {
    static constexpr std::array details{"macOS isn't holding the chip back", "macOS is keeping an eye on the heat",
                                        "macOS is slowing the chip to shed heat",
                                        "macOS is slowing the chip hard to protect it"};
    return {.label = "Thermal pressure",
            .value = std::string(DiagnosisEngine::title(pressure)),
            .detail = details[static_cast<std::size_t>(pressure)]};
}

Explanation::Row passiveChipRow(const Temperatures& temps, const Format& format) {
    std::string detail = "whole chip";
    if (temps.soc > 0)
        detail += fmt::format(" · hottest core {}, {}", format.temperature(temps.soc), temperatureBand(temps.soc));
    return {.label = "Chip temperature", .value = format.temperature(temps.socMean), .detail = std::move(detail)};
}

Explanation::Row chipRow(const Temperatures& temps, const Format& format) {
    return {.label = "Chip temperature",
            .value = format.temperature(temps.soc),
            .detail = temps.soc > 0 ? temperatureBand(temps.soc) : "not reported"};
}

std::string unreadChipBody(ThermalPressure pressure) {
    std::string body =
        "Vantoro is still waiting for the chip's first usable temperature reading. An idle Apple silicon "
        "chip parks its sensors, and they report again as soon as it does some work.";
    if (!DiagnosisEngine::isThrottling(pressure))
        return body + " This Mac has no fans, so until then there is no condition to describe.";
    return body + fmt::format(" macOS has raised thermal pressure to {} in the meantime, so something is warm even if "
                              "the chip hasn't said so yet.",
                              DiagnosisEngine::word(pressure));
}

std::string passiveBody(const Verdict& verdict, const Snapshot& now, const Format& format) {
    if (verdict.awaitingReading)
        return unreadChipBody(now.thermalPressure);
    std::string body(verdict.statePhrase());
    if (now.temps.socMean > 0) {
        body += " — the chip as a whole is at " + format.temperature(now.temps.socMean);
        if (now.temps.soc > 0)
            body += ", and its hottest core at " + format.temperature(now.temps.soc);
    }
    body += ".";
    if (verdict.sustainedFor > notableDuration)
        body += " It has been running warm for " + DiagnosisEngine::duration(verdict.sustainedFor) + ".";
    return body +
           " This Mac has no fans: its heat leaves through the case, and at its limit the chip slows itself down "
           "rather than getting louder.";
}

double position(const FanReading& fan) {
    return (fan.rpm - fan.minRPM) / (fan.maxRPM - fan.minRPM);
}

/// The fan that has climbed furthest, the first on a tie; null when no fan's limits are known.
const FanReading* hardestWorking(const std::vector<FanReading>& fans) {
    const FanReading* hardest = nullptr;
    for (const FanReading& fan : fans)
        if (fan.maxRPM - fan.minRPM > 1.0 && (hardest == nullptr || position(fan) > position(*hardest)))
            hardest = &fan;
    return hardest;
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

std::string fanSentence(const std::vector<FanReading>& fans, const Format& format) {
    if (fans.empty())
        return "no fans are being reported by this Mac.";
    const FanReading* hardest = hardestWorking(fans);
    if (hardest == nullptr) { // without known limits there is a speed to tell, but no place within them
        const FanReading& fastest = *std::ranges::max_element(fans, {}, &FanReading::rpm);
        return fmt::format("the {} fan is at {} rpm.", lowerCase(fastest.label()), format.rpm(fastest.rpm));
    }
    const std::int64_t climbed = truncated(std::clamp(position(*hardest), 0.0, 1.0) * 100);
    return fmt::format("the {} fan is at {} rpm, {}% of the way between its {} rpm floor and its {} rpm ceiling.",
                       lowerCase(hardest->label()), format.rpm(hardest->rpm), climbed, format.rpm(hardest->minRPM),
                       format.rpm(hardest->maxRPM));
}

std::string fansBody(const Verdict& verdict, const Snapshot& now, const Format& format) {
    std::string body = fmt::format("{} — {}", verdict.statePhrase(), fanSentence(now.fans, format));
    if (verdict.sustainedFor > notableDuration)
        body += " They have been elevated for " + DiagnosisEngine::duration(verdict.sustainedFor) + ".";
    return body;
}

/// "Where things stand": the condition in a paragraph and the figures behind it.
Explanation::Section stateSection(const History& history, const Verdict& verdict, const Snapshot& now,
                                  const Format& format) {
    Explanation::Section section{.symbol = "gauge.with.dots.needle.67percent", .title = "Where things stand"};
    const std::string label(verdict.stateLabel());
    if (now.cooling == Cooling::passive) {
        section.body = passiveBody(verdict, now, format);
        section.rows = {{.label = "Condition", .value = label, .detail = trend(history)},
                        passiveChipRow(now.temps, format),
                        pressureRow(now.thermalPressure),
                        powerRow(now.power),
                        processorRow(now.cpu)};
    } else {
        section.body = fansBody(verdict, now, format);
        section.rows = {{.label = "Fan state", .value = label, .detail = trend(history)},
                        chipRow(now.temps, format),
                        powerRow(now.power),
                        processorRow(now.cpu)};
    }
    return section;
}

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

/// "What's drawing the power": the applications of the stretch that led up to now; none when none did noticeable work.
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

/// "What changed": whose work grew most when the ramp began; none without a ramp or without noticeable growth.
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
    append(explanation.sections, drivingSection(history, verdict, snapshot));
    append(explanation.sections, triggerSection(history, snapshot, format));
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
