#include "Views/Settings/SettingsModel.h"

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

using Row = SettingsRowModel;

struct Choice {
    SettingsStore::Value stores;
    QString text;
};

/// A row where one of some values is chosen; what is stored may be none of them.
template <class Value>
Row chooser(Row::Kind kind, const QString& title, const SettingRow<Value>& setting, const Settings& settings,
            const std::vector<Choice>& choices, int otherwise) {
    Row row{.kind = kind, .title = title, .current = otherwise, .key = setting.key};
    const SettingsStore::Value stored = settings.value(setting);
    for (const Choice& choice : choices) {
        if (choice.stores == stored)
            row.current = static_cast<int>(row.choices.size());
        row.choices.append(choice.text);
        row.stores.push_back(choice.stores);
    }
    return row;
}

Row onOff(const QString& title, const FlagSetting& setting, const Settings& settings) {
    return chooser(Row::Kind::onOff, title, setting, settings, {{false, {}}, {true, {}}}, 0);
}

Row noted(Row row, const QString& note) {
    row.note = note;
    return row;
}

Row text(const QString& title, const QString& value) {
    return {.title = title, .value = value};
}

Row rateRow(const Settings& settings, bool costsAreStated) {
    std::vector<Choice> stops;
    for (const double seconds : sampleRates)
        stops.push_back({seconds, {}});
    Row row = chooser(Row::Kind::slider, {}, Setting::sampleInterval, settings, stops, defaultRateIndex);
    row.choices.front() = tr("Slowest");
    row.choices[defaultRateIndex] = tr("Default");
    row.choices.back() = tr("Fastest");
    row.title = rateLabel(row.current);
    row.value = rateName(row.current);
    for (int index = 0; index < static_cast<int>(sampleRates.size()); ++index)
        row.notes.append(rateNote(index, costsAreStated));
    row.note = row.notes[row.current];
    row.spokenName = tr("Sample rate");
    return row;
}

} // namespace

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
    switch (cooling) {
    case Cooling::fans:
        return tr("Show fan speed in the menu bar at all times");
    case Cooling::passive:
    case Cooling::heat:
        return tr("Show the temperature in the menu bar at all times");
    case Cooling::load:
        break;
    }
    return tr("Show the busy share in the menu bar at all times");
}

QString menuBarNote(Cooling cooling, bool always) {
    switch (cooling) {
    case Cooling::fans:
        return always ? tr("The RPM figure stays visible even when the machine is idle.")
                      : tr("The RPM figure appears only once the fans become audible.");
    case Cooling::passive:
    case Cooling::heat:
        return always ? tr("The chip's temperature stays visible even when the machine is idle.")
                      : tr("The chip's temperature appears only once the machine is warm.");
    case Cooling::load:
        break;
    }
    return always ? tr("The busy share stays visible even when the machine is idle.")
                  : tr("The busy share appears only once the machine is busy.");
}

QString processListNote(bool ownOnly, Cooling cooling, Source source, const SourceNames& names) {
    const SystemWords& words = systemWords(names.system);
    const QString unaffected = cooling == Cooling::fans   ? tr("Fans, temperatures, power")
                               : cooling == Cooling::load ? tr("Power")
                                                          : tr("Temperatures, power");
    const QString effect = cooling == Cooling::fans   ? tr("spinning the fans")
                           : cooling == Cooling::load ? tr("keeping the machine busy")
                                                      : tr("heating the chip");
    if (ownOnly) {
        const QString helper = words.isMac()
                                   ? tr("Vantoro reads the process list with ordinary syscalls and never runs a "
                                        "setuid-root helper, so there is nothing for a managed Mac to block. ")
                                   : tr("Vantoro reads the process list with ordinary syscalls and never runs %1, so "
                                        "there is nothing for a managed machine to block. ")
                                         .arg(names.stream);
        return helper + unaffected +
               tr(", per-core frequencies, the timeline, the sensors and the verdict are all unaffected — none "
                  "of them were ever privileged. What narrows is the process list itself: you see everything you "
                  "launched, measured exactly, but system services owned by other users appear without figures.");
    }
    const QString who =
        words.isMac()
            ? tr("Reads the full process list through %1, which ships setuid-root and can therefore see processes "
                 "owned by other users — WindowServer, mds_stores and kernel_task are usually the ones ")
            : tr("Reads the full process list through %1, which comes with Vantoro, needs no special rights and sees "
                 "processes owned by other users — system services and the kernel's own threads are often the ones ");
    QString note = who.arg(names.stream) + effect +
                   tr(". If %1 refuses to run it, Vantoro falls back to syscalls on its own rather than showing "
                      "an empty list.")
                       .arg(toQString(words.thisMachine));
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
                               : tr("Syscalls — %1 was blocked on %2")
                                     .arg(names.streamForShort, toQString(systemWords(names.system).thisMachine));
    case Source::Kind::starting:
        return tr("first list pending");
    }
    return {};
}

QString dataSources(Source source, const SourceNames& names) {
    const QString processes = source.kind == Source::Kind::system ? names.streamForShort : tr("syscalls");
    return QStringList{names.sensors, names.reports, processes}.join(" · ");
}

QString dataSources(const SensorHub& hub, const SourceNames& own) {
    const SourceNames names = sourcesShown(hub, own);
    return hub.isReplay() && !hub.words().isMac() ? QStringList{names.sensors, names.reports}.join(" · ")
                                                  : dataSources(hub.processSource(), names);
}

QString coresText(const std::vector<Core>& cores) {
    return cores.empty() ? emDash() : coreCounts(cores);
}

std::vector<SettingsGroupModel> settingsModel(const SensorHub& hub, const Settings& settings, const SourceNames& own,
                                              const std::optional<OwnCostMeter::Figure>& ownCost) {
    using Kind = Row::Kind;
    const SourceNames names = sourcesShown(hub, own);
    const SystemWords& words = hub.words();
    const bool costs = names.costsAreStated;
    const Cooling cooling = hub.cooling();
    const Source source = hub.processSource();
    Row itself = text(tr("Vantoro itself"), ownCost ? ownCostText(*ownCost) : QString());
    itself.note = ownCost ? ownCostNote(*ownCost) : QString();
    itself.isShown = ownCost.has_value();
    Row rotors = noted(onOff(tr("Spin the fan rotors"), Setting::spinRotors, settings),
                       rotorNote(settings.value(Setting::spinRotors), costs));
    rotors.isShown = words.isMac() || cooling == Cooling::fans;
    const Row motion = chooser(Kind::segments, tr("Motion of readings"), Setting::smoothUpdates, settings,
                               {{true, tr("Smooth")}, {false, tr("Snappy")}}, 0);
    const Row history = chooser(Kind::popUp, tr("Keep history for"), Setting::historyMinutes, settings,
                                {{15.0, tr("15 minutes")}, {30.0, tr("30 minutes")}, {60.0, tr("60 minutes")}}, 1);
    const Row appearance = chooser(Kind::segments, tr("Appearance"), Setting::appearance, settings,
                                   {{"system", tr("System")}, {"light", tr("Light")}, {"dark", tr("Dark")}}, 0);
    Row unit = chooser(Kind::segments, tr("Temperature"), Setting::temperatureUnit, settings,
                       {{"C", tr("Celsius")}, {"F", tr("Fahrenheit")}}, 0);
    unit.isShown = words.isMac() || cooling != Cooling::load ||
                   std::ranges::any_of(hub.extremes().temps, [](const auto& span) { return span.has_value(); });
    const Row processes = chooser(Kind::popUp, tr("Process list"), Setting::processMonitorMode, settings,
                                  {{"auto", tr("Every process")}, {"unprivileged", tr("Only my own")}}, 0);
    return {
        {tr("Sample rate"),
         {rateRow(settings, costs), noted(motion, motionNote(settings.value(Setting::smoothUpdates), costs)), rotors,
          itself}},
        {tr("Menu bar"),
         {noted(onOff(menuBarLabel(cooling), Setting::menuBarShowsRPM, settings),
                menuBarNote(cooling, settings.value(Setting::menuBarShowsRPM)))}},
        {tr("General"), {history, appearance, unit}},
        {tr("Processes"),
         {noted(processes, processListNote(processes.current == 1, cooling, source, names)),
          text(tr("Currently reading"), hub.isReplay() ? tr("Replay") : currentlyReading(source, names))}},
        {tr("About %1").arg(toQString(words.thisMachine)),
         {text(tr("Machine"), toQString(hub.machineName())), text(tr("Cores"), coresText(hub.cores())),
          text(tr("Sensors found"), toQString(hub.sensorSummary())), text(tr("Data sources"), dataSources(hub, own))}}};
}

} // namespace vantoro
