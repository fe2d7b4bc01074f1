// How long the window blocks while it is resized and while its panes change, on a recording: `vantoro_view_costs
// RECORDING`. Each step is timed from the request to the painted window.
#include "Model/Live/Replay.h"
#include "Views/Shell/MainWindow.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <QApplication>
#include <QTemporaryDir>
#include <string>

namespace {

using namespace vantoro;

double milliseconds(const std::function<void()>& step) {
    const auto begin = std::chrono::steady_clock::now();
    step();
    QCoreApplication::processEvents();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fputs("usage: vantoro_view_costs RECORDING\n", stderr);
        return 2;
    }
    int own = 1;
    const QApplication application(own, arguments);
    const QTemporaryDir folder;
    Settings settings(folder.filePath("settings.ini").toStdString());
    const SettingsFormatContext formatContext(settings);
    const Motion motion(formatContext);
    SensorHub hub({}, {}, settings, HubEnvironment::ofThisProcess());
    Replay replay(hub, arguments[1]);
    replay.start();
    replay.finish();
    Theme theme(Theme::Appearance::dark);
    Icons icons;
    AnimationClock clock;
    Look look{theme, icons, clock, motion};
    ViewContext context{hub, hub, settings, look};
    MainWindow window(context, Simulation::none, [] {});
    window.show();
    QCoreApplication::processEvents();
    double longest = 0;
    for (int round = 0; round < 5; ++round)
        for (const auto& [pane, title, key, make] : panes) {
            const double change = milliseconds([&] { window.showPane(pane); });
            double resize = 0;
            for (const int width : {820, 939, 941, 1280, 1600, 1040})
                resize = std::max(resize, milliseconds([&] { window.resize(width, 830 - width / 20); }));
            const double publish = milliseconds([&] { hub.publish(true); });
            if (round == 0 || round == 4)
                std::printf("%s: change %.1f ms, longest resize %.1f ms, publish %.1f ms%s\n", title, change, resize,
                            publish, round == 0 ? " (first time)" : "");
            longest = std::max({longest, change, resize});
        }
    std::printf("longest %.1f ms\n", longest);
    return 0;
}
