#include "Figures.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace culprit {

namespace {

using Json = nlohmann::json;

class Check {
public:
    Check(const Json& report, const Seen& seen, int cores) : report_(report), seen_(seen), all_(cores * 100.0 * 1.02) {}

    std::vector<ImpossibleFigure> run() {
        const Json& verdict = report_["verdict"];
        if (!verdict["suspect"].is_null())
            group("suspect", verdict["suspect"]);
        for (const Json& each : verdict["runnersUp"])
            group("runner-up", each);
        for (const Json& each : report_["suspects"])
            group("list", each);
        text("headline", verdict["headline"]);
        const double ofSuspect =
            verdict["suspect"].is_null() ? seen_.ofAll.cpuPercent : keyMost(verdict["suspect"]["key"]).cpuPercent;
        const std::string detail = verdict["detail"];
        text("detail", detail);
        text("cause", verdict["cause"]);
        after("detail", detail, " averaged ", ofSuspect);
        after("detail", detail, " busiest at ", ofSuspect);
        after("detail", detail, "peaking at ", seen_.largestRow);
        after("detail", detail, " kept the graphics processor ", 100);
        for (const Json& factor : verdict["factors"]) {
            text("factor", factor["value"]);
            text("factor", factor["detail"]);
        }
        for (const Json& advice : verdict["advice"])
            text("advice", advice["text"]);
        for (const Json& section : report_["explanation"]["sections"])
            this->section(section);
        return std::move(found_);
    }

private:
    void most(const std::string& where, double figure, double bound, double slack) {
        if (figure > bound * 1.001 + slack)
            found_.push_back({where, figure, bound});
    }

    Seen::Most keyMost(const std::string& key) const {
        const auto found = seen_.ofKey.find(key);
        return found != seen_.ofKey.end() ? found->second : seen_.ofAll;
    }

    void group(const std::string& where, const Json& group) {
        const std::string key = group["key"];
        names_.emplace(group["friendlyName"], key);
        const Seen::Most bound = keyMost(key);
        most(where + " totalCPU of " + key, group["totalCPU"], std::min(bound.cpuPercent, all_), 0.05);
        most(where + " peakCPU of " + key, group["peakCPU"], bound.cpuPercent, 0.05);
        most(where + " totalMemory of " + key, group["totalMemory"], seen_.totalBytes, 1);
        if (group.contains("gpuPercent") && !group["gpuPercent"].is_null())
            most(where + " gpuPercent of " + key, group["gpuPercent"], std::min(100.0, bound.graphicsPercent), 0.05);
        for (const Json& member : group["members"]) {
            const auto process = seen_.ofProcess.find(member["pid"].get<int>());
            const double its = process != seen_.ofProcess.end() ? process->second : 0;
            most(where + " member of " + key,
                 std::max(member["averageCPU"].get<double>(), member["peakCPU"].get<double>()), its, 0.05);
        }
    }

    /// Calls with every number that stands before this unit.
    static void numbersBefore(const std::string& text, const std::string& unit,
                              const std::function<void(double)>& take) {
        for (std::size_t at = text.find(unit); at != std::string::npos; at = text.find(unit, at + 1)) {
            std::size_t from = at;
            while (from > 0 && (std::isdigit(static_cast<unsigned char>(text[from - 1])) != 0 ||
                                text[from - 1] == '.' || text[from - 1] == ','))
                --from;
            std::string digits = text.substr(from, at - from);
            digits.erase(std::remove(digits.begin(), digits.end(), ','), digits.end());
            if (!digits.empty())
                take(std::strtod(digits.c_str(), nullptr));
        }
    }

    /// What holds of any text: no share above all processors, no power, temperature, speed or memory that never was.
    void text(const std::string& where, const std::string& text) {
        numbersBefore(text, "%", [&](double figure) { most(where + ": " + text, figure, all_, 0.5); });
        numbersBefore(text, " W", [&](double figure) { most(where + ": " + text, figure, seen_.watts, 0.51); });
        numbersBefore(text, " °C", [&](double figure) { most(where + ": " + text, figure, seen_.celsius, 0.51); });
        numbersBefore(text, " rpm", [&](double figure) { most(where + ": " + text, figure, seen_.rpm, 5); });
        numbersBefore(text, " GB",
                      [&](double figure) { most(where + ": " + text, figure, seen_.totalBytes / 1e9, 0.06); });
    }

    void after(const std::string& where, const std::string& text, const std::string& words, double bound) {
        const std::size_t at = text.find(words);
        if (at == std::string::npos)
            return;
        char* end = nullptr;
        const double figure = std::strtod(text.c_str() + at + words.size(), &end);
        if (*end == '%')
            most(where + ": " + text, figure, std::min(bound, all_), 0.5);
    }

    void section(const Json& section) {
        const std::string title = section["title"];
        const std::string body = section["body"];
        text(title, body);
        after(title, body, " roughly ", 100);
        after(title, body, " leads at ", 100);
        after(title, body, "add up to about ", seen_.ofAll.cpuPercent);
        const bool isOfChange = title == "What changed";
        const bool isOfGraphics = isOfChange && body.find("points of the graphics processor") != std::string::npos;
        const std::size_t grew = body.find(" grew by ");
        if (grew != std::string::npos)
            most(title + ": " + body, std::strtod(body.c_str() + grew + 9, nullptr), isOfGraphics ? 100 : all_, 0.5);
        for (const Json& row : section["rows"]) {
            const std::string label = row["label"];
            const std::string value = row["value"];
            text(title + ", " + label, value);
            text(title + ", " + label, row["detail"]);
            if (label == "Not accounted for" || (!isOfChange && title != "What's drawing the power"))
                continue;
            double bound = 0;
            const auto raise = [&](const std::string& key) {
                const Seen::Most its = keyMost(key);
                bound = std::max(bound, isOfGraphics ? its.graphicsPercent : its.cpuPercent);
            };
            const auto [from, to] = names_.equal_range(label);
            for (auto named = from; named != to; ++named)
                raise(named->second);
            if (from == to)
                raise(label);
            numbersBefore(value, "%", [&](double figure) {
                most(title + ", " + label + " " + value, figure, std::min(all_, bound), 0.5);
            });
        }
    }

    const Json& report_;
    const Seen& seen_;
    double all_;
    /// Several keys can have one friendly name.
    std::multimap<std::string, std::string> names_;
    std::vector<ImpossibleFigure> found_;
};

} // namespace

void Seen::add(const std::string& line) {
    const Json json = Json::parse(line);
    SeenSnapshot snapshot{.time = json["timestamp"]};
    std::map<std::string, Most> sums;
    Most all;
    for (const Json& each : json["processes"]) {
        SeenRow row{.name = each["displayName"],
                    .pid = each["pid"],
                    .cpuPercent = each["cpuPercent"],
                    .memoryBytes = each["memoryBytes"]};
        const bool isOwned = each.contains("owningAppName") && !each["owningAppName"].is_null();
        row.key = isOwned ? each["owningAppName"].get<std::string>() : row.name;
        row.graphicsPercent =
            each.contains("gpuPercent") && !each["gpuPercent"].is_null() ? each["gpuPercent"].get<double>() : 0;
        for (Most* sum : {&sums[row.key], &all}) {
            sum->cpuPercent += row.cpuPercent;
            sum->memoryBytes += row.memoryBytes;
            sum->graphicsPercent += row.graphicsPercent;
        }
        largestRow = std::max(largestRow, row.cpuPercent);
        ofProcess[row.pid] = std::max(ofProcess[row.pid], row.cpuPercent);
        snapshot.rows.push_back(std::move(row));
    }
    const auto raise = [](Most& most, const Most& sum) {
        most.cpuPercent = std::max(most.cpuPercent, sum.cpuPercent);
        most.memoryBytes = std::max(most.memoryBytes, sum.memoryBytes);
        most.graphicsPercent = std::max(most.graphicsPercent, sum.graphicsPercent);
    };
    for (const auto& [key, sum] : sums)
        raise(ofKey[key], sum);
    raise(ofAll, all);
    for (const auto& [name, figure] : json["power"].items())
        watts = std::max(watts, std::abs(figure.get<double>()));
    watts = std::max(watts, json["power"].value("cpuWatts", 0.0) + json["power"].value("gpuWatts", 0.0));
    for (const auto& [name, figure] : json["temps"].items())
        celsius = std::max(celsius, figure.get<double>());
    for (const Json& fan : json["fans"])
        rpm = std::max({rpm, fan["rpm"].get<double>(), fan["maxRPM"].get<double>()});
    totalBytes = json["memory"]["totalBytes"];
    snapshots_.push_back(std::move(snapshot));
}

std::vector<ImpossibleFigure> impossibleFigures(const nlohmann::json& report, const Seen& seen, int cores) {
    return Check(report, seen, cores).run();
}

} // namespace culprit
