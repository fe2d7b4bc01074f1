// The section of an explanation that says where things stand.
#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Explanation/Explanation.h"
#include "Model/Text/Numbers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <fmt/format.h>

namespace vantoro {

namespace {

/// Seconds from which the length of an episode is worth a sentence.
constexpr double notableDuration = 30;

double meanLoad(const History& history, std::size_t from, std::size_t to, Cooling cooling) {
    double sum = 0;
    for (std::size_t i = from; i < to; ++i)
        sum += history.load(i, cooling);
    return sum / static_cast<double>(to - from);
}

/// Where the load has been heading over the last minute.
std::string trend(const History& history) {
    constexpr double lookBackSeconds = 60;
    constexpr std::size_t fewestSnapshots = 6;
    constexpr double noticeable = 0.05;
    const std::size_t count = history.recent(lookBackSeconds).size();
    if (count < fewestSnapshots)
        return "not enough history yet";
    const std::size_t end = history.snapshots().size();
    const std::size_t middle = end - count + count / 2;
    const Cooling cooling = history.snapshots().back().cooling;
    const double change = meanLoad(history, middle, end, cooling) - meanLoad(history, end - count, middle, cooling);
    if (change > noticeable)
        return std::string(byCooling(cooling, "climbing", "heating up", "heating up", "getting busier"));
    if (change < -noticeable)
        return std::string(byCooling(cooling, "winding down", "cooling down", "cooling down", "easing off"));
    return "steady";
}

const char* temperatureBand(double celsius) {
    if (celsius > 95)
        return "very hot, near the limit";
    if (celsius > 85)
        return "hot";
    return celsius > 68 ? "warm" : "cool";
}

/// Unknown is told as unknown; only a Mac whose adapter gives nothing is known to run on its battery.
Explanation::Row powerRow(const PowerReading& power, const SystemWords& words) {
    Explanation::Row row{.label = "System power", .value = fmt::format("{:.0f} W", power.systemWatts)};
    const bool isFedByBattery =
        power.systemWatts > 0 && std::abs(power.systemWatts - power.batteryWatts) < 0.01 * power.systemWatts;
    if (power.adapterWatts > 5)
        row.detail = fmt::format("{} W from the charger", truncated(power.adapterWatts));
    else if (words.isMac() || isFedByBattery)
        row.detail = "on battery";
    if (words.isMac() || power.systemWatts > 0.5)
        return row;
    row.value = "—";
    if (power.cpuWatts)
        row.detail = fmt::format("not reported; the processors draw {:.0f} W", *power.cpuWatts);
    else if (row.detail.empty())
        row.detail = "not reported";
    return row;
}

Explanation::Row processorRow(const CPULoad& cpu) {
    const double busy = std::clamp(DiagnosisEngine::busyPercent(cpu), 0.0, 100.0);
    return {
        .label = "CPU",
        .value = fmt::format("{}% busy", truncated(busy)),
        .detail = fmt::format("{}% apps, {}% system", truncated(cpu.userPercent), truncated(cpu.systemPercent)),
    };
}

/// Who holds the chip back is known on a Mac; elsewhere only where a reason is given.
std::string pressureDetail(const Snapshot& now, const SystemWords& words) {
    static constexpr std::array known{"{} isn't holding the chip back", "{} is keeping an eye on the heat",
                                      "{} is slowing the chip to shed heat",
                                      "{} is slowing the chip hard to protect it"};
    static constexpr std::array unknown{"within its limits", "close to a limit", "at a limit", "past its limits"};
    const bool knowsReasons = words.isMac() || (now.throttle && (!DiagnosisEngine::isThrottling(now.thermalPressure) ||
                                                                 DiagnosisEngine::isSlowedByHeat(now, words.kind)));
    const auto level = static_cast<std::size_t>(now.thermalPressure);
    return knowsReasons ? fmt::format(fmt::runtime(known[level]), words.system) : unknown[level];
}

Explanation::Row pressureRow(const Snapshot& now, const SystemWords& words) {
    return {.label = "Thermal pressure",
            .value = std::string(DiagnosisEngine::title(now.thermalPressure)),
            .detail = pressureDetail(now, words)};
}

Explanation::Row wholeChipRow(const Temperatures& temps, const Format& format) {
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

/// A fan within a sentence: "the left fan", "the CPU fan", "fan 3", "the pump". A driver's word keeps its capitals
/// unless it is an ordinary one.
std::string fanPhrase(const FanReading& fan, SystemKind system) {
    if (system == SystemKind::macos && fan.name.empty())
        return fmt::format("the {} fan", lowerCase(fan.label()));
    std::string name = fan.label(system);
    if (name.size() > 1 && std::islower(static_cast<unsigned char>(name[1])) != 0)
        name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
    const std::string lower = lowerCase(name);
    if (lower.starts_with("fan"))
        return lower.size() > 3 ? name : "the fan";
    return "the " + name +
           (lower.find("fan") == std::string::npos && lower.find("pump") == std::string::npos ? " fan" : "");
}

std::string fanSentence(const std::vector<FanReading>& fans, const SystemWords& words, const Format& format) {
    if (fans.empty())
        return fmt::format("no fans are being reported by {}.", words.thisMachine);
    const FanReading* hardest = hardestWorking(fans);
    if (hardest == nullptr) { // without known limits there is a speed to tell, but no place within them
        const FanReading& fastest = *std::ranges::max_element(fans, {}, &FanReading::rpm);
        return fmt::format("{} is at {} rpm.", fanPhrase(fastest, words.kind), format.rpm(fastest.rpm));
    }
    const std::int64_t climbed = truncated(std::clamp(position(*hardest), 0.0, 1.0) * 100);
    return fmt::format("{} is at {} rpm, {}% of the way between its {} rpm floor and its {} rpm ceiling.",
                       fanPhrase(*hardest, words.kind), format.rpm(hardest->rpm), climbed, format.rpm(hardest->minRPM),
                       format.rpm(hardest->maxRPM));
}

/// Fans whose limits nobody knows, by their speeds: " The left fan is at 1,435 rpm; what it can reach is not known."
std::string speedsSentence(const std::vector<FanReading>& fans, const SystemWords& words, const Format& format) {
    constexpr std::size_t mostTold = 4;
    std::string told;
    const std::size_t count = std::min(fans.size(), mostTold);
    for (std::size_t i = 0; i < count; ++i) {
        const bool isLast = i + 1 == count && fans.size() <= mostTold;
        told += i == 0 ? " " : isLast ? " and " : ", ";
        told += fmt::format("{} {}{} rpm", fanPhrase(fans[i], words.kind), i == 0 ? "is at " : "at ",
                            format.rpm(fans[i].rpm));
    }
    if (told.empty())
        return told;
    told[1] = static_cast<char>(std::toupper(static_cast<unsigned char>(told[1])));
    if (fans.size() > mostTold)
        told += fmt::format(" and {} more", fans.size() - mostTold);
    return told + (fans.size() == 1 ? "; what it can reach is not known." : "; what they can reach is not known.");
}

std::string unreadChipBody(const Snapshot& now, const SystemWords& words) {
    std::string body = "Vantoro is still waiting for the chip's first usable temperature reading.";
    if (words.isMac())
        body += " An idle Apple silicon chip parks its sensors, and they report again as soon as it does some work.";
    if (!DiagnosisEngine::isThrottling(now.thermalPressure))
        return body + (now.cooling == Cooling::passive
                           ? fmt::format(" {} has no fans, so until then there is no condition to describe.",
                                         words.thisMachineFirst)
                           : " Until then there is no condition to describe.");
    if (words.isMac())
        return body + fmt::format(" macOS has raised thermal pressure to {} in the meantime, so something is warm even "
                                  "if the chip hasn't said so yet.",
                                  DiagnosisEngine::word(now.thermalPressure));
    return body + fmt::format(" Thermal pressure is {} in the meantime, so something is warm even if the chip hasn't "
                              "said so yet.",
                              DiagnosisEngine::word(now.thermalPressure));
}

std::string heatBody(const Verdict& verdict, const Snapshot& now, const Format& format) {
    const SystemWords& words = systemWords(verdict.system);
    std::string body;
    if (verdict.awaitingReading) {
        body = unreadChipBody(now, words);
    } else {
        body = verdict.statePhrase();
        if (now.temps.socMean > 0) {
            body += " — the chip as a whole is at " + format.temperature(now.temps.socMean);
            if (now.temps.soc > 0)
                body += ", and its hottest core at " + format.temperature(now.temps.soc);
        }
        body += ".";
        if (verdict.sustainedFor > notableDuration)
            body += " It has been running warm for " + DiagnosisEngine::duration(verdict.sustainedFor) + ".";
        if (now.cooling == Cooling::passive)
            body += fmt::format(" {} has no fans: its heat leaves through the case, and at its limit the chip slows "
                                "itself down rather than getting louder.",
                                words.thisMachineFirst);
    }
    if (now.cooling == Cooling::heat)
        body += speedsSentence(now.fans, words, format);
    return body;
}

std::string fansBody(const Verdict& verdict, const Snapshot& now, const Format& format) {
    const SystemWords& words = systemWords(verdict.system);
    std::string body = fmt::format("{} — {}", verdict.statePhrase(), fanSentence(now.fans, words, format));
    if (verdict.sustainedFor > notableDuration)
        body += " They have been elevated for " + DiagnosisEngine::duration(verdict.sustainedFor) + ".";
    return body;
}

std::string workBody(const Verdict& verdict, const History& history) {
    const std::size_t newest = history.snapshots().size() - 1;
    const bool isOfGraphics = !history.snapshots().empty() && history.graphicsShare(newest) > history.busyShare(newest);
    std::string body = fmt::format("{} — its {} {} busy over the last 10 seconds.", verdict.statePhrase(),
                                   isOfGraphics ? "graphics processor was" : "processors were",
                                   DiagnosisEngine::pct(verdict.load * 100));
    if (verdict.sustainedFor > notableDuration)
        body += " It has been busy for " + DiagnosisEngine::duration(verdict.sustainedFor) + ".";
    return body;
}

/// What work had to wait for, where that is felt: "Waiting for memory 18 % of the time."
std::string waitingSentences(const StallShares& stalls) {
    std::string sentences;
    for (const auto& [waitedFor, percent, isFelt] : DiagnosisEngine::stallsOf(stalls))
        if (isFelt)
            sentences += fmt::format(" Waiting for {} {} % of the time.", waitedFor, rounded(percent));
    return sentences;
}

} // namespace

Explanation::Section stateSection(const History& history, const Verdict& verdict, const Snapshot& now,
                                  const Format& format) {
    const SystemWords& words = systemWords(verdict.system);
    Explanation::Section section{.symbol = "gauge.with.dots.needle.67percent", .title = "Where things stand"};
    const bool isOfFans = now.cooling == Cooling::fans && !verdict.speaksOfWork();
    section.rows.push_back({.label = isOfFans ? "Fan state" : "Condition",
                            .value = std::string(verdict.stateLabel()),
                            .detail = trend(history)});
    switch (now.cooling) {
    case Cooling::fans:
        section.body = fansBody(verdict, now, format);
        section.rows.push_back(chipRow(now.temps, format));
        break;
    case Cooling::passive:
    case Cooling::heat:
        section.body = heatBody(verdict, now, format);
        section.rows.push_back(wholeChipRow(now.temps, format));
        // Elsewhere the lowest pressure is also what stands where nothing tells it.
        if (words.isMac() || now.thermalPressure != ThermalPressure::nominal)
            section.rows.push_back(pressureRow(now, words));
        break;
    case Cooling::load:
        section.body = workBody(verdict, history);
        break;
    }
    section.body += waitingSentences(now.stalls) + slowdownSentences(verdict, now, true);
    section.rows.push_back(powerRow(now.power, words));
    section.rows.push_back(processorRow(now.cpu));
    return section;
}

} // namespace vantoro
