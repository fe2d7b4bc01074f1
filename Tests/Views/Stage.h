// Everything a view needs, fed by a recording or by a snapshot, with a clock that the test moves: no sensors, no
// settings of the user's, no screen.
#pragma once

#include "Design/Controls/SegmentedControl.h"
#include "Model/Recording/RecordingFile.h"
#include "Support/ScriptedProcesses.h"
#include "Support/ScriptedReaders.h"
#include "Views/Shared/View.h"

#include <QApplication>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

namespace vantoro::testing {

class StageMachine : public Machine {
public:
    std::optional<std::string> modelIdentifier() const override { return model; }
    std::optional<std::string> processorBrand() const override { return brand; }

    std::optional<std::string> model = "MacBookPro18,1";
    std::string brand = "Apple M3 Pro";
};

/// Clicks the segment of the first row of choices within `parent`, wherever it lies.
inline void clickSegment(QWidget& parent, qsizetype index) {
    auto* const control = parent.findChild<SegmentedControl*>();
    ASSERT_NE(control, nullptr);
    const QList<SpokenPart*> segments = control->findChildren<SpokenPart*>();
    ASSERT_GT(segments.size(), index);
    QTest::mouseClick(control, Qt::LeftButton, Qt::NoModifier, segments[index]->geometry().center());
}

struct Stage {
    explicit Stage(Theme::Appearance appearance = Theme::Appearance::dark, Cooling cooling = Cooling::fans)
        : theme(appearance), sensors(std::make_shared<ScriptedReaders>(cooling)) {}

    /// Feeds a recording from Fixtures/recordings, whole.
    void play(const std::string& name) {
        RecordingReader reader(std::string(VANTORO_FIXTURES) + "/recordings/" + name);
        if (reader.header().system == SystemKind::gnuLinux) {
            hub.history().setSystem(SystemKind::gnuLinux);
            machine->model.reset();
            machine->brand = reader.header().machine;
            context.sources = {.system = SystemKind::gnuLinux,
                               .stream = "vantoro-top",
                               .streamForShort = "vantoro-top",
                               .sensors = "hwmon",
                               .reports = "cpufreq",
                               .costsAreStated = false};
        }
        while (std::optional<Snapshot> snapshot = reader.next()) {
            if (hub.words().kind == SystemKind::gnuLinux) {
                sensors->fans = static_cast<int>(snapshot->fans.size());
                sensors->sensors =
                    static_cast<int>(std::ranges::count_if(temperatureFigures, [&](const TemperatureFigure& figure) {
                        return snapshot->temps.*figure.celsius > 0;
                    }));
            }
            hub.accept(std::move(*snapshot));
        }
        ASSERT_FALSE(reader.error().has_value()) << reader.error()->reason;
    }

    /// Six performance and six efficiency cores with falling loads.
    void makeCores() {
        sensors->coreList.clear();
        for (int i = 0; i < 12; ++i)
            sensors->coreList.push_back({.index = i,
                                         .isPerformance = i < 6,
                                         .busy = 0.93 - 0.05 * i,
                                         .megahertz = 3790.0 - 150 * i,
                                         .clusterIndex = i % 6});
    }

    /// Shows the widget at this size, lets the events through and gives its picture. The clock stands still, so that
    /// the same data give the same picture.
    QImage picture(QWidget& widget, const QSize& size) {
        widget.resize(size);
        widget.show();
        settle();
        return widget.grab().toImage();
    }

    /// Lets the events through and everything that moves arrive.
    void settle() {
        // A height that follows from a width takes some rounds to reach the outermost layout.
        for (int round = 0; round < 5; ++round)
            QCoreApplication::processEvents();
        seconds += 10;
        clock.beat();
        QCoreApplication::processEvents();
    }

    QTemporaryDir folder;
    Settings settings{folder.filePath("settings.ini").toStdString()};
    SettingsFormatContext formatContext{settings};
    Motion motion{formatContext};
    Theme theme;
    Icons icons;
    double seconds = 1000;
    AnimationClock clock{[this] { return seconds; }};
    Look look{theme, icons, clock, motion};
    double wallSeconds = 1772357000;
    std::shared_ptr<ScriptedReaders> sensors;
    std::shared_ptr<ScriptedProcesses> processes = std::make_shared<ScriptedProcesses>();
    std::shared_ptr<StageMachine> machine = std::make_shared<StageMachine>();
    SensorHub hub{Platform{.processControl = processes, .machine = machine}, SensorSources{sensors, sensors, nullptr},
                  settings,
                  HubEnvironment{.now = [this] { return wallSeconds; }, .monotonic = [this] { return seconds; }}};
    ViewContext context{hub, hub, settings, look};
};

} // namespace vantoro::testing
