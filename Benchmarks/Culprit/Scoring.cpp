#include "Scoring.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Explanation/Reports.h"
#include "Model/Recording/Recording.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

namespace culprit {

namespace {

using vantoro::History;
using vantoro::Verdict;

template <class Value>
Value parsed(vantoro::ParsedLine<Value> line) {
    if (const auto* refusal = std::get_if<vantoro::RecordingRefusal>(&line))
        throw std::runtime_error(refusal->reason);
    return std::get<Value>(std::move(line));
}

Names inOrder(const std::map<std::string, double>& sums) {
    std::vector<std::pair<double, std::string>> order;
    for (const auto& [name, sum] : sums)
        order.emplace_back(-sum, name);
    std::sort(order.begin(), order.end());
    Names names;
    for (const auto& [sum, name] : order)
        names.push_back(name);
    return names;
}

bool isAmong(const Names& names, const Truth& truth, std::size_t most) {
    return std::any_of(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(std::min(most, names.size())),
                       [&truth](const std::string& name) { return truth.accepts(name); });
}

bool isSpreadSaid(const Verdict& verdict) {
    return verdict.headline.find("leads, but the load is spread out") != std::string::npos;
}

/// The name in the headline of a state above rest; empty when it blames nobody.
std::string blamed(const Verdict& verdict) {
    if (isAtRest(verdict.state) || !verdict.suspect)
        return {};
    const bool isNamed = verdict.headline.find(friendlyName(*verdict.suspect, verdict.system)) != std::string::npos;
    return isNamed ? verdict.suspect->key : std::string();
}

bool isRight(const Verdict& verdict, const Truth& truth) {
    const std::string name = blamed(verdict);
    if (name.empty())
        return (truth.isNobody() || truth.mayBeNobody);
    return truth.accepts(name) && (truth.isSpread || !isSpreadSaid(verdict));
}

/// The first culprit's processor time over the seconds of the window of a cause, per cent of one core.
std::optional<double> trueShare(const History& history, const Truth& truth) {
    const vantoro::SnapshotRun window = history.causeWindow(15, 75);
    double seconds = 0;
    double used = 0;
    for (std::size_t i = 1; i < truth.sampleTimes.size(); ++i) {
        const double time = truth.sampleTimes[i];
        if (window.empty() || time < window.front().timestamp - 0.01 || time > window.back().timestamp + 0.01)
            continue;
        seconds += time - truth.sampleTimes[i - 1];
        used += truth.processorSeconds[i];
    }
    return seconds > 0 ? std::optional(used / seconds * 100) : std::nullopt;
}

} // namespace

Names answer(Baseline baseline, const Seen& seen) {
    std::map<std::string, double> sums;
    const SeenSnapshot& last = seen.snapshots().back();
    for (const SeenSnapshot& snapshot : seen.snapshots()) {
        if (baseline == Baseline::busiestOfMinute ? snapshot.time < last.time - 60 : &snapshot != &last)
            continue;
        for (const SeenRow& row : snapshot.rows)
            if (baseline == Baseline::busiestRow)
                sums[row.name] = std::max(sums[row.name], row.cpuPercent);
            else
                sums[row.key] += baseline == Baseline::largestInMemory ? row.memoryBytes : row.cpuPercent;
    }
    return inOrder(sums);
}

Marks score(const std::vector<std::string>& lines, const Truth& truth, int cores) {
    static const vantoro::DefaultFormatContext context;
    static const vantoro::Format format(context);
    constexpr std::size_t snapshotsPerReport = 10;
    vantoro::RecordingParser parser;
    const vantoro::RecordingHeader header = parsed(parser.parseHeader(lines.front()));
    History history;
    history.setSystem(header.system.value_or(vantoro::SystemKind::macos));
    if (header.processors)
        history.setProcessorCount(header.processors->count());
    Seen seen;
    Marks marks;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        history.append(parsed(parser.parseSnapshot(lines[i])));
        seen.add(lines[i]);
        const bool isLast = i + 1 == lines.size();
        const double now = history.snapshots().back().timestamp;
        if (now >= truth.begins && !truth.isNobody() && !marks.secondsUntilRight) {
            const Verdict verdict = vantoro::DiagnosisEngine::evaluate(history, format);
            if (!blamed(verdict).empty() && isRight(verdict, truth))
                marks.secondsUntilRight = now - truth.begins;
        }
        if (!isLast && i % snapshotsPerReport != 0)
            continue;
        const vantoro::Conclusion conclusion = conclude(history, format);
        const auto report = nlohmann::json::parse(
            jsonReport(history, conclusion.verdict, conclusion.suspects, conclusion.explanation, conclusion.series));
        ++marks.reports;
        std::multimap<std::string, std::string> keys;
        for (const vantoro::ProcessGroup& group : History::groups(history.recent(History::defaultRetentionSeconds)))
            keys.emplace(friendlyName(group, history.system()), group.key);
        for (ImpossibleFigure& figure : impossibleFigures(report, seen, cores, std::move(keys)))
            marks.impossible.push_back(std::move(figure));
    }
    const Verdict verdict = vantoro::DiagnosisEngine::evaluate(history, format);
    marks.headline = verdict.headline;
    marks.detail = verdict.detail;
    marks.named = blamed(verdict);
    marks.isRightFirst = isRight(verdict, truth);
    const bool isBlaming = !marks.named.empty();
    marks.isFalseBlame = isBlaming && !truth.accepts(marks.named);
    Names ranked;
    if (isBlaming) {
        ranked.push_back(verdict.suspect->key);
        for (const vantoro::ProcessGroup& group : verdict.runnersUp)
            ranked.push_back(group.key);
    }
    marks.isAmongThree = marks.isRightFirst || isAmong(ranked, truth, 3);
    if (isBlaming && truth.accepts(marks.named) && !verdict.isOfGraphics &&
        marks.named == truth.culprits.front().front())
        if (const std::optional<double> share = trueShare(history, truth))
            marks.shareError = std::abs(verdict.suspect->totalCPU - *share) / cores;
    for (std::size_t i = 0; i < baselineNames.size(); ++i) {
        const Names names = answer(static_cast<Baseline>(i), seen);
        marks.baselineFirst[i] = isAmong(names, truth, 1);
        marks.baselineAmongThree[i] = isAmong(names, truth, 3);
    }
    return marks;
}

} // namespace culprit
