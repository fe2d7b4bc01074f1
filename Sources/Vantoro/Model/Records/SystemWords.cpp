#include "Model/Records/SystemWords.h"

#include <cstddef>
#include <fmt/format.h>

namespace vantoro {

namespace {

constexpr std::array<SystemWords, 2> systems{{
    {.kind = SystemKind::macos,
     .machine = "Mac",
     .thisMachine = "this Mac",
     .thisMachineFirst = "This Mac",
     .yourMachineFirst = "Your Mac",
     .system = "macOS",
     .systemFirst = "macOS",
     .backgroundService = "a macOS background service",
     .sensorSource = "SMC",
     .reportSource = "IOReport",
     .systemSettings = "System Settings"},
    {.kind = SystemKind::gnuLinux,
     .machine = "computer",
     .thisMachine = "this computer",
     .thisMachineFirst = "This computer",
     .yourMachineFirst = "This computer",
     .system = "the system",
     .systemFirst = "The system",
     .backgroundService = "a background service",
     .sensorSource = "Sensors",
     .reportSource = "Energy counters",
     .systemSettings = "the system's settings"},
}};

bool isKnown(const std::optional<std::string>& text) {
    return text && !text->empty();
}

std::string counted(int count, const char* one, const char* many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

} // namespace

const SystemWords& systemWords(SystemKind system) {
    return systems[static_cast<std::size_t>(system)];
}

std::string_view SystemWords::kindPhrase(ProcessKind process) const {
    switch (process) {
    case ProcessKind::userApp:
        return "an app you opened";
    case ProcessKind::helper:
        return "a helper of an app you opened";
    case ProcessKind::commandLine:
        return "command-line work";
    case ProcessKind::systemDaemon:
        return backgroundService;
    case ProcessKind::kernel:
        break;
    }
    return "the kernel";
}

std::string machineName(const std::optional<std::string>& modelIdentifier,
                        const std::optional<std::string>& processorBrand, SystemKind system) {
    const SystemWords& words = systemWords(system);
    if (!isKnown(modelIdentifier) && (words.isMac() || !isKnown(processorBrand)))
        return std::string(words.thisMachineFirst);
    if (!isKnown(processorBrand))
        return *modelIdentifier;
    if (isKnown(modelIdentifier) && modelIdentifier->starts_with("MacBook"))
        return fmt::format("MacBook · {}", *processorBrand);
    return *processorBrand;
}

std::string sensorSummary(Cooling cooling, int fanCount, int sensorCount, SystemKind system) {
    const bool isMac = system == SystemKind::macos;
    const std::string sensors =
        isMac ? fmt::format("{} sensors", sensorCount) : counted(sensorCount, "sensor", "sensors");
    if (cooling == Cooling::passive)
        return "No fans · " + sensors;
    if (!isMac && fanCount == 0)
        return sensorCount == 0 ? "No sensors" : sensors;
    return counted(fanCount, "fan", "fans") + " · " + sensors;
}

} // namespace vantoro
