// Situations in which processor time is what heats the machine.
#include "Families.h"

#include <algorithm>
#include <cmath>

namespace culprit {

namespace {

/// On and off for random times; how much of all processors while on.
Course bursts(Scene& scene, double part, double on, double off) {
    std::vector<double> changes{scene.begins};
    while (changes.back() < scene.asked)
        changes.push_back(changes.back() + (changes.size() % 2 == 1 ? on : off) * scene.uniform(0.6, 1.4));
    const double wanted = part * scene.cores;
    return [changes, wanted](double now) {
        const auto passed = std::upper_bound(changes.begin(), changes.end(), now) - changes.begin();
        return passed % 2 == 1 ? wanted : 0.0;
    };
}

struct Job {
    std::string leader;
    std::vector<std::string> children;
};

/// A job that starts short processes. A Mac's rows do not tell what they belong to.
int spawn(Scene& scene, const Job& job, double part, double cpuSeconds, double spread, bool isMeant,
          double leaderShare = 0.02) {
    const std::string owner = scene.isMac() ? "" : job.leader;
    Spawning spawning{.atOnce = std::max(1, static_cast<int>(std::lround(part * scene.cores))),
                      .cpuSeconds = cpuSeconds,
                      .spread = spread,
                      .leaderShare = leaderShare};
    // Without the job a list of many programs would have many owners.
    const std::vector<std::string> ofMac(1, job.children.front());
    for (const std::string& child : scene.isMac() ? ofMac : job.children)
        spawning.programs.push_back(
            {child, "commandLine", owner, "sam", scene.random.around(cpuSeconds > 0.2 ? 120e6 : 4e6, 0.6)});
    const int its = scene.owner(job.leader, isMeant);
    scene.world.add({.owner = its,
                     .starts = scene.begins,
                     .cores = scene.share(part, scene.begins),
                     .systemShare = cpuSeconds < 0.1 ? 0.55 : 0.12,
                     .programs = {{job.leader, "commandLine", owner, "sam", 12e6}},
                     .spawning = spawning});
    return its;
}

const std::vector<Job>& builds() {
    static const std::vector<Job> jobs{{"make", {"cc1plus", "cc1plus", "cc1plus", "as", "collect2"}},
                                       {"ninja", {"clang++", "clang++", "ld.lld"}},
                                       {"cargo", {"rustc", "rustc", "cc"}},
                                       {"gradle", {"java", "javac"}}};
    return jobs;
}

const std::vector<Job>& storms() {
    static const std::vector<Job> jobs{{"configure", {"sed", "grep", "cat", "expr", "cc1"}},
                                       {"backup.sh", {"stat", "sha256sum", "cut", "cp"}},
                                       {"check-links.sh", {"curl", "awk", "tr"}}};
    return jobs;
}

void steady(Scene& scene) {
    scene.hog(scene.uniform(0.35, 0.95), scene.begins, 1e9, true);
    scene.hog(scene.uniform(0.02, 0.12), -1e9, 1e9, false);
}

void helpers(Scene& scene) {
    const int count = std::max(4, static_cast<int>(std::lround(14.0 * scene.cores / 12)));
    Work work{.owner = scene.owner("Chromium", true),
              .starts = scene.begins,
              .cores = scene.share(0.4 * count / scene.cores, scene.begins)};
    work.programs.push_back({"Chromium", "userApp", "Chromium", "sam", 300e6});
    work.parts.push_back(0.3);
    for (int i = 0; i < count; ++i) {
        work.programs.push_back({"Chromium Helper", "helper", "Chromium", "sam", scene.random.around(150e6, 0.4)});
        work.parts.push_back(scene.random.around(1, 0.1));
    }
    scene.world.add(std::move(work));
    scene.hog(1.5 / 12, scene.begins - 20, 1e9, false);
}

void tabs(Scene& scene) {
    const int count = scene.random.whole(16, 34);
    Work work{.owner = scene.owner("Vivaldi", true),
              .starts = scene.begins,
              .cores = scene.share(scene.uniform(0.4, 0.7), scene.begins)};
    for (int i = 0; i < count; ++i) {
        work.programs.push_back({i == 0 ? "Vivaldi" : "Vivaldi Renderer", i == 0 ? "userApp" : "helper", "Vivaldi",
                                 "sam", scene.random.around(200e6, 0.5)});
        work.parts.push_back(scene.random.around(1, 1));
    }
    scene.world.add(std::move(work));
    scene.hog(scene.uniform(0.15, 0.3), scene.begins, 1e9, false);
}

void justEnded(Scene& scene) {
    scene.asked = scene.begins + scene.uniform(70, 170);
    scene.hog(scene.uniform(0.5, 0.95), scene.begins, scene.asked - scene.uniform(20, 40), true);
    scene.hog(scene.uniform(0.02, 0.12), -1e9, 1e9, false);
}

void inBursts(Scene& scene) {
    const int its = scene.owner("sync-photos", true);
    scene.world.add({.owner = its,
                     .starts = scene.begins,
                     .cores = bursts(scene, scene.uniform(0.6, 1), scene.uniform(3, 9), scene.uniform(3, 8)),
                     .programs = {{"sync-photos", "commandLine", "", "sam", 300e6}}});
    scene.hog(scene.uniform(0.1, 0.2), scene.begins, 1e9, false);
}

void churn(Scene& scene) {
    scene.hog(scene.uniform(0.4, 0.7), scene.begins, 1e9, true);
    spawn(scene, {"nightly-report", {"awk", "sort", "gzip", "sqlite3"}}, scene.uniform(0.15, 0.3),
          scene.uniform(0.3, 3), 0.6, false);
}

void build(Scene& scene) {
    spawn(scene, scene.random.of(builds()), scene.uniform(0.5, 1), scene.uniform(0.4, 6), 0.7, true);
    scene.hog(scene.uniform(0.05, 0.2), -1e9, 1e9, false);
}

void forkStorm(Scene& scene) {
    spawn(scene, scene.random.of(storms()), scene.uniform(0.5, 1), scene.uniform(0.004, 0.04), 0.5, true, 0.11);
    scene.hog(scene.uniform(0.03, 0.15), -1e9, 1e9, false);
}

void container(Scene& scene) {
    const std::string owner = "container " + scene.random.of<std::string>({"web", "ci-runner", "etl"});
    Work work{.owner = scene.owner(owner, true),
              .starts = scene.begins,
              .cores = scene.share(scene.uniform(0.4, 0.9), scene.begins)};
    for (const char* name : {"nginx", "node", "node", "php-fpm", "php-fpm", "php-fpm", "mysqld", "redis-server"}) {
        work.programs.push_back({name, "commandLine", owner, "root", scene.random.around(90e6, 0.6)});
        work.parts.push_back(scene.random.around(1, 0.8));
    }
    scene.world.add(std::move(work));
    scene.hog(scene.uniform(0.12, 0.25), scene.begins, 1e9, false);
}

void pipeline(Scene& scene) {
    const std::vector<std::string> names = scene.random.of<std::vector<std::string>>(
        {{"zstd", "tar", "ssh"}, {"sort", "zcat", "uniq"}, {"bzip2", "pg_dump", "tee"}});
    const double part = scene.uniform(0.4, 0.8);
    int its = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i == 0 || scene.isMac())
            its = scene.owner(names[i], i == 0);
        scene.world.add({.owner = its,
                         .starts = scene.begins,
                         .cores = scene.share(part * (i == 0   ? 0.65
                                                      : i == 1 ? 0.25
                                                               : 0.1),
                                              scene.begins),
                         .programs = {{names[i], "commandLine", scene.isMac() ? "" : names[0], "sam", 60e6}}});
    }
    scene.hog(scene.uniform(0.05, 0.15), -1e9, 1e9, false);
}

void trigger(Scene& scene) {
    const double constant = scene.uniform(0.15, 0.3);
    scene.hog(constant, -1e9, 1e9, false);
    scene.hog(constant * scene.uniform(0.8, 2.2), scene.begins, 1e9, true);
}

void twoEqual(Scene& scene) {
    const double part = scene.uniform(0.3, 0.45);
    scene.hog(part, scene.begins, 1e9, true);
    const int its = scene.owner("render-farm", true);
    scene.world.add({.owner = its,
                     .starts = scene.begins,
                     .cores = scene.share(part, scene.begins),
                     .programs = {{"render-farm"}}});
}

void alternating(Scene& scene) {
    const double period = scene.uniform(10, 20);
    const double part = scene.uniform(0.55, 0.7);
    const double wanted = scene.uniform(0.6, 0.95) * scene.cores;
    const double begins = scene.begins;
    const auto turn = [=](bool isFirst) -> Course {
        return [=](double now) {
            return now >= begins && (std::fmod(now - begins, 2 * period) < 2 * period * part) == isFirst ? wanted : 0.0;
        };
    };
    scene.asked = scene.begins + scene.uniform(90, 180);
    scene.world.add({.owner = scene.owner("index-photos", true),
                     .starts = begins,
                     .cores = turn(true),
                     .programs = {{"index-photos"}}});
    scene.world.add(
        {.owner = scene.owner("face-match"), .starts = begins, .cores = turn(false), .programs = {{"face-match"}}});
}

void spreadOut(Scene& scene) {
    scene.isLeftToEnergy = true;
    const int count = scene.random.whole(5, 7);
    for (int i = 0; i < count; ++i) {
        const std::string name = std::vector<std::string>{"Mosaic", "Weaver", "Tiller", "Quarry",
                                                          "Lathe",  "Kiln",   "Anvil"}[static_cast<std::size_t>(i)];
        scene.world.add({.owner = scene.owner(name),
                         .starts = scene.begins,
                         .cores = scene.share(scene.uniform(0.08, 0.18), scene.begins),
                         .programs = {{name, "userApp", name, "sam", 200e6}}});
    }
}

/// The recording begins in the middle of it.
void justOpened(Scene& scene) {
    scene.asked = scene.begins + scene.uniform(90, 330);
    scene.opened = scene.asked - scene.uniform(24, 70);
    scene.hog(scene.uniform(0.4, 0.9), scene.begins, 1e9, true);
    scene.hog(scene.uniform(0.05, 0.2), scene.begins, 1e9, false);
}

void testRun(Scene& scene) {
    spawn(scene,
          scene.random.of<Job>({{"pytest", {"python3", "python3", "postgres-test"}},
                                {"ctest", {"unit-tests", "view-tests", "fuzz-one"}}}),
          scene.uniform(0.4, 0.9), scene.uniform(5, 20), 0.6, true);
    scene.hog(scene.uniform(0.08, 0.25), -1e9, 1e9, false);
}

void niced(Scene& scene) {
    const int its = scene.owner("folding", true);
    scene.world.add({.owner = its,
                     .starts = scene.begins,
                     .cores = scene.share(1, scene.begins),
                     .weight = 0.06,
                     .programs = {{"folding"}}});
    scene.hog(scene.uniform(0.1, 0.3), -1e9, 1e9, false);
}

void handOver(Scene& scene) {
    const double over = scene.asked - scene.uniform(12, 30);
    scene.isLeftToEnergy = true;
    scene.hog(scene.uniform(0.6, 0.95), scene.begins, over, true);
    scene.hog(scene.uniform(0.3, 0.8), over, 1e9, false);
}

void service(Scene& scene) {
    const std::string owner = scene.isMac() ? "" : "apache2";
    Work work{.owner = scene.owner(scene.isMac() ? "httpd" : "apache2", true),
              .starts = scene.begins,
              .cores = scene.share(scene.uniform(0.4, 0.8), scene.begins)};
    for (int i = scene.random.whole(6, 24); i >= 0; --i) {
        work.programs.push_back({"httpd", "systemDaemon", owner, "www-data", 40e6});
        work.parts.push_back(scene.random.around(1, 0.5));
    }
    scene.world.add(std::move(work));
    scene.hog(scene.uniform(0.08, 0.2), scene.begins, 1e9, false);
}

} // namespace

std::span<const Family> processorFamilies() {
    static const Family families[] = {
        {"steady", "one program works, another does a little", steady},
        {"helpers", "an application's many helpers at 40 % each beside one program at 150 %", helpers},
        {"tabs", "an application of 16 to 34 uneven helpers beside one program", tabs},
        {"just ended", "the work ended 20 to 40 s before the question", justEnded},
        {"bursts", "a program works in bursts of seconds beside a steady small one", inBursts},
        {"churn", "a steady program beside a job of short processes", churn},
        {"build", "a build: processes of half a second to some seconds", build},
        {"fork storm", "a script of processes that live some milliseconds", forkStorm, 7, nullptr, Lists::gnuLinux},
        {"fork storm, list of the living", "the same where a list shows the living alone", forkStorm, 7,
         "no list ever shows nine tenths of its work", Lists::mac},
        {"container", "a container's programs beside one program", container, 7, nullptr, Lists::gnuLinux},
        {"service", "a service of many processes", service},
        {"pipeline", "a pipeline of three programs", pipeline},
        {"trigger", "a program begins beside one that has run all along", trigger},
        {"two equal", "two programs work alike", twoEqual},
        {"alternating", "two programs take turns, one works longer", alternating},
        {"spread out", "five to seven programs of a like size", spreadOut},
        {"test run", "a job of processes that live 5 to 20 s", testRun},
        {"just opened", "the question is asked 24 to 70 s after the first sample, in the middle of it", justOpened},
        {"nice 19", "a program that takes what others leave", niced},
        {"hand-over", "one program ended, another began 12 to 30 s before the question", handOver},
    };
    return families;
}

} // namespace culprit
