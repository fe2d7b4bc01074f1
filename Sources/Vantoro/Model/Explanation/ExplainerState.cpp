#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Explanation/ExplainerSections.h"
#include "Model/Text/WholeNumber.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fmt/format.h>
#include <string_view>

namespace vantoro::explainer {

namespace {

/// Seconds from which the length of an episode is worth a sentence.
constexpr double notableDuration = 30;

double meanLoad(const SnapshotRun& run, std::size_t from, std::size_t to, Cooling cooling) {
    double sum = 0;
    for (std::size_t i = from; i < to; ++i)
        sum += DiagnosisEngine::load(run[i], cooling);
    return sum / static_cast<double>(to - from);
}

/// Where the load has been heading over the last minute.
std::string trend(const History& history) {
    constexpr double lookBackSeconds = 60;
    constexpr std::size_t fewestSnapshots = 6;
    constexpr double noticeable = 0.05;
    const SnapshotRun run = history.recent(lookBackSeconds);
    if (run.size() < fewestSnapshots)
        return "not enough history yet";
    const Cooling cooling = run.back().cooling;
    const std::size_t middle = run.size() / 2;
    const double change = meanLoad(run, middle, run.size(), cooling) - meanLoad(run, 0, middle, cooling);
    if (change > noticeable)
        return cooling == Cooling::passive ? "heating up" : "climbing";
    if (change < -noticeable)
        return cooling == Cooling::passive ? "cooling down" : "winding down";
    return "steady";
}

const char* temperatureBand(double celsius) {
    if (celsius > 95)
        return "very hot, near the limit";
    if (celsius > 85)
        return "hot";
    return celsius > 68 ? "warm" : "cool";
}

Explanation::Row powerRow(const PowerReading& power) {
    return {.label = "System power",
            .value = fmt::format("{:.0f} W", power.systemWatts),
            .detail = power.adapterWatts > 5 ? fmt::format("{} W from the charger", truncated(power.adapterWatts))
                                             : "on battery"};
}

Explanation::Row processorRow(const CPULoad& cpu) {
    const double busy = std::clamp(DiagnosisEngine::busyPercent(cpu), 0.0, 100.0);
    return {
        .label = "CPU",
        .value = fmt::format("{}% busy", truncated(busy)),
        .detail = fmt::format("{}% apps, {}% system", truncated(cpu.userPercent), truncated(cpu.systemPercent)),
    };
}

Explanation::Row pressureRow(ThermalPressure pressure) {
    static constexpr std::array details{"macOS isn't holding the chip back", "macOS is keeping an eye on the heat",
                                        "macOS is slowing the chip to shed heat",
                                        "macOS is slowing the chip hard to protect it"};
    return {.label = "Thermal pressure",
            .value = std::string(DiagnosisEngine::title(pressure)),
            .detail = details[static_cast<std::size_t>(pressure)]};
}

Explanation::Row passiveChipRow(const Temperatures& temps, const Format& format) {
    std::string detail = "whole chip";
    if (temps.soc > 0)
        detail += fmt::format(" · hottest core {}, {}", format.temperature(temps.soc), temperatureBand(temps.soc));
    return {.label = "Chip temperature", .value = format.temperature(temps.socMean), .detail = std::move(detail)};
}

Explanation::Row chipRow(const Temperatures& temps, const Format& format) {
    return {.label = "Chip temperature",
            .value = format.temperature(temps.soc),
            .detail = temps.soc > 0 ? temperatureBand(temps.soc) : "not reported"};
}

std::string unreadChipBody(ThermalPressure pressure) {
    std::string body =
        "Vantoro is still waiting for the chip's first usable temperature reading. An idle Apple silicon "
        "chip parks its sensors, and they report again as soon as it does some work.";
    if (!DiagnosisEngine::isThrottling(pressure))
        return body + " This Mac has no fans, so until then there is no condition to describe.";
    return body + fmt::format(" macOS has raised thermal pressure to {} in the meantime, so something is warm even if "
                              "the chip hasn't said so yet.",
                              DiagnosisEngine::word(pressure));
}

std::string passiveBody(const Verdict& verdict, const Snapshot& now, const Format& format) {
    if (verdict.awaitingReading)
        return unreadChipBody(now.thermalPressure);
    std::string body(verdict.statePhrase());
    if (now.temps.socMean > 0) {
        body += " — the chip as a whole is at " + format.temperature(now.temps.socMean);
        if (now.temps.soc > 0)
            body += ", and its hottest core at " + format.temperature(now.temps.soc);
    }
    body += ".";
    if (verdict.sustainedFor > notableDuration)
        body += " It has been running warm for " + DiagnosisEngine::duration(verdict.sustainedFor) + ".";
    return body +
           " This Mac has no fans: its heat leaves through the case, and at its limit the chip slows itself down "
           "rather than getting louder.";
}

double position(const FanReading& fan) {
    return (fan.rpm - fan.minRPM) / (fan.maxRPM - fan.minRPM);
}

/// The fan that has climbed furthest, the first on a tie; null when no fan's limits are known.
const FanReading* hardestWorking(const std::vector<FanReading>& fans) {
    const FanReading* hardest = nullptr;
    for (const FanReading& fan : fans)
        if (fan.maxRPM - fan.minRPM > 1.0 && (hardest == nullptr || position(fan) > position(*hardest)))
            hardest = &fan;
    return hardest;
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

std::string fanSentence(const std::vector<FanReading>& fans, const Format& format) {
    if (fans.empty())
        return "no fans are being reported by this Mac.";
    const FanReading* hardest = hardestWorking(fans);
    if (hardest == nullptr) { // without known limits there is a speed to tell, but no place within them
        const FanReading& fastest = *std::ranges::max_element(fans, {}, &FanReading::rpm);
        return fmt::format("the {} fan is at {} rpm.", lowerCase(fastest.label()), format.rpm(fastest.rpm));
    }
    const std::int64_t climbed = truncated(std::clamp(position(*hardest), 0.0, 1.0) * 100);
    return fmt::format("the {} fan is at {} rpm, {}% of the way between its {} rpm floor and its {} rpm ceiling.",
                       lowerCase(hardest->label()), format.rpm(hardest->rpm), climbed, format.rpm(hardest->minRPM),
                       format.rpm(hardest->maxRPM));
}

std::string fansBody(const Verdict& verdict, const Snapshot& now, const Format& format) {
    std::string body = fmt::format("{} — {}", verdict.statePhrase(), fanSentence(now.fans, format));
    if (verdict.sustainedFor > notableDuration)
        body += " They have been elevated for " + DiagnosisEngine::duration(verdict.sustainedFor) + ".";
    return body;
}

} // namespace

Explanation::Section stateSection(const History& history, const Verdict& verdict, const Snapshot& now,
                                  const Format& format) {
    Explanation::Section section{.symbol = "gauge.with.dots.needle.67percent", .title = "Where things stand"};
    const std::string label(verdict.stateLabel());
    if (now.cooling == Cooling::passive) {
        section.body = passiveBody(verdict, now, format);
        section.rows = {{.label = "Condition", .value = label, .detail = trend(history)},
                        passiveChipRow(now.temps, format),
                        pressureRow(now.thermalPressure),
                        powerRow(now.power),
                        processorRow(now.cpu)};
    } else {
        section.body = fansBody(verdict, now, format);
        section.rows = {{.label = "Fan state", .value = label, .detail = trend(history)},
                        chipRow(now.temps, format),
                        powerRow(now.power),
                        processorRow(now.cpu)};
    }
    return section;
}

} // namespace vantoro::explainer
