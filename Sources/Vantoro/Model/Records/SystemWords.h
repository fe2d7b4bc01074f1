// What a machine, its system and their parts are called: a Mac's words on a Mac, a computer's anywhere else.
#pragma once

#include "Model/Records/Telemetry.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

/// The words that depend on the system. A row of the table is a system; `…First` begins a sentence.
struct SystemWords {
    SystemKind kind;
    std::string_view machine;           ///< "Mac"
    std::string_view thisMachine;       ///< "this Mac"
    std::string_view thisMachineFirst;  ///< "This Mac"
    std::string_view yourMachineFirst;  ///< "Your Mac"
    std::string_view system;            ///< "macOS"
    std::string_view systemFirst;       ///< "macOS"
    std::string_view backgroundService; ///< "a macOS background service"
    std::string_view sensorSource;      ///< where fans, temperatures and power come from: "SMC"
    std::string_view reportSource;      ///< where loads, frequencies and energy come from: "IOReport"
    std::string_view systemSettings;    ///< where the system's own settings live: "System Settings"

    bool isMac() const { return kind == SystemKind::macos; }
    /// What a kind of process is, "an app you opened".
    std::string_view kindPhrase(ProcessKind kind) const;
};

const SystemWords& systemWords(SystemKind system);

/// The processor's brand name, with "MacBook · " before it on a MacBook; the model where the brand is unknown, "This
/// Mac" where the model is. Anywhere else the brand name serves without a model, too. An empty text counts as unknown.
std::string machineName(const std::optional<std::string>& modelIdentifier,
                        const std::optional<std::string>& processorBrand, SystemKind system = SystemKind::macos);

/// "2 fans · 41 sensors", "No fans · 38 sensors"; where it is not a Mac's what is missing is not counted: "1 sensor".
std::string sensorSummary(Cooling cooling, int fanCount, int sensorCount, SystemKind system = SystemKind::macos);

} // namespace vantoro
