// Renders every screen of the interface from the recordings in the repository, without a screen: `vantoro-screenshots
// FOLDER`. The same data and the same fonts give the same pictures.
#include "Views/MenuBar/MenuBarPanel.h"
#include "Views/Settings/SettingsView.h"
#include "Views/Shell/MainWindow.h"

#include "Views/Updates/UpdatingStage.h"

#include <cstdlib>
#include <iostream>
#include <QDir>

namespace {

using namespace vantoro;
using Appearance = Theme::Appearance;
using vantoro::testing::Stage;
using vantoro::testing::UpdatingStage;

/// The die's single sensors as they lie between two temperatures, more in the middle.
std::vector<double> spread(double coolest, double hottest, int count) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        const double even = static_cast<double>(i) / (count - 1);
        const double wave = 0.06 * std::sin(i * 2.7) * even * (1 - even) * 4;
        values.push_back(std::round((coolest + (hottest - coolest) * (even + wave)) * 10) / 10);
    }
    std::sort(values.begin(), values.end());
    return values;
}

class Album {
public:
    explicit Album(const QString& folder) : folder_(folder) {}

    void keep(const QString& name, const QPixmap& picture) {
        const QString path = folder_.filePath(name + ".png");
        if (picture.save(path))
            return;
        std::cerr << "screenshots: " << path.toStdString() << " could not be written\n";
        isComplete_ = false;
    }

    bool isComplete() const { return isComplete_; }

private:
    QDir folder_;
    bool isComplete_ = true;
};

/// Where the program's update of itself stands in a picture.
enum class Scene { none, available, downloading, installing, failed, current };

void playUpdate(UpdatingStage& stage, Scene scene) {
    if (scene == Scene::current)
        stage.updates.showUpdateNotFoundWithError({}, {});
    if (scene == Scene::none || scene == Scene::current)
        return;
    stage.find();
    stage.runLater();
    if (scene == Scene::available)
        return;
    stage.updates.showDownloadInitiated([] {});
    stage.updates.showDownloadDidReceiveData(5'000'000);
    if (scene == Scene::installing)
        stage.updates.showReadyToInstallAndRelaunch([](UpdateChoice) {});
    if (scene == Scene::failed)
        stage.updates.showUpdaterError(
            {.domain = "NSCocoaErrorDomain", .description = {}, .latestItem = {}, .noUpdateReason = {}}, {});
}

struct Screen {
    QString name;
    /// A recording; empty for a program that has only just been started.
    std::string recording;
    Appearance appearance = Appearance::dark;
    Pane pane = Pane::now;
    QSize size = MainWindow::usualSize;
    Simulation simulation = Simulation::none;
    bool showsReport = false;
    /// Where the pointer rests on the window.
    std::optional<QPoint> pointer;
    Scene update = Scene::none;
    /// The first row of the list is unfolded.
    bool isUnfolded = false;
};

/// Those of the newest list live; the job was started in a folder of the user's.
void startProcesses(Stage& stage) {
    for (const ProcessSample& row : stage.hub.snapshot().processes)
        stage.processes->start(row.pid()).folder = (QDir::homePath() + "/src/engine").toStdString();
}

void unfold(QWidget& window) {
    const QList<SuspectRow*> rows = window.findChildren<SuspectRow*>();
    QTest::mouseClick(*std::min_element(rows.begin(), rows.end(),
                                        [](const SuspectRow* a, const SuspectRow* b) {
                                            return a->mapToGlobal(QPoint()).y() < b->mapToGlobal(QPoint()).y();
                                        }),
                      Qt::LeftButton);
}

void play(Stage& stage, const std::string& recording) {
    stage.makeCores();
    if (recording.find("fanless") != std::string::npos) {
        stage.sensors->cools = Cooling::passive;
        stage.sensors->coreList.resize(8);
    }
    if (recording.find("busy") != std::string::npos) {
        stage.sensors->coreList.resize(8);
        for (Core& core : stage.sensors->coreList)
            core.isPerformance = true;
    }
    stage.sensors->dieSensors = spread(61, 88.4, 38);
    stage.sensors->gpuSensors = spread(57, 66, 14);
    if (recording.empty()) {
        stage.hub.tick();
        return;
    }
    stage.play(recording);
    stage.settle();
}

void take(Album& album, const Screen& screen) {
    UpdatingStage stage(screen.appearance);
    play(stage, screen.recording);
    playUpdate(stage, screen.update);
    MainWindow window(stage.context, screen.simulation, [] {});
    window.resize(screen.size);
    window.show();
    window.showPane(screen.pane);
    stage.settle();
    if (screen.showsReport)
        window.openReport();
    if (screen.isUnfolded) {
        startProcesses(stage);
        unfold(window);
        stage.settle();
    }
    // Without a place of its own the pointer rests where nothing minds it.
    const QPoint pointer = screen.pointer.value_or(QPoint(2, 2));
    QWidget* const under = window.childAt(pointer);
    QTest::mouseMove(under, under->mapFrom(&window, pointer));
    stage.settle();
    album.keep(screen.name, window.grab());
}

void takePanel(Album& album, const QString& name, const std::string& recording, Appearance appearance,
               Scene update = Scene::none) {
    UpdatingStage stage(appearance);
    play(stage, recording);
    playUpdate(stage, update);
    MenuBarPanel panel(stage.context);
    panel.toggle({}, QPoint(400, 30));
    stage.settle();
    album.keep(name, panel.grab());
}

void takeSettings(Album& album, const QString& name, const std::string& recording, Appearance appearance,
                  SystemKind system = SystemKind::macos) {
    UpdatingStage stage(appearance, true, system);
    play(stage, recording);
    SettingsView settings(stage.context, stage.context.sources);
    settings.resize(600, 1440);
    settings.show();
    stage.settle();
    album.keep(name, settings.grab());
}

void takeUpdates(Album& album, const QString& name, Appearance appearance, Scene scene) {
    UpdatingStage stage(appearance);
    play(stage, "design-fans.jsonl.gz");
    playUpdate(stage, scene);
    stage.updates.setRevealsUpdatesInSettings(true);
    SettingsView settings(stage.context, {});
    settings.show();
    stage.settle();
    album.keep(name, settings.grab());
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: vantoro-screenshots FOLDER\n";
        return 2;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("TZ", "UTC", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    int own = 1;
    const QApplication application(own, arguments);
    installAccessibility();
    const QString folder = arguments[1];
    QDir().mkpath(folder);
    Album album(folder);
    const std::string fans = "design-fans.jsonl.gz";
    const std::string fanless = "design-fanless.jsonl.gz";
    const std::string calm = "design-calm.jsonl.gz";
    const std::string busy = "design-busy.jsonl.gz";
    const std::string heat = "design-heat.jsonl.gz";
    const std::string graphics = "design-graphics.jsonl.gz";
    const std::string job = "design-job.jsonl.gz";
    const QSize narrow(MainWindow::smallestSize.width(), MainWindow::usualSize.height());
    const Screen screens[]{
        {.name = "now-dark", .recording = fans},
        {.name = "now-light", .recording = fans, .appearance = Appearance::light},
        {.name = "now-fanless-dark", .recording = fanless},
        {.name = "now-fanless-light", .recording = fanless, .appearance = Appearance::light},
        {.name = "now-calm-light", .recording = calm, .appearance = Appearance::light},
        {.name = "now-calm-dark", .recording = calm},
        {.name = "now-narrow-dark", .recording = fans, .size = narrow},
        {.name = "now-busy-dark", .recording = busy},
        {.name = "now-busy-light", .recording = busy, .appearance = Appearance::light},
        {.name = "now-heat-dark", .recording = heat},
        {.name = "now-heat-light", .recording = heat, .appearance = Appearance::light},
        {.name = "now-heat-narrow-dark", .recording = heat, .size = narrow},
        {.name = "now-graphics-dark", .recording = graphics},
        {.name = "now-graphics-light", .recording = graphics, .appearance = Appearance::light},
        {.name = "now-job-dark", .recording = job, .isUnfolded = true},
        {.name = "now-job-light", .recording = job, .appearance = Appearance::light, .isUnfolded = true},
        {.name = "now-starting-light", .appearance = Appearance::light},
        {.name = "now-simulated-dark", .recording = fans, .simulation = Simulation::sensors},
        {.name = "update-available-dark", .recording = fans, .update = Scene::available},
        {.name = "update-downloading-dark", .recording = fans, .update = Scene::downloading},
        {.name = "update-installing-dark", .recording = fans, .update = Scene::installing},
        {.name = "update-failed-light", .recording = fans, .appearance = Appearance::light, .update = Scene::failed},
        {.name = "update-narrow-dark",
         .recording = fans,
         .size = narrow,
         .simulation = Simulation::sensors,
         .update = Scene::failed},
        {.name = "cores-dark", .recording = fans, .pane = Pane::cores},
        {.name = "cores-light", .recording = fans, .appearance = Appearance::light, .pane = Pane::cores},
        {.name = "cores-busy-dark", .recording = busy, .pane = Pane::cores},
        {.name = "timeline-dark", .recording = fans, .pane = Pane::timeline, .pointer = QPoint(556, 300)},
        {.name = "timeline-fanless-light",
         .recording = fanless,
         .appearance = Appearance::light,
         .pane = Pane::timeline},
        {.name = "timeline-busy-dark", .recording = busy, .pane = Pane::timeline, .pointer = QPoint(556, 300)},
        {.name = "timeline-heat-light", .recording = heat, .appearance = Appearance::light, .pane = Pane::timeline},
        {.name = "timeline-gathering-light", .appearance = Appearance::light, .pane = Pane::timeline},
        {.name = "sensors-light", .recording = fans, .appearance = Appearance::light, .pane = Pane::sensors},
        {.name = "sensors-fanless-dark", .recording = fanless, .pane = Pane::sensors},
        {.name = "sensors-busy-light", .recording = busy, .appearance = Appearance::light, .pane = Pane::sensors},
        {.name = "sensors-heat-dark", .recording = heat, .pane = Pane::sensors},
        {.name = "sensors-heat-light", .recording = heat, .appearance = Appearance::light, .pane = Pane::sensors},
        {.name = "report-sheet-dark", .recording = fans, .showsReport = true},
        {.name = "report-sheet-light", .recording = fanless, .appearance = Appearance::light, .showsReport = true},
        {.name = "report-sheet-busy-light", .recording = busy, .appearance = Appearance::light, .showsReport = true},
    };
    for (const Screen& screen : screens)
        take(album, screen);
    takePanel(album, "menubar-panel-dark", fans, Appearance::dark);
    takePanel(album, "menubar-panel-fanless-light", fanless, Appearance::light);
    takePanel(album, "menubar-panel-busy-dark", busy, Appearance::dark);
    takePanel(album, "menubar-panel-heat-light", heat, Appearance::light);
    takePanel(album, "menubar-panel-update-dark", fanless, Appearance::dark, Scene::available);
    takePanel(album, "menubar-panel-update-light", fans, Appearance::light, Scene::downloading);
    takeUpdates(album, "settings-updates-light", Appearance::light, Scene::current);
    takeUpdates(album, "settings-updates-available-dark", Appearance::dark, Scene::available);
    takeSettings(album, "settings-light", fans, Appearance::light);
    takeSettings(album, "settings-dark", fans, Appearance::dark);
    takeSettings(album, "settings-busy-light", busy, Appearance::light, SystemKind::gnuLinux);
    return album.isComplete() ? EXIT_SUCCESS : EXIT_FAILURE;
}
