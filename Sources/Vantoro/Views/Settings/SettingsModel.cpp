#include "Views/Settings/SettingsModel.h"

#include "Views/Cores/CoresModel.h"
#include "Views/Shared/Words.h"

#include <algorithm>

namespace vantoro {

namespace {

using Source = ProcessMonitor::Source;

constexpr int relaxedIndex = 2;
constexpr int briskIndex = 4;

const QString& emDash() {
    static const QString dash = QStringLiteral("—");
    return dash;
}

/// Where the value stands among the choices; `otherwise` where it is none of them.
template <class Choices, class Value>
int indexAmong(const Choices& choices, const Value& value, int otherwise) {
    const auto found = std::find(choices.begin(), choices.end(), value);
    return found == choices.end() ? otherwise : static_cast<int>(found - choices.begin());
}

} // namespace

int rateIndexOf(double sampleInterval) {
    return indexAmong(sampleRates, sampleInterval, defaultRateIndex);
}

QString rateLabel(int rateIndex) {
    const double interval = sampleRates.at(static_cast<std::size_t>(rateIndex));
    if (interval < 1)
        return tr("%1 times a second").arg(1 / interval, 0, 'f', 0);
    return interval == 1 ? tr("Every second") : tr("Every %1 seconds").arg(interval);
}

QString rateName(int rateIndex) {
    if (rateIndex < relaxedIndex)
        return tr("Very relaxed");
    if (rateIndex == relaxedIndex)
        return tr("Relaxed");
    if (rateIndex == defaultRateIndex)
        return tr("Default");
    return rateIndex == briskIndex ? tr("Brisk") : tr("Maximum");
}

QString rateNote(int rateIndex, bool costsAreStated) {
    if (rateIndex < relaxedIndex)
        return (costsAreStated ? tr("Around 8% of a CPU core. ") : QString()) +
               tr("Cheapest by far, but a short spike can pass between two samples and never appear at all.");
    if (rateIndex <= defaultRateIndex)
        return tr("Matches the rate the system reports per-process CPU, which is the practical limit on how fresh that "
                  "particular data can be.") +
               (costsAreStated ? tr(" Around 26% of a core.") : QString());
    if (rateIndex == briskIndex)
        return tr("Sensors, cores and processes all refresh once a second.");
    return tr("As fast as the hardware allows. Sensors and per-core figures update several times a second; the process "
              "list still refreshes once a second, because that is the finest cadence the system reports it at. ") +
           (costsAreStated ? tr("Around 45% of a core, and digits step rather than morph — nothing is legible "
                                "re-forming four times a second.")
                           : tr("Digits step rather than morph — nothing is legible re-forming four times a second."));
}

QStringList historyChoiceTexts() {
    return {tr("15 minutes"), tr("30 minutes"), tr("60 minutes")};
}

QStringList appearanceChoiceTexts() {
    return {tr("System"), tr("Light"), tr("Dark")};
}

QStringList unitChoiceTexts() {
    return {tr("Celsius"), tr("Fahrenheit")};
}

QStringList processListChoiceTexts() {
    return {tr("Every process"), tr("Only my own")};
}

QStringList motionChoiceTexts() {
    return {tr("Smooth"), tr("Snappy")};
}

QString motionNote(bool isSmooth, bool costsAreStated) {
    if (!isSmooth)
        return tr("Readings step to their new values the instant they are sampled. Cheapest, and never caught "
                  "mid-animation.");
    return tr("Readings glide to their new values on one shared curve, timed to the update rate.") +
           (costsAreStated ? tr(" Roughly 20% of a CPU core.") : QString());
}

QString rotorNote(bool spins, bool costsAreStated) {
    if (!spins)
        return tr("The rotors are drawn still; the arc around each still shows where the fan sits in its range.");
    return costsAreStated ? tr("The rotors turn at a speed derived from real RPM, about 3% more.")
                          : tr("The rotors turn at a speed derived from real RPM.");
}

QString ownCostText(const OwnCostMeter::Figure& figure) {
    if (!figure.percentOfCore)
        return tr("measuring");
    constexpr double wholeFrom = 10;
    constexpr double megabyte = 1024.0 * 1024;
    const double percent = *figure.percentOfCore;
    const QString core = tr("%1% of a core").arg(percent, 0, 'f', percent < wholeFrom ? 1 : 0);
    return figure.memoryBytes ? tr("%1 · %2 MB").arg(core).arg(*figure.memoryBytes / megabyte, 0, 'f', 0) : core;
}

QString ownCostNote(const OwnCostMeter::Figure& figure) {
    return figure.hasPrograms ? tr("Over the last minute, with the programs it runs for its lists.")
                              : tr("Over the last minute, without the programs it runs for its lists.");
}

QString menuBarLabel(Cooling cooling) {
    return cooling == Cooling::passive ? tr("Show the temperature in the menu bar at all times")
                                       : tr("Show fan speed in the menu bar at all times");
}

QString menuBarNote(Cooling cooling, bool always) {
    if (cooling == Cooling::passive)
        return always ? tr("The chip's temperature stays visible even when the machine is idle.")
                      : tr("The chip's temperature appears only once the machine is warm.");
    return always ? tr("The RPM figure stays visible even when the machine is idle.")
                  : tr("The RPM figure appears only once the fans become audible.");
}

QString processListNote(bool ownOnly, Cooling cooling, Source source, const SourceNames& names) {
    const bool isFanless = cooling == Cooling::passive;
    if (ownOnly) {
        const QString helper = names.streamIsSetuidRoot
                                   ? tr("Vantoro reads the process list with ordinary syscalls and never runs a "
                                        "setuid-root helper, so there is nothing for a managed Mac to block. ")
                                   : tr("Vantoro reads the process list with ordinary syscalls and never runs %1, so "
                                        "there is nothing for a managed machine to block. ")
                                         .arg(names.stream);
        return helper + (isFanless ? tr("Temperatures") : tr("Fans, temperatures")) +
               tr(", power, per-core frequencies, the timeline, the sensors and the verdict are all unaffected — none "
                  "of them were ever privileged. What narrows is the process list itself: you see everything you "
                  "launched, measured exactly, but system services owned by other users appear without figures.");
    }
    const QString who =
        names.streamIsSetuidRoot
            ? tr("Reads the full process list through %1, which ships setuid-root and can therefore see processes "
                 "owned by other users — WindowServer, mds_stores and kernel_task are usually the ones ")
            : tr("Reads the full process list through %1, which comes with Vantoro, needs no special rights and sees "
                 "processes owned by other users — system services and the kernel's own threads are often the ones ");
    QString note = who.arg(names.stream) + (isFanless ? tr("heating the chip") : tr("spinning the fans")) +
                   tr(". If this Mac refuses to run it, Vantoro falls back to syscalls on its own rather than showing "
                      "an empty list.");
    if (source.kind == Source::Kind::ownProcessesOnly && !source.byChoice)
        note += tr("\n\nThat has happened here: %1 would not run, so the list below is your own processes only.")
                    .arg(names.streamForShort);
    return note;
}

QString currentlyReading(Source source, const SourceNames& names) {
    switch (source.kind) {
    case Source::Kind::system:
        return tr("%1 — every process").arg(names.stream);
    case Source::Kind::ownProcessesOnly:
        return source.byChoice ? tr("Syscalls — your processes only")
                               : tr("Syscalls — %1 was blocked on this Mac").arg(names.streamForShort);
    case Source::Kind::starting:
        return tr("first list pending");
    }
    return {};
}

QString dataSources(Source source, const SourceNames& names) {
    const QString processes = source.kind == Source::Kind::system ? names.streamForShort : tr("syscalls");
    return QStringList{names.sensors, names.reports, processes}.join(" · ");
}

QString coresText(const std::vector<Core>& cores) {
    const auto performance = std::ranges::count_if(cores, [](const Core& core) { return core.isPerformance; });
    const auto all = static_cast<qsizetype>(cores.size());
    if (all == 0)
        return emDash();
    if (performance == 0 || performance == all)
        return QString::number(all);
    return coreCounts(cores);
}

SettingsModel settingsModel(SensorHub& hub, const Settings& settings, const SourceNames& names,
                            const std::optional<OwnCostMeter::Figure>& ownCost) {
    const int rate = rateIndexOf(settings.sampleInterval());
    const bool ownOnly = settings.processMonitorMode() == "unprivileged";
    return {.rateIndex = rate,
            .rateLabel = rateLabel(rate),
            .rateName = rateName(rate),
            .rateNote = rateNote(rate, names.costsAreStated),
            .isSmooth = settings.smoothUpdates(),
            .motionNote = motionNote(settings.smoothUpdates(), names.costsAreStated),
            .spinsRotors = settings.spinRotors(),
            .rotorNote = rotorNote(settings.spinRotors(), names.costsAreStated),
            .ownCost = ownCost ? ownCostText(*ownCost) : QString(),
            .ownCostNote = ownCost ? ownCostNote(*ownCost) : QString(),
            .showsFigureAlways = settings.menuBarShowsRPM(),
            .menuBarLabel = menuBarLabel(hub.cooling()),
            .menuBarNote = menuBarNote(hub.cooling(), settings.menuBarShowsRPM()),
            .historyIndex = indexAmong(historyChoicesMinutes, settings.historyMinutes(), 1),
            .appearanceIndex = indexAmong(appearanceChoices, settings.appearance(), 0),
            .unitIndex = indexAmong(unitChoices, settings.temperatureUnit(), 0),
            .processListIndex = ownOnly ? 1 : 0,
            .processListNote = processListNote(ownOnly, hub.cooling(), hub.processSource(), names),
            .currentlyReading = hub.isReplay() ? tr("Replay") : currentlyReading(hub.processSource(), names),
            .machine = toQString(hub.machineName()),
            .cores = coresText(hub.cores()),
            .sensorsFound = toQString(hub.sensorSummary()),
            .dataSources = dataSources(hub.processSource(), names)};
}

} // namespace vantoro
