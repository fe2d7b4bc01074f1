#include "Views/Timeline/TimelineModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantoro {

namespace {

constexpr double coolestShown = 30;
constexpr double hottestShown = 100;

std::vector<ChartKind> chartsOf(Cooling cooling) {
    if (isJudgedByHeat(cooling))
        return {ChartKind::heat, ChartKind::processor, ChartKind::power};
    if (cooling == Cooling::load)
        return {ChartKind::busy, ChartKind::memory, ChartKind::waiting, ChartKind::power};
    return {ChartKind::fans, ChartKind::temperature, ChartKind::processor, ChartKind::power};
}

/// Whether there is a sensor for it: one that was never seen is taken not to exist.
bool hasSensor(ChartKind kind, const SensorHub& hub) {
    switch (kind) {
    case ChartKind::fans:
        return !hub.extremes().fans.empty();
    case ChartKind::temperature:
    case ChartKind::heat:
        return hub.extremes().has(SensorFamily::chip);
    case ChartKind::memory:
        return hub.snapshot().memory.totalBytes > 0;
    case ChartKind::waiting:
        return hub.snapshot().stalls != StallShares();
    case ChartKind::busy:
    case ChartKind::processor:
        return true;
    case ChartKind::power:
        break;
    }
    return hub.extremes().systemWatts.has_value();
}

double pressurePercent(const MemoryLoad& memory) {
    return std::clamp(DiagnosisEngine::memoryPressure(memory), 0.0, 1.0) * 100;
}

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// The points of a figure that may be 0 and still be known; `unknown` stands for those that are not.
template <class Figure>
std::vector<TimePoint> knownPoints(const History& history, Figure figure) {
    std::vector<TimePoint> points = thinnedSeries(history, figure);
    std::erase_if(points, [](const TimePoint& point) { return std::isnan(point.value); });
    return points;
}

std::vector<TimePoint> memoryPoints(const History& history) {
    return knownPoints(history, [](const Snapshot& snapshot) {
        return snapshot.memory.totalBytes > 0 ? pressurePercent(snapshot.memory) : unknown;
    });
}

/// Of what work waited for, the greatest share of the time.
std::vector<TimePoint> waitingPoints(const History& history) {
    return knownPoints(history, [](const Snapshot& snapshot) {
        const auto stalls = DiagnosisEngine::stallsOf(snapshot.stalls);
        return stalls.empty() ? unknown : stalls.front().percent;
    });
}

/// In steps of 10 per cent; what is not felt stays low.
double waitingCeiling(const std::vector<TimePoint>& waiting) {
    double peak = 40;
    for (const TimePoint& point : waiting)
        peak = std::max(peak, std::min(point.value, 100.0));
    return std::ceil(peak / 10) * 10;
}

/// Without limits nobody can tell how hard a fan works.
bool knowsLimits(const Snapshot& snapshot) {
    return std::ranges::any_of(snapshot.fans, [](const FanReading& fan) { return fan.maxRPM - fan.minRPM > 1; });
}

QString emptyTextOf(const ChartModel& chart, const Snapshot& now) {
    const auto isEmpty = [](const ChartLine& line) { return line.points.empty(); };
    if (!std::ranges::all_of(chart.lines, isEmpty))
        return {};
    if (chart.kind == ChartKind::processor || chart.kind == ChartKind::busy)
        return tr("Idle all this time.");
    if (chart.kind != ChartKind::fans || now.fans.empty())
        return tr("Nothing was reported in this time.");
    return knowsLimits(now) ? tr("The fans stood still, or ran at their floor, all this time.")
                            : tr("How hard the fans work is not known: they report no limits.");
}

/// What can be done with the charts, after what the first of them says of itself.
QString withHint(const QString& caption, bool isPinned) {
    const QString hint = isPinned ? tr("arrow keys step · Esc lets go") : tr("hover to rewind, click to keep");
    return caption.isEmpty() ? hint : caption + tr(" · ") + hint;
}

/// When the present climb began, and how the chart says so.
struct RampMark {
    UnixSeconds time = 0;
    QString text;
};

std::vector<ScaleMark> percentScale() {
    return {{100, tr("100%")}, {50, "50"}, {0, "0"}};
}

std::vector<ScaleMark> temperatureScale(const std::vector<double>& celsius, const Format& format) {
    std::vector<ScaleMark> scale;
    for (const double degrees : celsius)
        scale.push_back({degrees, toQString(format.degrees(degrees))});
    return scale;
}

std::vector<ScaleMark> powerScale(double ceiling) {
    return {{ceiling, tr("%1 W").arg(ceiling)}, {ceiling / 2, QString::number(ceiling / 2)}, {0, "0"}};
}

std::vector<ChartLine> temperatureLines(const ChartSeries& series, bool fillsArea) {
    // The temperatures at which the heat load passes from one band to the next.
    static const std::vector<double> bands{50, 65, 80, 90};
    return {{.points = measured(series.temp), .stroke = ChartLine::Stroke::dashed, .bands = bands},
            {.points = measured(series.chip), .fillsArea = fillsArea}};
}

ChartModel chartOf(ChartKind kind, const SensorHub& hub) {
    /// The shares at which the load passes from one band to the next.
    static const std::vector<double> bands{6, 22, 48, 78};
    const ChartSeries& series = hub.series();
    const Format& format = hub.format();
    const int lower = hub.cooling() == Cooling::fans ? 162 : 200;
    switch (kind) {
    case ChartKind::fans:
        return {.kind = kind,
                .title = tr("Fans"),
                .height = 190,
                .scale = percentScale(),
                .lines = {{.points = measured(series.fan), .bands = bands, .fillsArea = true}}};
    case ChartKind::busy:
        return {.kind = kind,
                .title = tr("Busy"),
                .height = 300,
                .scale = percentScale(),
                .lines = {{.points = measured(series.cpu), .bands = bands, .fillsArea = true}}};
    case ChartKind::memory:
        return {.kind = kind,
                .title = tr("Memory"),
                .height = lower,
                .scale = percentScale(),
                .lines = {{.points = memoryPoints(hub.history()), .fillsArea = true}}};
    case ChartKind::waiting: {
        std::vector<TimePoint> points = waitingPoints(hub.history());
        const double ceiling = waitingCeiling(points);
        return {.kind = kind,
                .title = tr("Waiting"),
                .caption = tr("share of the time"),
                .height = lower,
                .most = ceiling,
                .scale = {{ceiling, tr("%1%").arg(ceiling)}, {ceiling / 2, QString::number(ceiling / 2)}, {0, "0"}},
                .lines = {{.points = std::move(points), .fillsArea = true}}};
    }
    case ChartKind::temperature:
        return {.kind = kind,
                .title = tr("Temperature"),
                .caption = tr("whole chip · hottest core dashed"),
                .height = 190,
                .least = coolestShown,
                .most = hottestShown,
                .scale = temperatureScale({100, 65, 30}, format),
                .lines = temperatureLines(series, false)};
    case ChartKind::heat:
        return {.kind = kind,
                .title = tr("Heat"),
                .caption = tr("whole chip · hottest core dashed"),
                .height = 300,
                .least = coolestShown,
                .most = hottestShown,
                .scale = temperatureScale({100, 80, 65, 50, 30}, format),
                .lines = temperatureLines(series, true)};
    case ChartKind::processor:
        return {.kind = kind,
                .title = tr("Processor"),
                .height = lower,
                .scale = percentScale(),
                .lines = {{.points = measured(series.cpu), .fillsArea = true}}};
    case ChartKind::power:
        break;
    }
    const double ceiling = powerCeiling(series.power);
    return {.kind = kind,
            .title = tr("Power"),
            .height = lower,
            .most = ceiling,
            .scale = powerScale(ceiling),
            .lines = {{.points = measured(series.power), .fillsArea = true}}};
}

std::optional<RampMark> rampMark(const SensorHub& hub, const TimeSpan& shown) {
    const double sustained = hub.verdict().sustainedFor;
    const UnixSeconds began = hub.snapshot().timestamp - sustained;
    if (!(sustained > 0) || !shown.holds(began))
        return std::nullopt;
    const QString time = toQString(hub.format().timeOfDay(began));
    const QString what = hub.cooling() == Cooling::fans   ? tr("fans began climbing %1")
                         : hub.cooling() == Cooling::load ? tr("load rose %1")
                                                          : tr("chip began heating up %1");
    return RampMark{began, what.arg(time)};
}

/// Times at multiples of so many whole minutes, about a fifth of the span, and "now" at the end: as time goes on they
/// move with the lines, and never from one minute to the next.
std::vector<TimeMark> timeMarks(const TimeSpan& shown, const Format& format) {
    constexpr double minute = 60;
    constexpr double wanted = 5;
    const double step = std::max(1.0, std::round(shown.seconds() / wanted / minute)) * minute;
    std::vector<TimeMark> marks;
    for (double time = std::ceil(shown.first / step) * step; time < shown.last; time += step)
        marks.push_back({time, toQString(format.clockFace(time))});
    marks.push_back({shown.last, tr("now")});
    return marks;
}

QString percent(double value) {
    return toQString(DiagnosisEngine::pct(value));
}

QString watts(double watts) {
    return watts > 0 ? tr("%1 W").arg(std::round(watts)) : QStringLiteral("—");
}

ChartReading readingOf(ChartKind kind, const Snapshot& snapshot, const Format& format) {
    const auto plain = [](const QString& value) { return ChartReading{.value = value, .spokenValue = value}; };
    switch (kind) {
    case ChartKind::fans:
        return plain(knowsLimits(snapshot) ? percent(snapshot.fanLoad() * 100) : QStringLiteral("—"));
    case ChartKind::temperature:
    case ChartKind::heat: {
        if (!(snapshot.temps.socMean > 0 || snapshot.temps.soc > 0))
            return plain(QStringLiteral("—"));
        const QString chip = toQString(format.temperature(snapshot.temps.socMean));
        const QString hottest = toQString(format.temperature(snapshot.temps.soc));
        return {.value = tr("%1 · %2").arg(chip, hottest),
                .spokenValue = tr("whole chip %1, hottest core %2").arg(chip, hottest)};
    }
    case ChartKind::memory: {
        if (snapshot.memory.totalBytes == 0)
            return plain(QStringLiteral("—"));
        const QString amount = toQString(DiagnosisEngine::memoryText(snapshot.memory));
        const QString share = percent(pressurePercent(snapshot.memory));
        return plain(amount.isEmpty() ? share : share + tr(" · ") + amount);
    }
    case ChartKind::waiting: {
        const auto stalls = DiagnosisEngine::stallsOf(snapshot.stalls);
        if (stalls.empty())
            return plain(QStringLiteral("—"));
        const QString share = percent(stalls.front().percent);
        return plain(stalls.front().percent < 0.5
                         ? share
                         : tr("%1 · for %2").arg(share, tr(std::string(stalls.front().waitedFor).c_str())));
    }
    case ChartKind::busy:
    case ChartKind::processor:
        return plain(percent(std::clamp(DiagnosisEngine::busyPercent(snapshot.cpu), 0.0, 100.0)));
    case ChartKind::power:
        break;
    }
    return plain(watts(snapshot.power.systemWatts));
}

/// What the snapshot holds for each line of the chart, in their order; above 0 where it was measured.
std::vector<double> valuesOfLines(ChartKind kind, const Snapshot& snapshot) {
    switch (kind) {
    case ChartKind::fans:
        return {snapshot.fanLoad()};
    case ChartKind::temperature:
    case ChartKind::heat:
        return {snapshot.temps.soc, snapshot.temps.socMean};
    case ChartKind::memory:
        return {static_cast<double>(snapshot.memory.totalBytes)};
    case ChartKind::waiting:
        return {snapshot.stalls != StallShares() ? 1.0 : 0.0};
    case ChartKind::busy:
    case ChartKind::processor:
        return {DiagnosisEngine::busyPercent(snapshot.cpu)};
    case ChartKind::power:
        break;
    }
    return {snapshot.power.systemWatts};
}

/// Those that are left take the room of those without a sensor.
void fillHeight(std::vector<ChartModel>& charts) {
    constexpr int wanted = 700;
    int all = 0;
    for (const ChartModel& chart : charts)
        all += chart.height;
    if (all >= wanted)
        return;
    int left = wanted;
    for (ChartModel& chart : charts)
        left -= chart.height = chart.height * wanted / all;
    charts.front().height += left;
}

} // namespace

double powerCeiling(const std::vector<TimePoint>& power) {
    double peak = 0;
    for (const TimePoint& point : power)
        peak = std::max(peak, point.value);
    return std::max(20.0, std::ceil(1.2 * peak / 10) * 10);
}

TimelineModel timelineModel(const SensorHub& hub, bool isPinned) {
    const ChartSeries& series = hub.series();
    const std::optional<TimeSpan> shown = span(series.cpu);
    if (!shown || shown->seconds() < gatheringSeconds)
        return {.notice = tr("Gathering history. The first minute or so is needed before trends mean anything."),
                .noticeTitle = tr("Timeline")};
    TimelineModel model{.span = shown, .times = timeMarks(*shown, hub.format())};
    const std::optional<RampMark> ramp = rampMark(hub, *shown);
    for (const ChartKind kind : chartsOf(hub.cooling())) {
        if (!hasSensor(kind, hub))
            continue;
        ChartModel chart = chartOf(kind, hub);
        chart.emptyText = emptyTextOf(chart, hub.snapshot());
        if (model.charts.empty())
            chart.caption = withHint(chart.caption, isPinned);
        chart.spokenName = tr("%1, last 15 minutes").arg(chart.title);
        if (ramp) {
            chart.ramp = ramp->time;
            chart.rampText = model.charts.empty() ? ramp->text : QString();
        }
        model.charts.push_back(std::move(chart));
    }
    fillHeight(model.charts);
    return model;
}

std::vector<ChartReading> chartReadings(const TimelineModel& model, const Snapshot& snapshot,
                                        const std::optional<Scrub>& scrub, const Format& format) {
    std::vector<ChartReading> readings;
    for (const ChartModel& chart : model.charts) {
        ChartReading reading = readingOf(chart.kind, snapshot, format);
        const QString when = scrub ? tr("At %1").arg(toQString(format.timeWithSeconds(snapshot.timestamp))) : tr("Now");
        reading.spokenValue = tr("%1: %2").arg(when, reading.spokenValue);
        reading.isPinned = scrub && scrub->isPinned;
        if (reading.isPinned)
            reading.spokenValue = tr("%1, pinned").arg(reading.spokenValue);
        const std::vector<double> values = valuesOfLines(chart.kind, snapshot);
        for (std::size_t i = 0; i < chart.lines.size(); ++i)
            reading.rings.push_back(scrub && values[i] > 0 ? valueAt(chart.lines[i].points, scrub->time)
                                                           : std::nullopt);
        readings.push_back(std::move(reading));
    }
    return readings;
}

} // namespace vantoro
