#include "Families.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace culprit {

namespace {

/// Seconds after which a machine has forgotten two thirds of its heat.
double memoryOf(MachineKind kind) {
    return kind == MachineKind::twoFans ? 60 : kind == MachineKind::fanless ? 90 : 30;
}

struct Heat {
    std::vector<double> byOwner;
    double foreign = 0;
};

Heat heatAt(const World& world, double begins, double asked) {
    const double memory = memoryOf(world.machine().kind);
    const auto quiet = static_cast<std::size_t>(begins);
    const auto end = static_cast<std::size_t>(asked);
    const auto remaining = [&](const std::vector<double>& joules) {
        double mean = 0;
        for (std::size_t i = 0; i < quiet; ++i)
            mean += joules[i] / static_cast<double>(quiet);
        double sum = 0;
        for (std::size_t i = quiet; i < std::min(end, joules.size()); ++i)
            sum += (joules[i] - mean) * std::exp(-(asked - static_cast<double>(i)) / memory);
        return sum;
    };
    Heat heat;
    for (const Account& account : world.accounts()) {
        heat.byOwner.push_back(remaining(account.joules));
    }
    heat.foreign = remaining(world.foreignJoules());
    return heat;
}

/// None when the energy does not say what the script meant, or says it without a clear margin.
std::optional<Truth> truthOf(const World& world, const Scene& scene) {
    const Heat heat = heatAt(world, scene.begins, scene.asked);
    const auto top =
        static_cast<std::size_t>(std::max_element(heat.byOwner.begin(), heat.byOwner.end()) - heat.byOwner.begin());
    double all = std::max(0.0, heat.foreign);
    for (const double joules : heat.byOwner)
        all += std::max(0.0, joules);
    Truth truth{.mayBeNobody = scene.mayBeNobody, .begins = scene.begins, .sampleTimes = world.sampleTimes()};
    const bool isMeantNobody = scene.meant.empty() && !scene.isLeftToEnergy;
    if (heat.foreign > all - std::max(0.0, heat.foreign))
        return isMeantNobody ? std::optional(truth) : std::nullopt;
    if (isMeantNobody)
        return std::nullopt;
    for (std::size_t i = 0; i < heat.byOwner.size(); ++i) {
        const bool isRight = heat.byOwner[i] >= 0.9 * heat.byOwner[top];
        const bool isMeant =
            std::find(scene.meant.begin(), scene.meant.end(), static_cast<int>(i)) != scene.meant.end();
        if (isRight && !isMeant && !scene.isLeftToEnergy)
            return std::nullopt;
        if (!isRight && heat.byOwner[i] > 0.8 * heat.byOwner[top])
            return std::nullopt;
        if (isRight) {
            const auto place = i == top ? truth.culprits.begin() : truth.culprits.end();
            truth.culprits.insert(place, world.accounts()[i].names);
        }
    }
    truth.processorSeconds = world.accounts()[top].processorSeconds;
    truth.isSpread = heat.byOwner[top] < 0.5 * all;
    return truth;
}

} // namespace

bool Truth::accepts(const std::string& name) const {
    return std::any_of(culprits.begin(), culprits.end(), [&name](const std::vector<std::string>& names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    });
}

Course Scene::share(double part, double from, double to) const {
    const double wanted = part * cores;
    return [wanted, from, to](double now) { return now >= from && now < to ? wanted : 0; };
}

int Scene::owner(const std::string& name, bool isMeant) {
    const int added = world.addOwner(name);
    if (isMeant)
        meant.push_back(added);
    return added;
}

int Scene::hog(double part, double from, double to, bool isMeant) {
    static const std::vector<Program> programs{{"ffmpeg"},
                                               {"xz"},
                                               {"solver"},
                                               {"simulate"},
                                               {"zstd"},
                                               {"povray"},
                                               {"octave"},
                                               {"Blender", "userApp", "Blender"},
                                               {"Darktable", "userApp", "Darktable"},
                                               {"GIMP", "userApp", "GIMP"},
                                               {"Kdenlive", "userApp", "Kdenlive"},
                                               {"clamd", "systemDaemon", "", "clamav"},
                                               {"postgres", "systemDaemon", "postgresql", "postgres"}};
    static const std::vector<Program> others{{"rsync"}, {"gzip"}, {"R"}, {"inkscape"}, {"par2"}, {"borg"}};
    Program program = isMeant ? random.of(programs) : random.of(others);
    if (program.kind == "systemDaemon" && isMac())
        program.owner.clear();
    program.memoryBytes = random.around(600e6, 0.7);
    const int its = owner(program.owner.empty() ? program.name : program.owner, isMeant);
    world.add({.owner = its, .starts = from, .ends = to, .cores = share(part, from, to), .programs = {program}});
    return its;
}

void addBackground(World& world, Random& random) {
    static const std::vector<Program> linuxDaemons{{"systemd-journald", "systemDaemon", "", "root"},
                                                   {"NetworkManager", "systemDaemon", "", "root"},
                                                   {"dbus-daemon", "systemDaemon", "", "messagebus"},
                                                   {"pipewire", "systemDaemon"},
                                                   {"wireplumber", "systemDaemon"},
                                                   {"cupsd", "systemDaemon", "", "root"},
                                                   {"avahi-daemon", "systemDaemon", "", "avahi"},
                                                   {"polkitd", "systemDaemon", "", "polkitd"},
                                                   {"udisksd", "systemDaemon", "", "root"},
                                                   {"upowerd", "systemDaemon", "", "root"},
                                                   {"bluetoothd", "systemDaemon", "", "root"},
                                                   {"chronyd", "systemDaemon", "chrony", "_chrony"},
                                                   {"rsyslogd", "systemDaemon", "rsyslog", "syslog"},
                                                   {"snapd", "systemDaemon", "", "root"},
                                                   {"irqbalance", "systemDaemon", "", "root"},
                                                   {"colord", "systemDaemon", "", "colord"},
                                                   {"wpa_supplicant", "systemDaemon", "", "root"},
                                                   {"sshd", "systemDaemon", "ssh", "root"},
                                                   {"crond", "systemDaemon", "cron", "root"},
                                                   {"kworker/u32:1", "kernel", "", "root"},
                                                   {"rcu_preempt", "kernel", "", "root"},
                                                   {"ksoftirqd/0", "kernel", "", "root"},
                                                   {"kworker/3:2", "kernel", "", "root"},
                                                   {"gnome-shell", "systemDaemon"}};
    static const std::vector<Program> macDaemons{{"kernel_task", "kernel", "", "root"},
                                                 {"launchd", "systemDaemon", "", "root"},
                                                 {"WindowServer", "systemDaemon", "", "_windowserver"},
                                                 {"mds", "systemDaemon", "", "root"},
                                                 {"mds_stores", "systemDaemon", "", "root"},
                                                 {"coreaudiod", "systemDaemon", "", "_coreaudiod"},
                                                 {"logd", "systemDaemon", "", "root"},
                                                 {"opendirectoryd", "systemDaemon", "", "root"},
                                                 {"bluetoothd", "systemDaemon", "", "root"},
                                                 {"airportd", "systemDaemon", "", "root"},
                                                 {"cfprefsd", "systemDaemon"},
                                                 {"trustd", "systemDaemon"},
                                                 {"nsurlsessiond", "systemDaemon"},
                                                 {"powerd", "systemDaemon", "", "root"},
                                                 {"fseventsd", "systemDaemon", "", "root"},
                                                 {"distnoted", "systemDaemon"},
                                                 {"locationd", "systemDaemon"},
                                                 {"usernoted", "systemDaemon"},
                                                 {"sharingd", "systemDaemon"},
                                                 {"rapportd", "systemDaemon"},
                                                 {"symptomsd", "systemDaemon"},
                                                 {"bird", "systemDaemon"},
                                                 {"tccd", "systemDaemon"}};
    static const std::vector<std::string> linuxApps{"Firefox",  "Thunderbird", "Files",   "Text Editor",
                                                    "Calendar", "Rhythmbox",   "Element", "LibreOffice"};
    static const std::vector<std::string> macApps{"Safari", "Mail",     "Messages", "Finder",
                                                  "Notes",  "Calendar", "Music",    "Pages"};
    const bool isMac = world.machine().isMac;
    const auto wanders = [](double median) { return [median](double) { return median; }; };
    for (Program program : isMac ? macDaemons : linuxDaemons) {
        const bool isCompositor = program.name == "WindowServer" || program.name == "gnome-shell";
        program.memoryBytes = program.kind == "kernel" ? 0 : random.around(18e6, 0.8);
        const double median = isCompositor ? random.uniform(0.02, 0.1) : random.around(0.0025, 1.0);
        Work work{.owner = world.addOwner(program.owner.empty() ? program.name : program.owner),
                  .cores = wanders(std::min(median, 0.15)),
                  .wander = 0.7,
                  .programs = {program}};
        if (isCompositor)
            work.graphics = wanders(random.uniform(0.01, 0.05));
        world.add(std::move(work));
    }
    const std::vector<std::string>& apps = isMac ? macApps : linuxApps;
    for (int left = random.whole(3, static_cast<int>(apps.size())), i = 0; i < left; ++i) {
        const std::string& name = apps[static_cast<std::size_t>(i)];
        Work work{
            .owner = world.addOwner(name), .cores = wanders(std::min(random.around(0.02, 0.9), 0.3)), .wander = 0.6};
        work.programs.push_back({name, "userApp", name, "sam", random.around(400e6, 0.6)});
        work.parts.push_back(1);
        for (int helpers = i == 0 ? random.whole(4, 12) : random.whole(0, 2); helpers > 0; --helpers) {
            work.programs.push_back(
                {isMac ? name + " Helper" : "Web Content", "helper", name, "sam", random.around(220e6, 0.7)});
            work.parts.push_back(random.around(0.4, 1));
        }
        world.add(std::move(work));
    }
}

std::vector<Family> allFamilies() {
    std::vector<Family> all;
    for (const std::span<const Family> families : {processorFamilies(), otherFamilies()})
        all.insert(all.end(), families.begin(), families.end());
    return all;
}

std::optional<Made> make(const Family& family, MachineKind kind, std::uint64_t seed) {
    if ((family.machines >> static_cast<unsigned>(kind) & 1U) == 0)
        return std::nullopt;
    std::uint64_t mixed = seed * 1000003 + static_cast<std::uint64_t>(kind);
    for (const char* letter = family.name; *letter != 0; ++letter)
        mixed = mixed * 131 + static_cast<unsigned char>(*letter);
    Random random(mixed);
    constexpr int mostTries = 60;
    for (int i = 0; i < mostTries; ++i) {
        const Machine machine = drawMachine(kind, random);
        if (family.lists != Lists::any && machine.isMac != (family.lists == Lists::mac))
            continue;
        World world(machine, Random(random.next()));
        Random details(random.next());
        addBackground(world, details);
        Scene scene{.world = world, .random = details, .cores = machine.cores()};
        scene.begins = details.uniform(70, 160);
        scene.asked = scene.begins + details.uniform(50, 170);
        family.script(scene);
        world.live(scene.asked, scene.opened);
        if (!world.isNoticed())
            continue;
        if (std::optional<Truth> truth = truthOf(world, scene)) {
            truth->begins = truth->sampleTimes.front() - 2 + std::max(scene.begins, scene.opened);
            return Made{machine, world.lines(), std::move(*truth)};
        }
    }
    return std::nullopt;
}

} // namespace culprit
