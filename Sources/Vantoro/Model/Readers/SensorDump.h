// What the sensors' controller offers on this machine and what the reader makes of it, as text: for a machine whose
// temperatures or fans look wrong.
#pragma once

#include "Model/Readers/SMCReader.h"
#include "Platform/GraphicsClients.h"
#include "Platform/Strain.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// Takes one line of a report, without its end.
using PrintLine = std::function<void(std::string_view line)>;

struct SensorDump {
    SensorDump() = delete;

    /// What stands where nothing is known.
    enum class Unknown {
        zero, ///< as the controller's readers have always had it
        said  ///< a word; and what only shows as a difference is read twice
    };

    /// Everything, once. `reader` says how to build the reader.
    static void run(const SMCReader::Options& reader, Unknown unknown, const PrintLine& print);
    /// A table of `samples` rows, one every `intervalSeconds`; the waiting is the options' pause.
    static void watch(int samples, double intervalSeconds, const SMCReader::Options& reader, Unknown unknown,
                      const PrintLine& print);
    /// What is known of the machine beside its sensors: its cores and their clocks, what its processors draw, how busy
    /// its graphics are, what work waits for and what slows it down.
    static void strain(const std::vector<Core>& cores, const StrainReading& strain, const PrintLine& print);
    /// "3 programs, the busiest 42%", or "unknown"; with what is not in it.
    static std::string graphicsWork(const std::optional<GraphicsShares>& shares);
};

} // namespace vantoro
