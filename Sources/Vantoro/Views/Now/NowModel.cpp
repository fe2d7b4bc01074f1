#include "Views/Now/NowModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Timeline/TimelineModel.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

namespace {

/// How fast the wheel of a fan is drawn to turn: twice a second at its ceiling.
double turnsPerSecond(const FanReading& fan) {
    constexpr double fastest = 2;
    return fan.maxRPM > 0 && fan.rpm > 0 ? std::min(fastest, fastest * fan.rpm / fan.maxRPM) : 0;
}

QString spokenFan(const FanReading& fan) {
    const QString label = toQString(fan.label());
    return fan.index <= 1 ? tr("%1 fan").arg(label) : label;
}

} // namespace

std::optional<double> fanPosition(const FanReading& fan) {
    const double span = fan.maxRPM - fan.minRPM;
    if (!(span > 1))
        return std::nullopt;
    return std::clamp((fan.rpm - fan.minRPM) / span, 0.0, 1.0);
}

FanRotorFigures rotorFigures(const FanReading& fan, int heatStop, const Format& format) {
    FanRotorFigures figures;
    figures.figure = toQString(format.rpm(fan.rpm));
    figures.unit = tr("rpm");
    figures.label = toQString(fan.label());
    figures.caption = figures.label;
    figures.position = fanPosition(fan);
    figures.heatStop = heatStop;
    figures.turnsPerSecond = turnsPerSecond(fan);
    figures.spokenName = spokenFan(fan);
    figures.spokenValue = tr("%1 rpm").arg(figures.figure);
    if (figures.position) {
        const QString percent = QString::number(std::lround(*figures.position * 100));
        figures.caption += QStringLiteral(" · ") + tr("%1%").arg(percent);
        figures.spokenValue = tr("%1 rpm, %2 percent of its range").arg(figures.figure, percent);
    }
    return figures;
}

FanRotorFigures absentRotorFigures() {
    FanRotorFigures figures;
    figures.figure = QStringLiteral("—");
    figures.spokenName = tr("Fan");
    figures.spokenValue = tr("no reading");
    return figures;
}

FanRotorFigures withoutVerdict(FanRotorFigures figures) {
    figures.position.reset();
    figures.heatStop = 0;
    return figures;
}

bool hasNothingForDials(const SensorHub& hub) {
    if (hub.measuring() == Measuring::done)
        return false;
    const Temperatures& temps = hub.vitals().temps;
    return hub.cooling() == Cooling::passive ? !(temps.socMean > 0 || temps.soc > 0) : hub.vitals().fans.empty();
}

ThermalDialFigures thermalDialFigures(const SensorHub& hub) {
    if (hasNothingForDials(hub))
        return {.figure = QStringLiteral("—"),
                .smallFigure = QStringLiteral("—"),
                .isEmpty = true,
                .spokenName = tr("Measuring"),
                .spokenValue = tr("no reading")};
    const bool isMeasuring = hub.measuring() != Measuring::done;
    const Snapshot& snapshot = hub.snapshot();
    const Temperatures& temps = hub.vitals().temps;
    const Format& format = hub.format();
    ThermalDialFigures figures;
    const QString whole = toQString(format.temperature(temps.socMean));
    figures.smallFigure = toQString(format.degrees(temps.socMean));
    figures.figure = figures.smallFigure;
    figures.figure.remove(u'°');
    figures.unit = whole.mid(figures.figure.size());
    figures.caption = tr("whole chip");
    if (snapshot.chipHeat > 0 && !isMeasuring)
        figures.position = Snapshot::heatLoad(snapshot.chipHeat);
    figures.heatStop = isMeasuring ? 0 : verdictHeatStop(hub.verdict());
    figures.spokenName = tr("Chip heat");
    QStringList spoken{isMeasuring ? tr("Measuring") : toQString(hub.verdict().stateLabel())};
    if (temps.socMean > 0)
        spoken.append(tr("whole chip %1").arg(whole));
    if (temps.soc > 0) {
        figures.gapCaption = tr("hottest core");
        figures.gapFigure = toQString(format.temperature(temps.soc));
        spoken.append(tr("hottest core %1").arg(figures.gapFigure));
    }
    figures.spokenValue = spoken.join(QStringLiteral(", "));
    return figures;
}

DialsModel dialsModel(const SensorHub& hub) {
    DialsModel model;
    if (hub.cooling() == Cooling::passive || hasNothingForDials(hub)) {
        model.dial = thermalDialFigures(hub);
        return model;
    }
    const Vitals& vitals = hub.vitals();
    const int stop = verdictHeatStop(hub.verdict());
    for (const FanReading& fan : vitals.fans)
        model.rotors.push_back(hub.measuring() == Measuring::done
                                   ? rotorFigures(fan, stop, hub.format())
                                   : withoutVerdict(rotorFigures(fan, stop, hub.format())));
    if (model.rotors.empty())
        model.rotors.push_back(absentRotorFigures());
    if (model.showsSmallRotors()) {
        model.peakFigure = toQString(hub.format().rpm(vitals.peakRPM()));
        model.peakUnit = tr("rpm peak");
    }
    return model;
}

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
                .dials = dialsModel(hub),
                .rotorsTurn = settings.value(Setting::spinRotors)};
    const Verdict& verdict = hub.verdict();
    return {.eyebrow = eyebrowModel(verdict),
            .headline = toQString(verdict.headline),
            .detail = toQString(verdict.detail),
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
