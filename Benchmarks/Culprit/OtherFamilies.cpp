// Situations in which processor time is not the whole of it: graphics, memory, kinds of cores and of code, heat from
// elsewhere.
#include "Families.h"

namespace culprit {

namespace {

void game(Scene& scene, double leastShare = 0.82) {
    const bool isGame = scene.random.chance(0.7);
    const Program program = isGame ? Program{"SuperTuxKart", "userApp", "SuperTuxKart", "sam", 1.6e9}
                                   : Program{"train.py", "commandLine", "", "sam", 4e9};
    const double graphics = scene.uniform(leastShare, 0.98);
    const double cores = scene.uniform(0.05, 1.1);
    const double begins = scene.begins;
    scene.world.add({.owner = scene.owner(program.name, true),
                     .starts = begins,
                     .cores = [cores](double) { return cores; },
                     .graphics = [graphics](double) { return graphics; },
                     .programs = {program}});
}

void graphicsOnly(Scene& scene) {
    game(scene);
    scene.hog(scene.uniform(0.01, 0.05), -1e9, 1e9, false);
}

/// The processors of a machine without fans draw as much as its graphics processor does.
double besideGraphics(const Scene& scene) {
    return scene.world.machine().kind == MachineKind::fanless ? 0.6 : 1;
}

void graphicsBesideIndexer(Scene& scene) {
    game(scene);
    const double part = scene.uniform(0.08, 0.3) * besideGraphics(scene);
    const Program indexer{scene.isMac() ? "mdworker_shared" : "tracker-miner-fs-3", "systemDaemon"};
    scene.world.add({.owner = scene.owner(indexer.name),
                     .starts = scene.begins - 30,
                     .cores = scene.share(part, scene.begins - 30),
                     .programs = {indexer}});
}

void beside(Scene& scene, bool isPowerTold) {
    const Machine& machine = scene.world.machine();
    if ((machine.tellsProcessorWatts || machine.tellsSystemWatts) != isPowerTold &&
        machine.kind != MachineKind::noSensors)
        return;
    game(scene);
    scene.hog(scene.uniform(0.2, 0.5) * besideGraphics(scene), scene.begins, 1e9, false);
}

void graphicsBesideEncoder(Scene& scene) {
    beside(scene, true);
}

void graphicsBesideEncoderUntold(Scene& scene) {
    beside(scene, false);
}

void graphicsUnreadable(Scene& scene) {
    const double graphics = scene.uniform(0.85, 0.98);
    scene.mayBeNobody = true;
    scene.world.add({.owner = scene.owner("kiosk-show", true),
                     .starts = scene.begins,
                     .cores = [](double) { return 0.2; },
                     .graphics = [graphics](double) { return graphics; },
                     .isUnreadable = true,
                     .programs = {{"kiosk-show", "commandLine", "", "kiosk", 900e6}}});
    scene.hog(scene.uniform(0.03, 0.08), -1e9, 1e9, false);
}

void playVideo(Scene& scene, double part, bool isMeant) {
    const double video = scene.uniform(0.5, 0.95);
    const double graphics = scene.uniform(0.05, 0.2);
    scene.world.add({.owner = scene.owner("Videos", isMeant),
                     .starts = scene.begins - (isMeant ? 0 : 40),
                     .cores = scene.share(part, -1e9),
                     .graphics = [graphics](double) { return graphics; },
                     .video = [video](double) { return video; },
                     .programs = {{"Videos", "userApp", "Videos", "sam", 500e6}}});
}

void video(Scene& scene) {
    playVideo(scene, scene.uniform(0.25, 0.55), true);
    scene.hog(scene.uniform(0.02, 0.1), -1e9, 1e9, false);
}

void videoBesideWork(Scene& scene) {
    playVideo(scene, scene.uniform(0.02, 0.06), false);
    scene.hog(scene.uniform(0.4, 0.75), scene.begins, 1e9, true);
}

/// The kernel's work to find memory is that of whoever holds it.
void memoryThrash(Scene& scene) {
    const int its = scene.owner("Atlas", true);
    const double held = scene.uniform(0.6, 0.75) * scene.world.machine().memoryBytes;
    const double begins = scene.begins;
    Program holder{"Atlas", "userApp", "Atlas", "sam", held};
    scene.world.add(
        {.owner = its, .starts = begins, .cores = scene.share(scene.uniform(0.04, 0.1), begins), .programs = {holder}});
    const double stall = scene.uniform(14, 45);
    scene.world.surroundings().memoryStall = [begins, stall](double now) { return now >= begins + 6 ? stall : 0; };
    scene.world.surroundings().diskStall = [begins, stall](double now) { return now >= begins + 6 ? stall * 0.7 : 0; };
    const auto kernel = [&](const char* name, double cores) {
        scene.world.add({.owner = its,
                         .starts = 0,
                         .cores = [=](double now) { return now >= begins + 4 ? cores : 0.001; },
                         .systemShare = 1,
                         .programs = {{name, "kernel", "", "root", 0}}});
    };
    if (Work* task = scene.isMac() ? scene.world.find("kernel_task") : nullptr) {
        const double cores = scene.uniform(1.5, 4);
        task->owner = its;
        task->cores = [=](double now) { return now >= begins + 4 ? cores : 0.05; };
    } else {
        kernel("kswapd0", scene.uniform(0.8, 1));
        kernel("kcompactd0", scene.uniform(0.3, 0.9));
        kernel("kworker/u16:3-kcryptd", scene.uniform(0.2, 0.8));
    }
    scene.hog(scene.uniform(0.03, 0.12), scene.begins, 1e9, false);
}

/// The system holds processors idle so that they cool down.
void idleInjection(Scene& scene) {
    scene.world.surroundings().slowsAt = scene.uniform(72, 88);
    scene.hog(scene.uniform(0.35, 0.6), scene.begins, 1e9, true);
    const double from = scene.begins + scene.uniform(15, 30);
    const double each = scene.uniform(0.25, 0.5);
    const int system = scene.owner("the system's slowing");
    if (Work* task = scene.isMac() ? scene.world.find("kernel_task") : nullptr) {
        const double cores = each * scene.cores;
        *task = {.owner = system,
                 .cores = [=](double now) { return now >= from ? cores : 0.05; },
                 .weight = 5,
                 .isPause = true,
                 .programs = task->programs};
        return;
    }
    for (int i = 0; i < scene.cores; ++i)
        scene.world.add({.owner = system,
                         .cores = [=](double now) { return now >= from ? each : 0.0; },
                         .weight = 5,
                         .isPause = true,
                         .programs = {{"idle_inject/" + std::to_string(i), "kernel", "", "root", 0}}});
}

void coreKinds(Scene& scene) {
    const double efficiency = scene.world.machine().efficiencyCores;
    if (efficiency == 0)
        return;
    scene.world.add({.owner = scene.owner("photo-analysis"),
                     .starts = scene.begins,
                     .cores = scene.share(1, scene.begins),
                     .isOnEfficiencyCores = true,
                     .programs = {{"photo-analysis", "systemDaemon"}}});
    scene.hog(efficiency * scene.uniform(0.45, 0.8) / scene.cores, scene.begins, 1e9, true);
}

void vectorCode(Scene& scene) {
    const double part = scene.uniform(0.35, 0.5);
    scene.world.add({.owner = scene.owner("parse-logs"),
                     .starts = scene.begins,
                     .cores = scene.share(part, scene.begins),
                     .intensity = 0.65,
                     .programs = {{"parse-logs"}}});
    scene.world.add({.owner = scene.owner("linpack", true),
                     .starts = scene.begins,
                     .cores = scene.share(part * scene.uniform(0.55, 0.85), scene.begins),
                     .intensity = 2.2,
                     .programs = {{"linpack"}}});
}

void endedLongAgo(Scene& scene) {
    const double length = scene.uniform(80, 160);
    scene.hog(scene.uniform(0.75, 1), scene.begins, scene.begins + length, true);
    scene.asked = scene.begins + length + scene.uniform(80, 100);
    scene.hog(scene.uniform(0.03, 0.1), -1e9, 1e9, false);
}

void blockVent(Scene& scene) {
    const double begins = scene.begins;
    const double left = scene.uniform(0.12, 0.3);
    scene.world.surroundings().ventilation = [=](double now) { return now < begins ? 1 : left; };
    scene.asked = begins + scene.uniform(150, 420);
}

void blockedVentWithCall(Scene& scene) {
    blockVent(scene);
    const double cores = scene.uniform(0.25, 1.1);
    Work call{.owner = scene.owner("Meetings"), .cores = [cores](double) { return cores; }};
    call.programs = {{"Meetings", "userApp", "Meetings", "sam", 400e6},
                     {"Meetings Media", "helper", "Meetings", "sam", 200e6}};
    scene.world.add(std::move(call));
}

/// Whatever works belongs to somebody whose processes no list may show.
void hidden(Scene& scene) {
    scene.mayBeNobody = true;
    scene.world.add({.owner = scene.owner("another's", true),
                     .starts = scene.begins,
                     .cores = scene.share(scene.uniform(0.4, 0.9), scene.begins),
                     .isHidden = true,
                     .programs = {{"another's"}}});
    scene.hog(scene.uniform(0.02, 0.08), -1e9, 1e9, false);
}

void charging(Scene& scene) {
    const double begins = scene.begins;
    const double adapter = scene.uniform(66, 98);
    const double heat =
        scene.world.machine().kind == MachineKind::twoFans ? scene.uniform(10, 22) : scene.uniform(7, 14);
    scene.world.surroundings().adapterWatts = [=](double now) { return now < begins ? 0 : adapter; };
    scene.world.surroundings().heatWatts = [=](double now) { return now < begins ? 0 : heat; };
    scene.asked = begins + scene.uniform(150, 420);
}

void warmRoom(Scene& scene) {
    const double begins = scene.begins;
    const double rise = scene.uniform(12, 30);
    scene.world.surroundings().ambientRise = [=](double now) { return now < begins ? 0 : rise; };
    scene.asked = begins + scene.uniform(150, 420);
}

constexpr unsigned onlyWithFans = 1;

} // namespace

std::span<const Family> otherFamilies() {
    static const Family families[] = {
        {"graphics", "a game or a training run on the graphics processor alone", graphicsOnly},
        {"graphics beside an indexer", "the same beside an indexer at 8 to 30 % of the processors",
         graphicsBesideIndexer},
        {"graphics beside an encoder", "the same beside a program at 20 to 50 % of the processors",
         graphicsBesideEncoder, withSensors},
        {"graphics beside an encoder, no power known", "the same where nothing tells any power",
         graphicsBesideEncoderUntold, 7, "which processor draws more is not in any figure"},
        {"graphics, unreadable", "graphics work of a program that a list may not read", graphicsUnreadable},
        {"hidden", "the work of programs that no list may show", hidden},
        {"video", "a player that decodes with the processors and the video engine", video},
        {"video beside work", "the video engine is busy and draws little beside a working program", videoBesideWork},
        {"memory thrash", "one program holds too much memory; the kernel works for it", memoryThrash, 7, nullptr,
         Lists::gnuLinux},
        {"memory thrash on a Mac", "the same where the kernel's work is one row", memoryThrash, withSensors, nullptr,
         Lists::mac},
        {"idle injection", "the system holds processors idle while a program works", idleInjection, withSensors},
        {"core kinds", "less processor time on performance cores beside more on efficiency cores", coreKinds,
         withSensors, "an hour of an efficiency core is counted like one of a performance core"},
        {"vector code", "less processor time of code that draws three times the power", vectorCode, withSensors,
         "processor time says nothing of what the code draws"},
        {"ended long ago", "the work ended 80 to 100 s before the question", endedLongAgo, withSensors,
         "the window of a cause ends before it"},
        {"blocked vent", "the way of the heat is blocked, nothing works", blockVent, onlyWithFans},
        {"blocked vent with a call", "the same beside a call that ran all along", blockedVentWithCall, withSensors},
        {"charging", "a battery is charged fast, nothing works", charging, onlyWithFans},
        {"warm room", "the air gets hot, nothing works", warmRoom, onlyWithFans},
    };
    return families;
}

} // namespace culprit
