// What the sensors of Linux cost: finding 5,000 of them, and one reading of all that the hub reads, beside the bare
// reading of the same files.
#include "CSensors/smc.h"
#include "Model/Readers/SMCReader.h"
#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Sensors/HwmonSMCService.h"
#include "Platform/Posix/Clocks.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace vantoro;

/// A tree of `chips` with `sensors` each, in turn of the processor, of the graphics and of the board.
class Tree {
public:
    Tree(int chips, int sensors) {
        std::string pattern = (std::filesystem::temp_directory_path() / "vantoro-XXXXXX").string();
        if (::mkdtemp(pattern.data()) != nullptr)
            root_ = pattern;
        static constexpr const char* drivers[] = {"coretemp", "amdgpu", "nct6799"};
        for (int chip = 0; chip < chips; ++chip) {
            const std::string folder = root_ + "/sys/class/hwmon/hwmon" + std::to_string(chip);
            std::filesystem::create_directories(folder);
            std::ofstream(folder + "/name") << drivers[chip % 3];
            for (int number = 1; number <= sensors; ++number) {
                const std::string stem = folder + "/temp" + std::to_string(number);
                std::ofstream(stem + "_input") << 40000 + number * 100 << '\n';
                std::ofstream(stem + "_label") << "Sensor " << number << '\n';
            }
        }
    }
    ~Tree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    const std::string& root() const { return root_; }

private:
    std::string root_;
};

void discoverFiveThousandFiles(benchmark::State& state) {
    const Tree tree(10, 250); // 2,500 readings and as many labels
    for (auto _ : state) {
        HwmonSMCService service(tree.root(), std::make_shared<SlowLane>(monotonicSeconds), nullptr);
        benchmark::DoNotOptimize(service.open("AppleSMC"));
    }
}
BENCHMARK(discoverFiveThousandFiles)->Unit(benchmark::kMillisecond);

void readEverything(benchmark::State& state) {
    const Tree tree(3, 64);
    auto service =
        std::make_shared<HwmonSMCService>(tree.root(), std::make_shared<SlowLane>(monotonicSeconds), nullptr);
    smc_use(service);
    SMCReader reader(SMCReader::Options::of(service, [](int) {}));
    std::vector<Descriptor> files;
    const std::size_t enclosure = reader.keys(SensorFamily::enclosure).size();
    for (const HwmonSensor& sensor : discoverHwmon(tree.root()))
        if (sensor.driver != "nct6799" || files.size() < reader.keys(SensorFamily::chip).size() +
                                                             reader.keys(SensorFamily::graphics).size() + enclosure)
            files.emplace_back(::open(sensor.inputPath.c_str(), O_RDONLY | O_CLOEXEC));
    reader.readTemperatures();
    double bare = 0;
    double read = 0;
    for (auto _ : state) {
        const double begun = monotonicSeconds();
        for (const Descriptor& file : files) {
            char room[64];
            benchmark::DoNotOptimize(::pread(file.number(), room, sizeof room, 0));
        }
        const double between = monotonicSeconds();
        benchmark::DoNotOptimize(reader.readTemperatures());
        bare += between - begun;
        read += monotonicSeconds() - between;
    }
    state.counters["files"] = static_cast<double>(files.size());
    state.counters["ratio"] = read / bare;
    state.counters["us_per_file"] =
        read / static_cast<double>(state.iterations()) / static_cast<double>(files.size()) * 1e6;
    smc_use(nullptr);
}
BENCHMARK(readEverything)->Unit(benchmark::kMicrosecond);

} // namespace
