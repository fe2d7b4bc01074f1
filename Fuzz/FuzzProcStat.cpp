// Every parser of the kernel's text files on the same bytes.
#include "Model/Text/Utf8.h"
#include "Platform/Linux/Hwmon/FanLimits.h"
#include "Platform/Linux/Power/DrmClients.h"
#include "Platform/Linux/Power/LinuxStrain.h"
#include "Platform/Linux/Proc/ProcScan.h"
#include "Platform/Linux/Proc/ProcStat.h"
#include "Platform/Linux/Proc/ProgramSubject.h"
#include "Platform/Linux/Processor/CpuClocks.h"
#include "Platform/Linux/Reading/LinuxOwnCost.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

bool liesIn(std::string_view part, std::string_view text) {
    return part.empty() || (part.data() >= text.data() && part.data() + part.size() <= text.data() + text.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto stat = vantoro::parseProcessStat(text)) {
        require(liesIn(stat->name, text) && stat->usedBytes <= size && stat->parentPid >= 0);
        // What follows the bytes used makes no difference.
        require(vantoro::parseProcessStat(text.substr(0, stat->usedBytes)) == stat);
    }
    if (const auto load = vantoro::parseLoadAverages(text))
        require(load->oneMinute >= 0 && load->fiveMinutes >= 0 && load->fifteenMinutes >= 0);
    (void)vantoro::parseRealUid(text);
    (void)vantoro::parseKernelStat(text);
    (void)vantoro::parseMemoryInfo(text);
    (void)vantoro::parseSwapCounts(text);
    (void)vantoro::parseZramUsedBytes(text);
    (void)vantoro::parseTotalTicks(text);
    const vantoro::FanRanges ranges = vantoro::parseFanRanges(text);
    require(vantoro::parseFanRanges(vantoro::printFanRanges(ranges)) == ranges);
    (void)vantoro::parseProportionalBytes(text);
    const auto isShare = [](std::optional<double> percent) { return !percent || (*percent >= 0 && *percent <= 100); };
    require(isShare(vantoro::parseStall(text)) && isShare(vantoro::parseBoardLoad(text)));
    const auto queues = vantoro::parseQueueTimes(text);
    require(isShare(vantoro::busiestQueue(queues, {queues.rbegin(), queues.rend()})));
    (void)vantoro::meanFrequency(vantoro::parseTimeInState(text), vantoro::parseTimeInState(text));
    (void)vantoro::parseGpuMetrics(text);
    if (const auto usage = vantoro::parseDrmUsage(text)) {
        vantoro::DrmMeter meter;
        auto before = *usage;
        for (auto& engine : before.engines)
            engine.nanoseconds = engine.cycles = engine.totalCycles = 0;
        meter.take(before, 1);
        meter.take(*usage, 3);
        for (const auto& share : meter.shares())
            require(share.percent > 0 && share.percent <= 100);
        for (const auto& engine : usage->engines)
            require(liesIn(engine.name, text) && engine.capacity > 0);
    }
    require(liesIn(vantoro::parseControlGroup(text), text));
    require(liesIn(vantoro::pathInCommandLine(text), text));
    for (const char* program : {"python3.11", "bash", "java", "dotnet", "busybox", "qemu-kvm", "wine", "conmon"}) {
        const std::string subject = vantoro::subjectOf(program, text);
        require(subject.size() <= 200 && vantoro::validUtf8Length(subject) == subject.size());
        require(subject.find_first_of("\t\n\x1b") == std::string::npos);
    }
    return 0;
}
