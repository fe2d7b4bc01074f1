// What must and must not be said of each machine of Fixtures/linux-machines, by what is true of it.
#pragma once

#include "Model/Records/Telemetry.h"

#include <optional>
#include <string>
#include <vector>

namespace vantoro::testing {

struct Range {
    double least = 0;
    double most = 0;
};

/// Both ends; 0 is what is not known.
constexpr Range exactly(double figure) {
    return {.least = figure, .most = figure};
}

/// A maximum of 0: what the fan can reach is not known.
struct ExpectedFan {
    double rpm = 0;
    double minRPM = 0;
    double maxRPM = 0;
};

struct ExpectedMachine {
    /// The fixture's.
    std::string name;
    /// One of these. Fans with a reach are there in `fans` alone.
    std::vector<Cooling> cooling;
    int performance = 0;
    int efficiency = 0;
    /// Though its verdict does not come from its heat.
    bool isBuiltWithoutFans = false;
    /// Degrees Celsius. The busy one where the tree has a trap there.
    Range chip;
    std::optional<Range> busyChip;
    /// Among others; each fan with a reach is here.
    std::vector<ExpectedFan> fans;
    /// Degrees Celsius, idle and busy alike; not looked at without.
    std::optional<Range> enclosure;
    std::optional<double> graphics;
    std::optional<double> battery;
    /// Watts.
    std::optional<double> systemWatts = 0;
    double adapterWatts = 0;
    /// Not looked at without.
    std::optional<double> processorWatts;
    /// A supply says that the machine runs on its battery.
    bool onBattery = false;
    /// Of each processor; not looked at without.
    std::vector<int> megahertz;
    std::string called;
    /// The folder of a device that sleeps: nothing there may be read, which would wake it.
    std::string asleep;
    /// Somewhere; "|" stands between what will do.
    std::vector<std::string> says;
    /// Nowhere.
    std::vector<std::string> never;
};

inline const std::vector<ExpectedMachine>& expectedMachines() {
    using enum Cooling;
    constexpr Range none = {};
    static const std::vector<ExpectedMachine> table = {
        // Notebooks with fans whose drivers tell a speed alone.
        {.name = "thinkpad-intel",
         .cooling = {heat},
         .performance = 8,
         .chip = exactly(45),
         .fans = {{2471}, {2036}},
         .enclosure = Range{41.5, 43.1},
         .called = "12th Gen Intel Core i5-1240P",
         .says = {"2471|2,471", "2036|2,036", "can reach is not known"},
         .never = {"65 W", "Charger", "-108"}},
        {.name = "thinkpad-amd",
         .cooling = {heat},
         .performance = 16,
         .chip = exactly(43.375),
         .fans = {{1765}},
         .enclosure = Range{41, 42.1},
         .graphics = 40,
         .systemWatts = 8.1,
         .processorWatts = 10,
         .onBattery = true,
         .says = {"8 W|8.1"}},
        {.name = "hp-notebook", .cooling = {heat}, .performance = 12, .chip = exactly(44), .fans = {{2100}, {0}}},
        {.name = "asus-notebook",
         .cooling = {heat},
         .performance = 16,
         .chip = exactly(46.5),
         .fans = {{2900}, {0}},
         .says = {"cpu_fan|CPU fan|Cpu fan|CPU Fan", "gpu_fan|GPU fan|Gpu fan|GPU Fan|raphics fan"}},
        {.name = "framework",
         .cooling = {heat},
         .performance = 16,
         .chip = exactly(44.25),
         .fans = {{0}},
         .enclosure = Range{35.8, 37.9},
         .battery = 31.85},
        {.name = "msi-notebook", .cooling = {heat}, .performance = 20, .chip = exactly(44), .fans = {{1995}, {0}}},
        {.name = "sleeping-card",
         .cooling = {heat},
         .performance = 16,
         .chip = exactly(45),
         .graphics = 0,
         .asleep = "sys/devices/pci0000:00/0000:00:01.1/0000:03:00.0/hwmon/hwmon1",
         .never = {"98.8", "99°", "99 °", "98765", "4321", "4,321", "4320"}},
        {.name = "arrow-lake",
         .cooling = {heat},
         .performance = 6,
         .efficiency = 10,
         .chip = exactly(44),
         .called = "Intel Core Ultra 9 285H"},
        {.name = "meteor-lake",
         .cooling = {heat},
         .performance = 12,
         .efficiency = 10,
         .chip = exactly(44),
         .megahertz = {900,  900,  900,  900,  900,  900,  900,  900,  900,  900,  4600,
                       4600, 4600, 4600, 4600, 4600, 4600, 4600, 4600, 4600, 4600, 4600}},
        {.name = "snapdragon-laptop",
         .cooling = {heat},
         .performance = 12,
         .chip = exactly(45.8),
         .busyChip = exactly(93.2),
         .enclosure = Range{0, 37.1},
         .systemWatts = 6.1,
         .onBattery = true},
        {.name = "usb-c-contract",
         .cooling = {heat},
         .performance = 8,
         .chip = exactly(45),
         .never = {"65 W", "65.00 W", "30 W", "30.2"}},
        {.name = "two-batteries",
         .cooling = {heat},
         .performance = 8,
         .chip = exactly(42),
         .systemWatts = 7.2,
         .onBattery = true,
         .never = {"65535", "65,535", "9 W"}},
        {.name = "charging", .cooling = {heat}, .performance = 4, .chip = exactly(43), .never = {"25 W", "25.2"}},
        // Fans of which a driver states or drives the whole span.
        {.name = "dell-xps",
         .cooling = {fans},
         .performance = 8,
         .chip = exactly(43),
         .fans = {{0, 0, 4900}, {0, 0, 5100}},
         .enclosure = Range{34, 36.1},
         .says = {"Processor Fan|rocessor fan", "Video Fan|ideo fan"}},
        {.name = "kraken",
         .cooling = {fans},
         .performance = 24,
         .chip = exactly(36),
         .fans = {{2520}, {420, 0, 2100}},
         .enclosure = Range{0, 28.9},
         .says = {"Pump speed|Pump", "2520|2,520"}},
        {.name = "raspberry-pi-5",
         .cooling = {fans, heat},
         .performance = 4,
         .chip = exactly(46.85),
         .fans = {{0}},
         .enclosure = Range{0, 45.3},
         .called = "Raspberry Pi 5 Model B Rev 1.0"},
        {.name = "mac-mini-mainline",
         .cooling = {fans},
         .performance = 4,
         .efficiency = 4,
         .fans = {{1710, 1700, 4900}},
         .enclosure = Range{33, 41.1},
         .systemWatts = 6.6,
         .adapterWatts = 8.2,
         .called = "Apple Mac mini (M1, 2020)"},
        {.name = "imac-intel",
         .cooling = {fans},
         .performance = 4,
         .chip = {39, 44},
         .fans = {{1104, 1100, 3800}, {1102, 1100, 5500}, {941, 940, 2700}},
         .says = {"ODD", "HDD"}},
        // Desktops: headers of a board, a card's fan, a power supply's, a pump.
        {.name = "desktop-nct6775",
         .cooling = {heat},
         .performance = 32,
         .chip = exactly(46.5),
         .busyChip = exactly(94.25),
         .fans = {{982}, {745}},
         .enclosure = Range{25, 36.3},
         .called = "AMD Ryzen 9 7950X 16-Core",
         .never = {"127.5", "-62"}},
        {.name = "gigabyte-it87",
         .cooling = {heat},
         .performance = 12,
         .chip = exactly(39),
         .fans = {{1180}, {854}},
         .never = {"-55"}},
        {.name = "f71882fg-board",
         .cooling = {heat, fans},
         .performance = 4,
         .chip = exactly(42),
         .enclosure = Range{33, 36.1},
         .says = {"1091|1,091"}},
        {.name = "desktop-card-fan-only",
         .cooling = {heat},
         .performance = 16,
         .chip = exactly(38),
         .fans = {{0}},
         .called = "Z690 Phantom Gaming 4",
         .says = {"Graphics fan|raphics fan|Graphics Fan"}},
        {.name = "threadripper",
         .cooling = {heat},
         .performance = 32,
         .chip = exactly(41),
         .busyChip = exactly(68),
         .fans = {{812}},
         .enclosure = Range{35, 41.1},
         .says = {"CPU_Opt|CPU Opt|CPU opt"}},
        {.name = "aquacomputer", .cooling = {heat}, .performance = 16, .chip = exactly(37), .fans = {{1790}, {0}}},
        {.name = "corsair-psu",
         .cooling = {heat},
         .performance = 12,
         .chip = exactly(42.25),
         .busyChip = exactly(87),
         .fans = {{0}},
         .systemWatts = {}},
        {.name = "nvidia-desktop", .cooling = {heat}, .performance = 16, .chip = exactly(37)},
        {.name = "nouveau",
         .cooling = {heat},
         .performance = 8,
         .chip = exactly(40),
         .fans = {{1450}},
         .graphics = 41,
         .says = {"Graphics fan|raphics fan|Graphics Fan"}},
        {.name = "workstation-arc",
         .cooling = {heat},
         .performance = 20,
         .chip = {35, 39},
         .fans = {{905}, {2880}, {620}, {0}},
         .enclosure = Range{33, 41.1},
         .says = {"CPU Fan|CPU fan", "System Fan #1"}},
        {.name = "broken-sensors",
         .cooling = {heat},
         .performance = 4,
         .chip = exactly(40),
         .fans = {{1051}},
         .enclosure = exactly(31),
         .called = "H81M-K",
         .never = {"337500", "337,500", "65535", "65,535", "126.5", "127.5", "92°", "92.0"}},
        {.name = "odd-texts",
         .cooling = {heat},
         .performance = 4,
         .chip = exactly(40),
         .fans = {{905}, {612}, {700}},
         .enclosure = exactly(33),
         .says = {"CPU Fan", "Fan 3"},
         .never = {"\x1b", "\x9b", "\xff", "\x07"}},
        {.name = "missing-policy",
         .cooling = {heat},
         .performance = 8,
         .chip = exactly(40),
         .megahertz = {1000, 1100, 1200, 0, 1400, 1500, 1600, 1700}},
        {.name = "boost",
         .cooling = {heat},
         .performance = 4,
         .chip = exactly(42),
         .megahertz = {4550, 4550, 4550, 4550}},
        {.name = "mini-pc", .cooling = {heat}, .performance = 8, .chip = exactly(44)},
        {.name = "acpi-fan", .cooling = {heat}, .performance = 4, .chip = exactly(42), .fans = {{1100}}},
        // Servers: fans that only another controller knows.
        {.name = "epyc-2-sockets",
         .cooling = {heat},
         .performance = 256,
         .chip = {46, 47.75},
         .busyChip = Range{92.5, 93.75},
         .megahertz = std::vector<int>(256, 1500)},
        {.name = "xeon-2x56", .cooling = {heat}, .performance = 224, .chip = exactly(44), .busyChip = exactly(95)},
        {.name = "server-drives",
         .cooling = {heat},
         .performance = 16,
         .chip = exactly(40),
         .enclosure = exactly(36.85),
         .systemWatts = 212,
         .asleep = "sys/devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0/hwmon/hwmon3",
         .says = {"212"},
         .never = {"98.8"}},
        {.name = "server-128-bare", .cooling = {load}, .performance = 128, .megahertz = std::vector<int>(128, 2800)},
        // Neither fans nor temperatures.
        {.name = "vm", .cooling = {load}, .performance = 4, .called = "QEMU Virtual CPU version 2.5+"},
        {.name = "container", .cooling = {load}, .performance = 2},
        {.name = "wsl", .cooling = {load}, .performance = 16},
        {.name = "macbook-air-mainline",
         .cooling = {load},
         .performance = 4,
         .efficiency = 4,
         .isBuiltWithoutFans = true,
         .enclosure = Range{31, 34.1},
         .battery = 30.2,
         .systemWatts = 5.5,
         .adapterWatts = 18.1,
         .called = "Apple MacBook Air (M1, 2020)"},
        // Boards, tablets, handhelds, a telephone.
        {.name = "raspberry-pi-4",
         .cooling = {passive},
         .performance = 4,
         .chip = exactly(48.312),
         .enclosure = none,
         .called = "Raspberry Pi 4 Model B Rev 1.4"},
        {.name = "allwinner-h616", .cooling = {passive}, .performance = 4, .chip = exactly(47.9), .enclosure = none},
        {.name = "riscv-board", .cooling = {passive}, .performance = 4, .chip = exactly(44.3)},
        {.name = "jetson-nano",
         .cooling = {heat},
         .performance = 4,
         .chip = {41.5, 46.5},
         .enclosure = Range{0, 46.5},
         .called = "NVIDIA Jetson Nano Developer Kit",
         .never = {"100.0", "100 °C", "100°C"}},
        {.name = "rockchip-rk3588",
         .cooling = {heat},
         .performance = 4,
         .efficiency = 4,
         .chip = exactly(44.384),
         .enclosure = none,
         .graphics = 42.538},
        {.name = "chromebook-arm",
         .cooling = {passive, heat},
         .performance = 4,
         .efficiency = 4,
         .chip = exactly(41.2),
         .enclosure = Range{0, 34.1},
         .systemWatts = 3.239,
         .onBattery = true},
        {.name = "tcpm-notebook",
         .cooling = {passive, heat},
         .performance = 2,
         .efficiency = 4,
         .chip = exactly(43.1),
         .enclosure = none,
         .never = {"45 W", "45.00 W"}},
        {.name = "tablet",
         .cooling = {passive},
         .performance = 4,
         .chip = exactly(42),
         .enclosure = Range{0, 20},
         .systemWatts = 5.4,
         .onBattery = true},
        {.name = "surface-fan", .cooling = {heat}, .performance = 12, .chip = exactly(43), .fans = {{0}}},
        {.name = "steam-deck",
         .cooling = {heat},
         .performance = 8,
         .chip = exactly(46),
         .fans = {{1310}},
         .enclosure = exactly(36.85),
         .battery = 32,
         .systemWatts = 9.24,
         .onBattery = true,
         .says = {"System Fan|ystem fan"},
         .never = {"45 W", "Contract"}},
        {.name = "handheld-oxp", .cooling = {heat}, .performance = 16, .chip = exactly(46), .fans = {{2100}}},
        {.name = "phone",
         .cooling = {passive},
         .performance = 4,
         .efficiency = 4,
         .chip = exactly(47.1),
         .enclosure = Range{0, 37.1},
         .systemWatts = 1.8,
         .onBattery = true}};
    return table;
}

} // namespace vantoro::testing
