// Who the graphics processors work for.
#include "Platform/Linux/Power/LinuxGraphicsClients.h"

#include "Platform/Linux/Power/DrmClients.h"
#include "Platform/Linux/Sensors/SensorMachine.h"

#include <array>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantoro {

void PrintTo(const GraphicsShares::Program& program, std::ostream* out) {
    *out << program.pid << ": " << program.percent << " %";
}

namespace {

using testing::SensorMachine;
using testing::TemporaryFolder;
using Programs = std::vector<GraphicsShares::Program>;

const std::string head = "pos:\t0\nflags:\t02100002\nmnt_id:\t26\nino:\t685\n";

std::map<std::string, double> sharesOf(const DrmMeter& meter) {
    std::map<std::string, double> shares;
    for (const DrmMeter::Share& share : meter.shares())
        shares[share.engine] = share.percent;
    return shares;
}

TEST(DrmClients, EveryDriversAccountIsUnderstood) {
    struct Case {
        const char* what;
        std::string before;
        /// Two seconds later.
        std::string after;
        std::map<std::string, double> shares;
        bool isKnown = true;
    };
    const auto cycles = [](std::string_view name, long worked, long all) {
        return fmt::format("drm-cycles-{0}:\t{1}\ndrm-total-cycles-{0}:\t{2}\n", name, worked, all);
    };
    const std::string xe = "drm-driver:\txe\ndrm-client-id:\t3\ndrm-pdev:\t0000:03:00.0\n";
    const std::string i915 = "drm-driver:\ti915\ndrm-pdev:\t0000:00:02.0\ndrm-client-id:\t7\n";
    const std::string amdgpu = "drm-driver:\tamdgpu\ndrm-pdev:\t0000:03:00.0\ndrm-client-id:\t12\npasid:\t32769\n";
    const std::string panfrost = "drm-driver:\tpanfrost\ndrm-client-id:\t3\n";
    const std::array<Case, 11> cases{{
        // amdgpu_fdinfo.c names engines only once they have worked
        {"amdgpu",
         amdgpu + "drm-memory-vram:\t1024 KiB\ndrm-engine-gfx:\t5000000000 ns\n",
         amdgpu + "drm-memory-vram:\t1024 KiB\ndrm-engine-gfx:\t6840000000 ns\ndrm-engine-dec:\t500000000 ns\n",
         {{"gfx", 92}, {"dec", 25}}},
        {"an idle client of amdgpu's", amdgpu, amdgpu, {}},
        // i915_drm_client.c
        {"i915",
         i915 + "drm-engine-render:\t100 ns\ndrm-engine-video:\t0 ns\ndrm-engine-capacity-video:\t2\n",
         i915 + "drm-engine-render:\t1000000100 ns\ndrm-engine-video:\t1000000000 ns\ndrm-engine-capacity-video:\t2\n",
         {{"render", 50}, {"video", 25}}},
        // xe_drm_client.c: by the device's own clock, however long it took
        {"xe",
         xe + cycles("rcs", 28257900, 7655183225) + cycles("ccs", 0, 7655183225) + "drm-engine-capacity-ccs:\t4\n",
         xe + cycles("rcs", 28257900 + 300, 7655183225 + 1000) + cycles("ccs", 2000, 7655183225 + 1000) +
             "drm-engine-capacity-ccs:\t4\n",
         {{"rcs", 30}, {"ccs", 50}}},
        {"xe whose clock was begun anew", xe + cycles("rcs", 5, 9000), xe + cycles("rcs", 700, 1000), {}},
        // v3d_drv.c, etnaviv_drv.c, lima_drv.c
        {"v3d",
         "drm-driver:\tv3d\ndrm-client-id:\t5\ndrm-engine-bin: \t10 ns\nv3d-jobs-bin: \t1 jobs\ndrm-engine-render: \t9 "
         "ns\n",
         "drm-driver:\tv3d\ndrm-client-id:\t5\ndrm-engine-bin: \t20000010 ns\ndrm-engine-render: \t1200000009 ns\n",
         {{"bin", 1}, {"render", 60}}},
        // panfrost_drv.c: time and cycles, and neither unless it is told to measure
        {"panfrost",
         panfrost + "drm-engine-fragment:\t0 ns\ndrm-cycles-fragment:\t0\ndrm-maxfreq-fragment:\t799999987 Hz\n",
         panfrost +
             "drm-engine-fragment:\t400000000 ns\ndrm-cycles-fragment:\t9\ndrm-maxfreq-fragment:\t799999987 Hz\n",
         {{"fragment", 20}}},
        {"panfrost that does not measure",
         panfrost + "drm-maxfreq-fragment:\t799999987 Hz\n",
         panfrost + "drm-maxfreq-fragment:\t799999987 Hz\n",
         {},
         false},
        {"panfrost that was told to measure just now",
         panfrost + "drm-maxfreq-fragment:\t799999987 Hz\n",
         panfrost + "drm-engine-fragment:\t9000000000 ns\n",
         {}},
        {"cycles by the highest clock",
         "drm-driver:\tnew\ndrm-client-id:\t1\ndrm-cycles-gpu:\t0\ndrm-maxfreq-gpu:\t500 MHz\n",
         "drm-driver:\tnew\ndrm-client-id:\t1\ndrm-cycles-gpu:\t250000000\ndrm-maxfreq-gpu:\t500 MHz\n",
         {{"gpu", 25}}},
        {"nouveau",
         "drm-driver:\tnouveau\ndrm-client-id:\t1\n",
         "drm-driver:\tnouveau\ndrm-client-id:\t1\n",
         {},
         false},
    }};
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        DrmMeter meter;
        for (const auto& [text, seconds] : {std::pair(&each.before, 10.0), {&each.after, 12.0}}) {
            const std::string whole = head + *text;
            const auto usage = parseDrmUsage(whole);
            ASSERT_TRUE(usage);
            meter.take(*usage, seconds);
        }
        EXPECT_EQ(meter.isKnown(), each.isKnown);
        const auto shares = sharesOf(meter);
        ASSERT_EQ(shares.size(), each.shares.size());
        for (const auto& [engine, percent] : each.shares)
            EXPECT_NEAR(shares.at(engine), percent, 1e-6) << engine;
    }
}

TEST(DrmClients, WhatIsNoAccountOfAClientIsNone) {
    for (const std::string_view text :
         {"", "drm-driver:\ti915\n", "drm-client-id:\t7\n", "drm-driver:\ti915\ndrm-client-id:\t7", // cut
          "drm-driver:\t\ndrm-client-id:\t7\n", "drm-driver:\ti915\ndrm-client-id:\t99999999999999999999\n",
          "pdev:\t0000:03:00.0\npasid:\t32769\ngfx0:\t12.50%\n"})
        EXPECT_FALSE(parseDrmUsage(text)) << text;
    const auto odd =
        parseDrmUsage("drm-driver:\tx\ndrm-client-id:\t7\ndrm-engine-capacity-a:\t0\ndrm-engine-a:\t-5 ns\n"
                      "drm-engine-:\t5 ns\ndrm-engine-b:\t5 ns\ndrm-engine-c:\t6 n");
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->engines, (std::vector<DrmEngine>{{.name = "b", .nanoseconds = 5}}));
}

TEST(DrmClients, ACounterThatGoesBackIsWaitedForAndAtLastBegunAnew) {
    DrmMeter meter;
    double now = 0;
    const auto share = [&](long milliseconds) {
        const std::string text =
            fmt::format("drm-driver:\ti915\ndrm-client-id:\t7\ndrm-engine-render:\t{} ns\n", milliseconds * 1'000'000);
        meter.take(*parseDrmUsage(text), now += 1);
        return meter.shares().empty() ? 0 : meter.shares().front().percent;
    };
    share(5000);
    EXPECT_DOUBLE_EQ(share(5500), 50);
    EXPECT_EQ(share(5400), 0);
    EXPECT_DOUBLE_EQ(share(5700), 20) << "since the highest it was";
    EXPECT_EQ(share(0), 0);
    EXPECT_EQ(share(500), 0);
    EXPECT_EQ(share(1000), 0);
    EXPECT_DOUBLE_EQ(share(1500), 50) << "a driver that was loaded anew";
}

/// A machine with one card, whose processes a test makes up.
class Rendering : public ::testing::Test {
protected:
    Rendering() {
        machine.lane()->waitAlways(60);
        machine.write("sys/class/drm/renderD128/device/power/control", "on\n");
        machine.write("proc/self/fd/0", "");
        std::filesystem::create_directories(machine.root() + "/proc/self/ns");
        std::filesystem::create_symlink("pid:[4026531836]", machine.root() + "/proc/self/ns/pid");
    }

    void open(int pid, int number, const std::string& file = "/dev/dri/renderD128") {
        const std::string folder = machine.root() + "/proc/" + std::to_string(pid) + "/fd/";
        std::filesystem::create_directories(folder);
        std::filesystem::create_symlink(file, folder + std::to_string(number));
    }
    /// What a client of i915's has had done by now, in milliseconds.
    void tell(int pid, int number, int client, long render, const std::string& more = "") {
        machine.write(info(pid, number),
                      head +
                          fmt::format("drm-driver:\ti915\ndrm-pdev:\t0000:00:02.0\ndrm-client-id:\t{}\n"
                                      "drm-engine-render:\t{} ns\n",
                                      client, render * 1'000'000) +
                          more);
    }
    static std::string info(int pid, int number) { return fmt::format("proc/{}/fdinfo/{}", pid, number); }
    /// After a second.
    std::optional<GraphicsShares> read(double seconds = 1) {
        machine.pass(seconds);
        return clients.read();
    }
    Programs programs(double seconds = 1) {
        auto shares = read(seconds);
        if (!shares)
            return {};
        for (auto& program : shares->programs)
            program.percent = std::round(program.percent * 100) / 100;
        return shares->programs;
    }

    SensorMachine machine;
    LinuxGraphicsClients clients{machine.root(), machine.lane(), nullptr, ::geteuid()};
};

TEST_F(Rendering, EachClientIsCountedOnceAndForItsProcess) {
    open(100, 3, "/home/me/notes");
    open(100, 5);
    open(100, 6); // the same client by another descriptor
    open(100, 7); // and another client
    open(200, 9, "/newroot/dev/dri/card0");
    machine.write("sys/class/drm/card0/device/power/control", "on\n");
    const auto at = [&](long milliseconds) {
        tell(100, 5, 1, milliseconds * 3 / 10);
        tell(100, 6, 1, milliseconds * 3 / 10);
        tell(100, 7, 2, milliseconds / 10, fmt::format("drm-engine-copy:\t{} ns\n", milliseconds * 900'000));
        tell(200, 9, 3, milliseconds / 2);
    };
    at(0);
    EXPECT_FALSE(read()) << "a share takes two readings";
    at(1000);
    const auto shares = read();
    ASSERT_TRUE(shares);
    EXPECT_EQ(programs(0), (Programs{{100, 90}, {200, 50}})) << "the busiest engine";
    EXPECT_NEAR(shares->leastBusyPercent, 90, 0.01) << "render is busy for 30 + 10 + 50";
    EXPECT_TRUE(shares->hasAll);
    machine.remove("proc/self/ns");
    EXPECT_FALSE(read(10)->hasAll) << "a container does not see everybody";
}

TEST_F(Rendering, TheSharesOfAnEngineAddUpToNoMoreThanItHas) {
    for (const int pid : {100, 200})
        open(pid, 3);
    for (const long milliseconds : {0, 800}) {
        tell(100, 3, 1, milliseconds);
        tell(200, 3, 2, milliseconds);
        read();
    }
    EXPECT_EQ(programs(0), (Programs{{100, 50}, {200, 50}}));
}

TEST_F(Rendering, AClientThatSeveralHoldIsItsWorkers) {
    open(100, 3); // who opened it and handed it on
    open(200, 4);
    const auto at = [&](long render, unsigned long firstTicks, unsigned long secondTicks) {
        tell(100, 3, 1, render);
        tell(200, 4, 1, render);
        machine.write("proc/100/stat", testing::processStat(100, "opener", 10, firstTicks));
        machine.write("proc/200/stat", testing::processStat(200, "game", 20, secondTicks));
        return programs();
    };
    at(0, 5000, 100);
    EXPECT_EQ(at(400, 5000, 101), (Programs{{200, 40}}));
    EXPECT_EQ(at(800, 5000, 101), (Programs{{200, 40}})) << "neither has worked: as before";
    EXPECT_EQ(at(1200, 5050, 102), (Programs{{100, 40}}));
}

TEST_F(Rendering, ClientsComeAndGo) {
    open(100, 3);
    tell(100, 3, 1, 0);
    programs();
    EXPECT_EQ(programs(), (Programs{{100, 0}})) << "a client that had nothing done";
    open(200, 3);
    tell(200, 3, 2, 0);
    for (int seconds = 0; seconds < 6; ++seconds)
        EXPECT_EQ(programs().size(), 1U) << "found at the next look only";
    programs(5);
    EXPECT_EQ(programs(), (Programs{{100, 0}, {200, 0}}));
    machine.write(info(200, 3), ""); // closed: such a file has nothing to read
    EXPECT_EQ(programs(), (Programs{{100, 0}}));
    tell(200, 3, 9, 5000); // another program under its number, with a client of its own
    programs(10);
    tell(200, 3, 9, 5700);
    EXPECT_EQ(programs(), (Programs{{100, 0}, {200, 70}}));
    tell(200, 3, 11, 99000); // the descriptor is another client's now
    EXPECT_EQ(programs(), (Programs{{100, 0}}));
    machine.remove("proc/100");
    programs(10);
    EXPECT_EQ(programs(), (Programs{{200, 0}}));
}

TEST_F(Rendering, WhatMayNotBeReadOrIsNotToldIsLeftOut) {
    open(100, 3);
    tell(100, 3, 1, 0);
    open(200, 3);
    machine.write(info(200, 3), head + "drm-driver:\tnouveau\ndrm-client-id:\t4\n");
    open(300, 3); // computes beside its pictures
    open(300, 4, "/dev/kfd");
    tell(300, 3, 3, 0);
    read();
    EXPECT_EQ(programs(), (Programs{{100, 0}}));
    tell(300, 3, 3, 500);
    EXPECT_EQ(programs(), (Programs{{100, 0}, {300, 50}}));
    LinuxGraphicsClients others(machine.root(), machine.lane(), nullptr, ::geteuid() + 1);
    others.read();
    machine.pass(1);
    EXPECT_FALSE(others.read());
}

TEST_F(Rendering, ASleepingCardIsNotWokenAndHasDoneNothing) {
    const std::string power = "sys/class/drm/renderD128/device/power/";
    machine.write(power + "control", "auto\n");
    machine.write(power + "runtime_status", "suspended\n");
    open(100, 3);
    tell(100, 3, 1, 0);
    const int events = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ::inotify_add_watch(events, (machine.root() + "/proc/100/fdinfo").c_str(), IN_ACCESS | IN_OPEN);
    const auto wasRead = [events] {
        std::array<char, 4096> room{};
        return ::read(events, room.data(), room.size()) > 0;
    };
    for (int seconds = 0; seconds < 30; ++seconds)
        EXPECT_FALSE(read());
    EXPECT_FALSE(wasRead());
    machine.write(power + "runtime_status", "active\n");
    read(20);
    EXPECT_TRUE(wasRead());
    long milliseconds = 0;
    for (int seconds = 0; seconds < 40; ++seconds) {
        tell(100, 3, 1, milliseconds += 400);
        read();
    }
    EXPECT_EQ(programs(0), (Programs{{100, 40}})) << "its work keeps it awake";
    machine.write(power + "runtime_status", "suspended\n");
    EXPECT_EQ(programs(), (Programs{{100, 0}}));
    ::close(events);
}

TEST_F(Rendering, ARestClosesEverything) {
    open(100, 3);
    tell(100, 3, 1, 0);
    read();
    EXPECT_TRUE(read());
    clients.rest();
    tell(100, 3, 1, 800);
    EXPECT_FALSE(read()) << "what was done while nobody asked is not told as of now";
    EXPECT_EQ(programs(), (Programs{{100, 0}}));
}

TEST(GraphicsClients, AMachineWithoutARendererIsNotSearched) {
    SensorMachine machine;
    machine.write("sys/class/drm/card0/device/vendor", "0x1a03\n"); // it only shows pictures
    machine.write("proc/100/fd/3", "");
    const int events = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ::inotify_add_watch(events, (machine.root() + "/proc").c_str(), IN_ACCESS | IN_OPEN);
    LinuxGraphicsClients clients(machine.root(), machine.lane(), nullptr, ::geteuid());
    EXPECT_FALSE(clients.read());
    std::array<char, 4096> room{};
    EXPECT_LE(::read(events, room.data(), room.size()), 0);
    ::close(events);
}

TEST(GraphicsClients, NodesAreKnownByTheirNames) {
    EXPECT_EQ(graphicsNode("/dev/dri/renderD128"), "renderD128");
    EXPECT_EQ(graphicsNode("/run/host/dev/dri/card1"), "card1");
    for (const char* other : {"", "/dev/dri/", "/dev/dri/renderD", "/dev/dri/card1-DP-1", "/home/dri/cards", "/dev/kfd",
                              "/dev/accel/accel0", "socket:[685]", "/dev/dri/card1 (deleted)"})
        EXPECT_EQ(graphicsNode(other), "") << other;
}

/// A library that notes what a test says.
class NotingNvml : public Nvml {
public:
    bool open() override { return true; }
    void close() override {}
    std::optional<NvmlReading> read(const std::string& /*address*/) override { return NvmlReading{.busyPercent = 90}; }
    std::optional<std::vector<NvmlSample>> samples(const std::string& /*address*/, std::uint64_t after) override {
        ++asked;
        std::vector<NvmlSample> found;
        for (const NvmlSample& sample : noted)
            if (sample.microseconds > after)
                found.push_back(sample);
        return found;
    }

    int asked = 0;
    std::vector<NvmlSample> noted;
};

TEST(GraphicsClients, NvidiasLibraryTellsOfProcesses) {
    constexpr std::uint64_t second = 1'000'000;
    SensorMachine machine;
    machine.write("sys/bus/pci/drivers/nvidia/0000:01:00.0/class", "0x030000\n");
    machine.write("sys/bus/pci/drivers/nvidia/0000:01:00.0/power/control", "on\n");
    const auto nvml = std::make_shared<NotingNvml>();
    nvml->noted = {{.pid = 7, .microseconds = 1 * second, .cores = 99}, // long ago
                   {.pid = 7, .microseconds = 100 * second, .cores = 60, .decoder = 90},
                   {.pid = 7, .microseconds = 101 * second, .cores = 80, .decoder = 20},
                   {.pid = 9, .microseconds = 101 * second, .cores = 20},
                   {.pid = 0, .microseconds = 101 * second, .cores = 20},
                   {.pid = 8, .microseconds = 101 * second, .cores = 4294967295}};
    const auto gpus = std::make_shared<NvidiaGPUs>(machine.root(), nvml, machine.lane());
    gpus->readings();
    EXPECT_EQ(nvml->asked, 0) << "nobody wants to know";
    LinuxGraphicsClients clients(machine.root(), machine.lane(), gpus, ::geteuid());
    machine.pass(1);
    const auto shares = clients.read();
    ASSERT_TRUE(shares);
    EXPECT_EQ(shares->programs, (Programs{{7, 70}, {9, 10}}));
    EXPECT_EQ(shares->leastBusyPercent, 80);
    machine.pass(1);
    EXPECT_EQ(clients.read()->programs, Programs()) << "nothing since";
    clients.rest();
    machine.pass(1);
    gpus->readings();
    EXPECT_EQ(nvml->asked, 2);
    EXPECT_EQ(withPrograms(GraphicsShares{.programs = {{.pid = 7, .percent = 5}}}, {{.pid = 3, .percent = 80}, {7, 80}})
                  ->programs,
              (Programs{{3, 50}, {7, 50}}));
}

} // namespace
} // namespace vantoro
