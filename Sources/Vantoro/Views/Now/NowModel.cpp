#include "Views/Now/NowModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Timeline/TimelineModel.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

QString lookingHeadline() {
    return tr("Looking…");
}

HeroModel heroModel(const SensorHub& hub, const Settings& settings) {
    if (const Measuring measuring = hub.measuring(); measuring != Measuring::done)
        return {.eyebrow = measuringEyebrow(),
                .headline = lookingHeadline(),
                .detail = measuring == Measuring::withoutList
                              ? tr("No list of processes has come yet. Vantoro keeps trying.")
                              : tr("Two samples and the first list of processes are needed before anything can be "
                                   "said. That takes about two seconds."),
                .fanLine = fanLine(hub),
                .dials = dialsModel(hub),
                .rotorsTurn = settings.value(Setting::spinRotors)};
    const Verdict& verdict = hub.verdict();
    return {.eyebrow = eyebrowModel(verdict),
            .headline = toQString(verdict.headline),
            .detail = toQString(verdict.detail),
            .fanLine = fanLine(hub),
            .dials = dialsModel(hub),
            .rotorsTurn = settings.value(Setting::spinRotors)};
}

bool HeadlineAnnouncer::isDue(const QString& headline, double now) {
    if (!told_) {
        told_ = headline;
        return false;
    }
    if (headline == *told_ || (lastTime_ && now - *lastTime_ < shortestInterval))
        return false;
    told_ = headline;
    lastTime_ = now;
    return true;
}

AdviceModel adviceModel(const SensorHub& hub) {
    AdviceModel model{.title = tr("What you can do"),
                      .items = {},
                      .result = quitResultModel(hub),
                      .emptyText = tr("Nothing needs doing."),
                      .explain = tr("Explain in full…")};
    if (hub.measuring() != Measuring::done) {
        model.emptyText.clear();
        model.isPending = true;
        return model;
    }
    for (const Advice& advice : hub.verdict().advice) {
        AdviceItemModel item{.text = toQString(advice.text), .quitPID = advice.quitPID, .note = {}};
        if (advice.quitPID) {
            const std::optional<ProcessGroup> group = groupHolding(hub, *advice.quitPID);
            // The verdict remembers for longer than a process may live.
            if (model.result || !group || !canBeQuit(hub, *group))
                continue;
            item.note = quitNote(hub, *group);
        }
        model.items.push_back(std::move(item));
    }
    return model;
}

namespace {

constexpr double shownSeconds = 900;

/// The top of a scale that reaches to the peak's next ten, and at least so far.
double scaleTop(const std::vector<TimePoint>& points, double least) {
    double highest = least;
    for (const TimePoint& point : points)
        highest = std::max(highest, std::ceil(point.value / 10) * 10);
    return highest;
}

/// What is drawn below a figure; nothing for a fact that has no course.
void addFigure(FactModel& fact, const std::string& title, const SensorHub& hub, std::optional<UnixSeconds> ramp) {
    if (title == "Thermal") {
        fact.pressure = hub.snapshot().thermalPressure;
        return;
    }
    SparklineLine line;
    if (title == "CPU") {
        line.points = hub.series().cpu;
    } else if (title == "Chip") {
        line.points = hub.series().temp;
        line.least = 30;
    } else if (title == "Power") {
        // Where the whole machine's draw is not known, it is the processors'.
        line.points = hub.snapshot().power.systemWatts > 0 ? hub.series().power
                                                           : thinnedSeries(hub.history(), [](const Snapshot& snapshot) {
                                                                 return snapshot.power.cpuWatts.value_or(0);
                                                             });
        line.most = powerCeiling(line.points);
    } else if (title == "GPU" && fact.value.endsWith(u'%')) {
        line.points =
            thinnedSeries(hub.history(), [](const Snapshot& snapshot) { return snapshot.gpuPercent.value_or(0); });
    } else if (title == "GPU") {
        line.points = thinnedSeries(hub.history(), [](const Snapshot& snapshot) { return snapshot.power.gpuWatts; });
        line.most = scaleTop(line.points, 10);
    } else if (title == "Waiting") {
        line.points = thinnedSeries(
            hub.history(), [](const Snapshot& snapshot) { return largestStall(snapshot.stalls).value_or(-1); });
        line.countsZero = true;
        line.most = scaleTop(line.points, 40);
    } else if (title == "Memory") {
        line.points = thinnedSeries(hub.history(), [](const Snapshot& snapshot) {
            return std::clamp(DiagnosisEngine::memoryPressure(snapshot.memory), 0.0, 1.0) * 100;
        });
    } else {
        return;
    }
    line.to = hub.snapshot().timestamp;
    line.from = line.to - shownSeconds;
    line.ramp = ramp;
    fact.line = std::move(line);
}

/// Whether there is nothing to this fact yet: the first figures of all are waited for, or a list that does not come
/// and brings the processor's and the memory's.
bool isAwaited(const SensorHub& hub, const std::string& title) {
    switch (hub.measuring()) {
    case Measuring::looking:
        return true;
    case Measuring::withoutList:
        return title == "CPU" || title == "Memory";
    case Measuring::done:
        break;
    }
    return false;
}

} // namespace

std::optional<double> largestStall(const StallShares& stalls) {
    return std::max({stalls.cpu, stalls.memory, stalls.io});
}

FactsModel factsModel(const SensorHub& hub) {
    const Verdict& verdict = hub.verdict();
    std::optional<UnixSeconds> ramp;
    if (hub.measuring() == Measuring::done && verdict.sustainedFor > 0 && verdict.sustainedFor < shownSeconds)
        ramp = hub.snapshot().timestamp - verdict.sustainedFor;
    FactsModel model{.title = tr("Facts"), .caption = tr("last 15 minutes"), .facts = {}};
    if (ramp) {
        const QString time = toQString(hub.format().timeOfDay(*ramp));
        model.caption =
            (verdict.cooling == Cooling::fans ? tr("last 15 minutes · dashed line: %1, when the fans began climbing")
             : verdict.cooling == Cooling::load
                 ? tr("last 15 minutes · dashed line: %1, when the load rose")
                 : tr("last 15 minutes · dashed line: %1, when the chip began heating up"))
                .arg(time);
    }
    for (const Factor& factor : verdict.factors) {
        FactModel fact{.symbol = toQString(factor.symbol),
                       .title = toQString(factor.title),
                       .value = toQString(factor.value),
                       .detail = toQString(factor.detail),
                       .line = {},
                       .pressure = {}};
        if (isAwaited(hub, factor.title)) {
            fact.value = QStringLiteral("—");
            fact.detail = tr("first sample pending");
            fact.isMissing = true;
        } else {
            addFigure(fact, factor.title, hub, ramp);
        }
        model.facts.push_back(std::move(fact));
    }
    return model;
}

} // namespace vantoro
