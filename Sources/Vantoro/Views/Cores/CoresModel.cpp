#include "Views/Cores/CoresModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Live/SensorHub.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace vantoro {

namespace {

constexpr double rulerLeast = 20;
constexpr double rulerMost = 110;

double rulerPosition(double celsius) {
    return std::clamp((celsius - rulerLeast) / (rulerMost - rulerLeast), 0.0, 1.0);
}

int heatStop(double celsius) {
    return static_cast<int>(DiagnosisEngine::stressLevel(Snapshot::heatLoad(celsius)));
}

int wholePercent(double share) {
    return static_cast<int>(share * 100);
}

/// A load is known from the second look on: until then it is not 0 but unknown.
void forgetLoads(CoreCluster& cluster) {
    cluster.busyText = tr("Measuring…");
    for (CoreFigures& core : cluster.cores) {
        core.busyText = QStringLiteral("—");
        core.spokenValue = cluster.busyText;
    }
}

/// Where all cores are alike there is no kind to name them by.
void nameAlike(CoresModel& model) {
    int number = 0;
    for (CoreFigures& core : model.clusters.front().cores)
        core.label = tr("Core %1").arg(number++);
}

QString dieCaption(const SystemWords& words) {
    return words.isMac() ? tr("Every sensor that is actively measuring, coolest to hottest. The die carries several "
                              "sensors per core and they warm together, so this shows where the heat sits rather than "
                              "which core is hot. Blocks that power down report a placeholder and are left out.")
                         : tr("Every sensor of the processor that is measuring, coolest to hottest. Not every core has "
                              "one of its own, and they warm together: this shows where the heat sits rather than "
                              "which core is hot.");
}

QString whyNoSensors(const SensorHub& hub) {
    if (hub.lacksSingleSensors())
        return tr("This recording does not hold the die's single sensors.");
    if (!hub.isReplay() && !hub.sensorsAvailable())
        return tr("The sensors could not be read.");
    return tr("No temperatures of the die are reported here.");
}

} // namespace

int columnCount(int cores) {
    constexpr int wanted = 8;
    if (cores == 0)
        return wanted;
    std::optional<int> best;
    for (int divisor = 3; divisor <= 10; ++divisor)
        if (cores % divisor == 0 && (!best || std::abs(divisor - wanted) < std::abs(*best - wanted)))
            best = divisor;
    return best.value_or(std::min(cores, wanted));
}

int narrowColumnCount(int cores, double gridWidth) {
    constexpr double gap = 8;
    constexpr double leastWidth = 112;
    const int fitting = std::max(1, static_cast<int>((gridWidth + gap) / (leastWidth + gap)));
    if (cores <= fitting)
        return std::max(1, cores);
    int columns = fitting;
    while (columns > 1 && cores % columns != 0)
        --columns;
    // A prime number of cores in one column would be a very long list.
    return columns > 1 ? columns : fitting;
}

CoreFigures coreFigures(const Core& core, double ceiling) {
    constexpr double busyFrom = 0.55;
    constexpr double leastFill = 0.001;
    const QString frequency = toQString(Format::megahertz(core.megahertz));
    CoreFigures figures{.label = toQString(core.label()),
                        .busyText = QString("%1%").arg(wholePercent(core.busy)),
                        .frequencyText = frequency,
                        .busy = std::clamp(core.busy, 0.0, 1.0),
                        .frequencyFill = std::nullopt,
                        .isHighlighted = core.busy > busyFrom,
                        .spokenValue = tr("%1 percent busy at %2").arg(wholePercent(core.busy)).arg(frequency)};
    if (ceiling > 0)
        figures.frequencyFill = std::clamp(core.megahertz / ceiling, leastFill, 1.0);
    return figures;
}

CoreCluster clusterSummary(const std::vector<Core>& cores, double ceiling) {
    const double sum =
        std::accumulate(cores.begin(), cores.end(), 0.0, [](double all, const Core& core) { return all + core.busy; });
    const double mean = cores.empty() ? 0 : sum / static_cast<double>(cores.size());
    CoreCluster cluster;
    cluster.busyText = tr("%1% busy").arg(wholePercent(mean));
    if (ceiling > 0)
        cluster.ceilingText = tr("· up to %1").arg(toQString(Format::megahertz(ceiling)));
    for (const Core& core : cores)
        cluster.cores.push_back(coreFigures(core, ceiling));
    return cluster;
}

Spread spreadOf(const std::vector<double>& ascendingCelsius, bool areSilent, const QString& caption,
                const Format& format) {
    const std::size_t count = ascendingCelsius.size();
    Spread spread;
    spread.caption = caption;
    if (count == 0) {
        spread.placeholder = areSilent ? tr("None of its sensors measures at the moment.") : tr("Measuring…");
        spread.spokenValue = spread.placeholder;
        return spread;
    }
    spread.subtitle = count == 1 ? tr("1 sensor") : tr("%1 sensors").arg(count);
    const double mean =
        std::accumulate(ascendingCelsius.begin(), ascendingCelsius.end(), 0.0) / static_cast<double>(count);
    const auto temperature = [&format](double celsius) { return toQString(format.temperature(celsius)); };
    spread.figures = {Spread::Figure{tr("coolest"), temperature(ascendingCelsius.front())},
                      Spread::Figure{tr("median"), temperature(ascendingCelsius[count / 2])},
                      Spread::Figure{tr("average"), temperature(mean)},
                      Spread::Figure{tr("hottest"), temperature(ascendingCelsius.back())}};
    QStringList spoken;
    for (const Spread::Figure& figure : spread.figures)
        spoken.append(figure.label + u' ' + figure.value);
    spread.spokenValue = spoken.join(", ");
    for (std::size_t i = 0; i < count; ++i)
        spread.ticks.push_back({.position = rulerPosition(ascendingCelsius[i]),
                                .heatStop = heatStop(ascendingCelsius[i]),
                                .isExtreme = i == 0 || i + 1 == count});
    for (const double celsius : {50.0, 65.0, 80.0, 90.0})
        spread.marks.push_back({.position = rulerPosition(celsius), .text = toQString(format.degrees(celsius))});
    return spread;
}

CoresModel coresModel(const SensorHub& hub) {
    std::vector<Core> performance;
    std::vector<Core> efficiency;
    for (const Core& core : hub.cores())
        (core.isPerformance ? performance : efficiency).push_back(core);
    CoresModel model;
    model.coreCount = static_cast<int>(hub.cores().size());
    if (const auto processors = hub.processors())
        model.subtitle =
            !hub.cores().empty() ? coreCounts(hub.cores())
            : processors->performance == 0 || processors->efficiency == 0
                ? alikeCores(processors->performance + processors->efficiency)
                : tr("%1 performance · %2 efficiency").arg(processors->performance).arg(processors->efficiency);
    if (hub.cores().empty())
        model.coresNote = hub.isReplay() ? tr("This recording does not hold what each core did.")
                                         : tr("The processor cores could not be read.");
    if (!performance.empty())
        model.clusters.push_back(clusterSummary(performance, hub.coreCeilingMHz(true)));
    if (!efficiency.empty())
        model.clusters.push_back(clusterSummary(efficiency, hub.coreCeilingMHz(false)));
    if (!hub.coresAreMeasured())
        for (CoreCluster& cluster : model.clusters)
            forgetLoads(cluster);
    if (!hub.words().isMac() && model.clusters.size() == 1)
        nameAlike(model);
    // Where no chip's temperature is known there is nothing to say of heat.
    if (hub.cooling() == Cooling::load)
        return model;
    if (hub.hasDieSensors())
        model.die = spreadOf(hub.dieSensors(), hub.dieSensorsAreSilent(), dieCaption(hub.words()), hub.format());
    else
        model.sensorsNote = whyNoSensors(hub);
    if (hub.hasGPUSensors())
        model.gpu = spreadOf(hub.gpuSensors(), hub.gpuSensorsAreSilent(),
                             tr("The same view across the graphics cores."), hub.format());
    return model;
}

} // namespace vantoro
