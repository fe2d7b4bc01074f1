#include "Model/Explanation/Reports.h"

#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Model/Recording/RecordJson.h"
#include "Model/Text/TerminalText.h"
#include "Model/Text/Utf8.h"

#include <fmt/format.h>

namespace vantoro {

namespace {

Json vitalsJson(const Snapshot& snapshot) {
    const Vitals vitals = Vitals::quantising(snapshot);
    Json object = Json::object();
    object["fans"] = toJson(vitals.fans);
    object["temps"] = toJson(vitals.temps);
    object["power"] = toJson(vitals.power);
    object["cpu"] = toJson(vitals.cpu);
    object["memory"] = toJson(vitals.memory);
    object["thermalPressure"] = toJson(vitals.thermalPressure);
    object["fanLoad"] = toJson(vitals.fanLoad());
    object["peakRPM"] = toJson(vitals.peakRPM());
    return object;
}

Json memberJson(const ProcessAggregate& member) {
    Json object = Json::object();
    object["pid"] = member.pid;
    object["displayName"] = member.displayName;
    object["owningAppName"] = toJson(member.owningAppName);
    object["owningAppPath"] = toJson(member.owningAppPath);
    object["executablePath"] = member.executablePath;
    object["kind"] = toJson(member.kind);
    object["user"] = member.user;
    object["totalCPU"] = toJson(member.totalCPU);
    object["peakCPU"] = toJson(member.peakCPU);
    object["totalEnergy"] = toJson(member.totalEnergy);
    object["peakMemory"] = member.peakMemory;
    object["samples"] = member.samples;
    object["busySamples"] = member.busySamples;
    object["averageCPU"] = toJson(member.averageCPU);
    object["averageEnergy"] = toJson(member.averageEnergy);
    object["sustained"] = toJson(member.sustained);
    object["stressScore"] = toJson(member.stressScore);
    object["firstSeen"] = toJson(member.firstSeen);
    object["lastSeen"] = toJson(member.lastSeen);
    return object;
}

template <class Element, class ToJson>
Json listJson(const std::vector<Element>& list, ToJson elementJson) {
    Json array = Json::array();
    for (const Element& element : list)
        array.push_back(elementJson(element));
    return array;
}

Json groupJson(const ProcessGroup& group, SystemKind system) {
    Json object = Json::object();
    object["key"] = group.key;
    object["displayName"] = group.displayName;
    object["friendlyName"] = friendlyName(group, system);
    object["owningAppPath"] = toJson(group.owningAppPath);
    object["kind"] = toJson(group.kind);
    object["user"] = group.user;
    object["totalCPU"] = toJson(group.totalCPU);
    object["peakCPU"] = toJson(group.peakCPU);
    object["totalMemory"] = group.totalMemory;
    object["sustained"] = toJson(group.sustained);
    object["stressScore"] = toJson(group.stressScore);
    object["gpuPercent"] = group.gpuPercent ? toJson(*group.gpuPercent) : Json(nullptr);
    object["members"] = listJson(group.members, memberJson);
    return object;
}

auto inWordsOf(SystemKind system) {
    return [system](const ProcessGroup& group) { return groupJson(group, system); };
}

Json factorJson(const Factor& factor) {
    Json object = Json::object();
    object["symbol"] = factor.symbol;
    object["title"] = factor.title;
    object["value"] = factor.value;
    object["detail"] = factor.detail;
    return object;
}

Json adviceJson(const Advice& advice) {
    Json object = Json::object();
    object["text"] = advice.text;
    object["quitPID"] = advice.quitPID ? Json(*advice.quitPID) : Json(nullptr);
    return object;
}

Json verdictJson(const Verdict& verdict) {
    Json object = Json::object();
    object["severity"] = toJson(verdict.severity);
    object["state"] = toJson(verdict.state);
    object["cooling"] = toJson(verdict.cooling);
    object["awaitingReading"] = verdict.awaitingReading;
    object["stateLabel"] = verdict.stateLabel();
    object["statePhrase"] = verdict.statePhrase();
    object["headline"] = verdict.headline;
    object["detail"] = verdict.detail;
    object["cause"] = verdict.cause;
    object["sustainedFor"] = toJson(verdict.sustainedFor);
    object["suspect"] = verdict.suspect ? groupJson(*verdict.suspect, verdict.system) : Json(nullptr);
    object["runnersUp"] = listJson(verdict.runnersUp, inWordsOf(verdict.system));
    object["factors"] = listJson(verdict.factors, factorJson);
    object["advice"] = listJson(verdict.advice, adviceJson);
    return object;
}

Json rowJson(const Explanation::Row& row) {
    Json object = Json::object();
    object["label"] = row.label;
    object["value"] = row.value;
    object["detail"] = row.detail;
    object["emphasised"] = row.emphasised;
    return object;
}

Json sectionJson(const Explanation::Section& section) {
    Json object = Json::object();
    object["symbol"] = section.symbol;
    object["title"] = section.title;
    object["body"] = section.body;
    object["rows"] = listJson(section.rows, rowJson);
    return object;
}

Json explanationJson(const Explanation& explanation) {
    Json object = Json::object();
    object["headline"] = explanation.headline;
    object["subhead"] = explanation.subhead;
    object["severity"] = toJson(explanation.severity);
    object["sections"] = listJson(explanation.sections, sectionJson);
    return object;
}

Json pointJson(const TimePoint& point) {
    return Json::array({toJson(point.time), toJson(point.value)});
}

Json seriesJson(const ChartSeries& series) {
    Json object = Json::object();
    object["fan"] = listJson(series.fan, pointJson);
    object["cpu"] = listJson(series.cpu, pointJson);
    object["temp"] = listJson(series.temp, pointJson);
    object["chip"] = listJson(series.chip, pointJson);
    object["power"] = listJson(series.power, pointJson);
    return object;
}

/// What a terminal would take as an order, or not show, is written as \uNNNN. Outside of JSON's texts there is none.
std::string escapedForTerminal(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    for (std::size_t at = 0; at < json.size();) {
        const Character character = firstCharacter(json.substr(at));
        const std::uint32_t letter = character.letter.value_or(0xFFFD);
        if (!isUnprintable(letter))
            text.append(json.substr(at, character.bytes));
        else if (letter < 0x10000)
            text += fmt::format("\\u{:04x}", letter);
        else
            text += fmt::format("\\u{:04x}\\u{:04x}", 0xD7C0U + (letter >> 10U), 0xDC00U + (letter & 0x3FFU));
        at += character.bytes;
    }
    return text;
}

} // namespace

std::string jsonReport(const History& history, const Verdict& verdict, const std::vector<ProcessGroup>& suspects,
                       const Explanation& explanation, const ChartSeries& series) {
    Json report = Json::object();
    report["vitals"] = vitalsJson(history.snapshots().empty() ? Snapshot{} : history.snapshots().back());
    report["verdict"] = verdictJson(verdict);
    report["suspects"] = listJson(suspects, inWordsOf(history.system()));
    report["explanation"] = explanationJson(explanation);
    report["series"] = seriesJson(series);
    return escapedForTerminal(jsonText(report));
}

} // namespace vantoro
