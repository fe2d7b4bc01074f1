#include "Model/Recording/Recording.h"
#include "Model/Recording/RecordingFields.h"
#include "Model/Recording/RecordJson.h"
#include "Model/Records/EnumNames.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fmt/format.h>

namespace vantoro {

std::string utcText(UnixSeconds time) {
    using namespace std::chrono;
    // The years that a four-digit date can name.
    constexpr double first = -62135596800;
    constexpr double last = 253402300799;
    const double seconds = std::isfinite(time) ? std::clamp(std::floor(time), first, last) : 0;
    const sys_seconds instant{std::chrono::seconds(static_cast<std::int64_t>(seconds))};
    const sys_days day = floor<days>(instant);
    const year_month_day date{day};
    const hh_mm_ss clock{instant - day};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
                       clock.minutes().count(), clock.seconds().count());
}

std::string headerLine(const RecordingHeader& header) {
    Json line = Json::object();
    line["format"] = "vantoro-recording";
    line["version"] = 1;
    line["machine"] = header.machine;
    line["created"] = header.created;
    if (header.system)
        line["system"] = caseName(*header.system);
    if (header.processors)
        line["processors"] = {{"performance", std::max(header.processors->performance, 0)},
                              {"efficiency", std::max(header.processors->efficiency, 0)}};
    return jsonText(line);
}

std::string snapshotLine(const Snapshot& snapshot, UnixSeconds notBefore) {
    Json line = recordJson(snapshot);
    CPULoad cpu = snapshot.cpu;
    for (double* const share : {&cpu.userPercent, &cpu.systemPercent, &cpu.idlePercent})
        *share = std::clamp(finite(*share), 0.0, 100.0);
    line["cpu"] = recordJson(cpu);
    line["timestamp"] = finite(std::max(finite(snapshot.timestamp), notBefore));
    return jsonText(line);
}

} // namespace vantoro
