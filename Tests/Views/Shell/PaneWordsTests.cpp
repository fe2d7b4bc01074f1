// What the panes, the settings and the updates say on machines of every kind: Macs and other computers, with and
// without each of the figures that a machine may lack.
#include "Model/Updates/Updates.h"
#include "Views/Cores/CoresModel.h"
#include "Views/Report/ReportModel.h"
#include "Views/Sensors/SensorRow.h"
#include "Views/Sensors/SensorsView.h"
#include "Views/Settings/SettingsModel.h"
#include "Views/Timeline/RewindModel.h"
#include "Views/Timeline/TimelineModel.h"
#include "Views/Updates/UpdatesModel.h"

#include "Design/Panel.h"
#include "Views/Stage.h"

#include <QRegularExpression>

namespace vantoro {
namespace {

using testing::Stage;

constexpr std::array coolings{Cooling::fans, Cooling::passive, Cooling::heat, Cooling::load};
constexpr UnixSeconds start = 1772374980;

/// A minute and a half of a machine that tells all it can in this cooling, or as little; busy after half a minute.
void feed(Stage& stage, SystemKind system, Cooling cooling, bool tellsAll) {
    stage.hub.beginReplay("ThinkPad", RecordedProcessors{.performance = 4, .efficiency = 0}, system);
    for (int i = 0; i < 46; ++i) {
        const double idle = i < 15 ? 96 : 4;
        Snapshot now{.timestamp = start + 2 * i,
                     .cpu = {.userPercent = 98 - idle, .systemPercent = 2, .idlePercent = idle},
                     .cooling = cooling};
        if (cooling != Cooling::load) {
            now.chipHeat = i < 15 ? 45 : 92;
            now.temps = {.soc = now.chipHeat, .socMean = now.chipHeat - 4};
        }
        if (cooling == Cooling::fans)
            now.fans = {{.index = 0, .rpm = i < 15 ? 0.0 : 2900, .minRPM = 0, .maxRPM = 3200, .name = "CPU fan"}};
        if (cooling == Cooling::heat && tellsAll)
            now.fans = {{.index = 0, .rpm = 1435, .name = "Rear fan"}, {.index = 1, .rpm = 0}};
        if (tellsAll) {
            now.power = {.systemWatts = 30, .adapterWatts = 31, .batteryWatts = 1, .gpuWatts = 2, .cpuWatts = 20};
            now.memory = {.usedBytes = 9ULL << 30, .totalBytes = 16ULL << 30, .availableBytes = 4ULL << 30};
            now.stalls = {.cpu = 30, .memory = 18, .io = 0};
            now.gpuPercent = 12;
            now.throttle = {{ThrottleReason::temperature, ThrottleReason::power}};
            now.cores = {{{.busyPercent = 90}, {.busyPercent = 80}}};
        }
        now.processes = {
            {ProcessIdentity{
                 .pid = 7, .rawName = "cc1plus", .displayName = "cc1plus", .kind = ProcessKind::commandLine},
             100 - idle}};
        stage.hub.accept(std::move(now));
    }
}

QString ofRows(const std::vector<SensorRowModel>& rows) {
    QString text;
    for (const SensorRowModel& row : rows)
        if (row.isShown)
            text += row.label + u'\n' + row.spokenValue + u'\n' + row.toolTip + u'\n';
    return text;
}

QString ofCores(const Stage& stage) {
    const CoresModel cores = coresModel(stage.hub);
    QString text = cores.subtitle + u'\n' + cores.coresNote + u'\n' + cores.sensorsNote + u'\n';
    for (const CoreCluster& cluster : cores.clusters)
        for (const CoreFigures& core : cluster.cores)
            text += core.label + u'\n' + core.spokenValue + u'\n';
    for (const auto& spread : {cores.die, cores.gpu})
        text += spread ? spread->caption + u'\n' : QString();
    return text;
}

QString ofTimeline(const Stage& stage) {
    QString text;
    const TimelineModel model = timelineModel(stage.hub);
    for (const ChartModel& chart : model.charts)
        text += QStringList{chart.spokenName, chart.caption, chart.emptyText, chart.rampText}.join(u'\n') + u'\n';
    for (const ChartReading& reading : chartReadings(model, stage.hub.snapshot(), {}, stage.hub.format()))
        text += reading.value + u'\n' + reading.spokenValue + u'\n';
    for (const RewindModel::Reading& reading : rewindModel(&stage.hub.snapshot(), false, stage.hub.format()).readings)
        text += reading.label + u' ' + reading.value + u'\n';
    return text;
}

QString ofSettings(const Stage& stage) {
    QString text;
    for (const SettingsGroupModel& group : settingsModel(stage.hub, stage.settings, {}))
        for (const SettingsRowModel& row : group.rows)
            if (row.isShown)
                text += QStringList{group.title,           row.title,     row.value, row.note, row.choices.join(u'\n'),
                                    row.notes.join(u'\n'), row.spokenName}
                            .join(u'\n') +
                        u'\n';
    return text;
}

QString ofSensors(const Stage& stage) {
    const SensorsModel model = sensorsModel(stage.hub, {}, {});
    return model.plainText() + u'\n' + ofRows(model.temperatures) + ofRows(model.power) + ofRows(model.waiting) +
           model.processor.spokenValue + u'\n' + model.memory.spokenValue;
}

/// What of the machine itself depends on no figure.
QString ofSystem(SystemKind system) {
    using Source = ProcessMonitor::Source;
    const SourceNames names =
        system == SystemKind::macos ? SourceNames() : SourceNames{.system = system, .stream = "vantoro-top"};
    QString text = privacyNote(true, systemWords(system)) + privacyNote(false, systemWords(system));
    for (const Cooling cooling : coolings)
        for (const bool ownOnly : {false, true})
            text += processListNote(ownOnly, cooling, {Source::Kind::ownProcessesOnly, ownOnly}, names) +
                    currentlyReading({Source::Kind::ownProcessesOnly, ownOnly}, names);
    for (int kind = 0; kind <= static_cast<int>(UpdatePhase::Kind::failed); ++kind) {
        const UpdateState state{
            .phase = {.kind = static_cast<UpdatePhase::Kind>(kind), .release = Release{"1.3", "130", {}}},
            .system = system};
        text += updateChip(state).text + updatesGroup(state).note;
    }
    for (const int code : {SparkleCode::authenticationFailure, SparkleCode::signature, SparkleCode::download})
        text += toQString(Updates::describe({.domain = std::string(sparkleErrorDomain), .code = code}, system).detail);
    return text;
}

/// The first place where the text says so, with what stands around it.
std::string found(const QString& text, const char* pattern) {
    const QRegularExpressionMatch match = QRegularExpression(pattern).match(text);
    return match.hasMatch() ? text.mid(std::max<qsizetype>(0, match.capturedStart() - 40), 100).toStdString() : "";
}

TEST(PaneWords, AComputerIsNotSpokenOfAsAMac) {
    constexpr const char* wordsOfAMac =
        "\\bMac\\b|macOS|Apple|IOReport|\\bSMC\\b|setuid|charger brick|Spotlight|Finder|"
        "Applications|WindowServer|\\bLeft\\b|\\b0 efficiency";
    for (const Cooling cooling : coolings)
        for (const bool tellsAll : {false, true}) {
            Stage stage;
            feed(stage, SystemKind::gnuLinux, cooling, tellsAll);
            for (const QString& text : {ofCores(stage), ofTimeline(stage), ofSensors(stage), ofSettings(stage),
                                        reportModel(stage.hub).plainText})
                EXPECT_EQ(found(text, wordsOfAMac), "") << static_cast<int>(cooling);
            EXPECT_NE(found(ofSettings(stage), "About this computer"), "");
        }
    EXPECT_EQ(found(ofSystem(SystemKind::gnuLinux), wordsOfAMac), "");
    const QString mac = ofSystem(SystemKind::macos);
    for (const char* const said :
         {"stays on this Mac\\.", "If this Mac refuses", "blocked on this Mac", "a newer macOS",
          "nothing about this Mac goes", "Applications folder", "nothing for a managed Mac"})
        EXPECT_NE(found(mac, said), "") << said;
}

TEST(PaneWords, WhereOnlyWorkIsKnownNothingIsSaidOfHeat) {
    for (const SystemKind system : {SystemKind::macos, SystemKind::gnuLinux})
        for (const bool tellsAll : {false, true}) {
            Stage stage;
            feed(stage, system, Cooling::load, tellsAll);
            EXPECT_EQ(
                found(ofCores(stage) + ofTimeline(stage), "[Hh]eat|\\b[Ff]an|°|[Tt]emperature|[Tt]hermal|chip|[Aa]ir"),
                "");
            EXPECT_NE(found(ofTimeline(stage), "load rose \\d"), "");
        }
    Stage stage;
    feed(stage, SystemKind::gnuLinux, Cooling::load, true);
    QString sensors = ofSensors(stage);
    EXPECT_TRUE(sensors.contains("This computer reports no temperatures or fans."));
    sensors.remove("This computer reports no temperatures or fans.").remove("Slowed down by  temperature");
    EXPECT_EQ(found(sensors.remove("temperature, power limit"), "[Hh]eat|\\b[Ff]an|°|emperature|[Tt]hermal"), "");
    EXPECT_EQ(found(ofSettings(stage), "rotor|RPM|[Ff]ans?\\b"), "");
    EXPECT_NE(found(ofSettings(stage), "Show the busy share in the menu bar at all times"), "");
}

TEST(PaneWords, WhatAComputerNeverToldHasNoRow) {
    Stage stage;
    feed(stage, SystemKind::gnuLinux, Cooling::load, false);
    const SensorsModel model = sensorsModel(stage.hub, {}, {});
    EXPECT_EQ(model.complaint, "This computer reports no temperatures, fans or power.");
    EXPECT_FALSE(model.fans || model.pressure || SensorsModel::anyShown(model.temperatures) ||
                 SensorsModel::anyShown(model.power) || SensorsModel::anyShown(model.waiting));
    EXPECT_FALSE(model.plainText().contains("Power\n") || model.plainText().contains("Slowed"));
    SensorsView view(stage.context);
    stage.picture(view, {1040, 778});
    QStringList titles;
    for (const Panel* const panel : view.findChildren<Panel*>())
        if (panel->isVisible())
            titles.append(panel->title());
    EXPECT_EQ(titles, (QStringList{"Processor", "Memory"}));
    const auto left = [&view](const char* title) {
        for (const Panel* const panel : view.findChildren<Panel*>())
            if (panel->title() == title)
                return panel->mapTo(&view, QPoint()).x();
        return -1;
    };
    EXPECT_LT(left("Processor"), left("Memory")) << "no empty column";

    Stage mac;
    feed(mac, SystemKind::macos, Cooling::passive, false);
    EXPECT_EQ(ofRows(sensorsModel(mac.hub, {}, {}).power).count(u'—'), 4) << "a Mac's rows stay";
}

TEST(PaneWords, SensorsSayWhatWaitsWhatSlowsAndWhatFansCannotTell) {
    Stage stage;
    feed(stage, SystemKind::gnuLinux, Cooling::heat, true);
    SensorsModel model = sensorsModel(stage.hub, {}, {});
    EXPECT_EQ(model.complaint, "");
    EXPECT_EQ(model.dataSources, "hwmon · cpufreq");
    ASSERT_EQ(model.fans->size(), 2U);
    EXPECT_EQ(model.fans->front().label, "Rear fan");
    EXPECT_EQ(model.fans->back().label, "Fan 2");
    EXPECT_EQ(model.fans->back().spokenValue, "0 rpm") << "no floor, no share: the speed alone";
    EXPECT_EQ(model.fansNote, "what they can reach is not known");
    EXPECT_EQ(ofRows(model.waiting).split(u'\n').mid(0, 2),
              (QStringList{"For memory", "18%, share of the last 10 seconds in which some work had to wait"}));
    EXPECT_TRUE(
        model.processor.spokenValue.endsWith("Graphics processor 12%, Slowed down by temperature, power limit"));
    EXPECT_TRUE(model.memory.spokenValue.endsWith("Available 4.0 GB"));
    EXPECT_TRUE(ofRows(model.power).contains("Processors\n20.0 W, the processors' energy counters"));

    Snapshot now = stage.hub.snapshot();
    now.timestamp += 2;
    now.cooling = Cooling::fans;
    now.fans = {{.index = 0, .rpm = 900, .minRPM = 700, .maxRPM = 2100, .name = "Rear fan", .hasLearnedLimits = true},
                {.index = 1, .rpm = 400, .name = "Graphics fan"}};
    now.throttle.emplace();
    stage.hub.accept(now);
    model = sensorsModel(stage.hub, {}, {});
    EXPECT_EQ(model.fansNote, "limits learned by watching");
    EXPECT_TRUE(model.fans->front().showsGauge && !model.fans->back().showsGauge);
    EXPECT_TRUE(model.processor.spokenValue.endsWith("Slowed down by nothing"));
    now.timestamp += 2;
    now.fans.front() = {.index = 0, .rpm = 900, .name = "Rear fan", .learnsLimits = true};
    stage.hub.accept(now);
    EXPECT_EQ(sensorsModel(stage.hub, {}, {}).fansNote,
              "limits are learned within a day; what another can reach is not known");
    SensorsView view(stage.context);
    stage.picture(view, {1040, 778});
    for (const SensorRow* const row : view.findChildren<SensorRow*>())
        EXPECT_TRUE(!row->isVisible() || row->height() > 40);
}

TEST(PaneWords, TheTimelineOfAMachineWithoutSensorsIsOfItsWork) {
    Stage stage;
    feed(stage, SystemKind::gnuLinux, Cooling::load, true);
    const TimelineModel model = timelineModel(stage.hub);
    const std::vector<ChartReading> readings =
        chartReadings(model, stage.hub.snapshot(), Scrub{.time = start + 90}, stage.hub.format());
    QStringList said;
    for (std::size_t i = 0; i < readings.size(); ++i)
        said.append(model.charts[i].title + u' ' + readings[i].value);
    EXPECT_EQ(said,
              (QStringList{"Busy 96%", "Memory 75% · 12 of 16 GB", "Waiting 30% · for the processors", "Power 30 W"}));
    EXPECT_EQ(model.charts[0].lines[0].bands, (std::vector<double>{6, 22, 48, 78}));
    EXPECT_EQ(model.charts[2].most, 40);
    EXPECT_EQ(readings[2].rings[0], 30);
    const RewindModel rewind = rewindModel(&stage.hub.snapshot(), false, stage.hub.format());
    EXPECT_EQ(rewind.readings[2], (RewindModel::Reading{"Waiting for the processors", "30%"}));
    EXPECT_EQ(rewind.readings.back(), (RewindModel::Reading{"Power", "30 W"}));
}

TEST(PaneWords, ChartsTakeTheRoomOfThoseWithoutASensor) {
    for (const Cooling cooling : coolings)
        for (const bool tellsAll : {false, true}) {
            Stage stage;
            feed(stage, SystemKind::gnuLinux, cooling, tellsAll);
            int height = 0;
            for (const ChartModel& chart : timelineModel(stage.hub).charts)
                height += chart.height;
            EXPECT_GE(height, 700) << static_cast<int>(cooling) << tellsAll;
        }
}

} // namespace
} // namespace vantoro
