#include "Views/Now/FactsModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Shared/Words.h"
#include "Views/Timeline/TimelineModel.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

namespace {

constexpr double shownSeconds = 900;

double peak(const std::vector<TimePoint>& points) {
    double highest = 0;
    for (const TimePoint& point : points)
        highest = std::max(highest, point.value);
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
        line.points = hub.series().power;
        line.most = powerCeiling(line.points);
    } else if (title == "GPU") {
        line.points = thinnedSeries(hub.history(), [](const Snapshot& snapshot) { return snapshot.power.gpuWatts; });
        line.most = std::max(10.0, std::ceil(peak(line.points) / 10) * 10);
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

FactsModel factsModel(const SensorHub& hub) {
    const Verdict& verdict = hub.verdict();
    std::optional<UnixSeconds> ramp;
    if (hub.measuring() == Measuring::done && verdict.sustainedFor > 0 && verdict.sustainedFor < shownSeconds)
        ramp = hub.snapshot().timestamp - verdict.sustainedFor;
    FactsModel model{.title = tr("Facts"), .caption = tr("last 15 minutes"), .facts = {}};
    if (ramp) {
        const QString time = toQString(hub.format().timeOfDay(*ramp));
        model.caption = (verdict.cooling == Cooling::passive
                             ? tr("last 15 minutes · dashed line: %1, when the chip began heating up")
                             : tr("last 15 minutes · dashed line: %1, when the fans began climbing"))
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
