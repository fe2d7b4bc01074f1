// Figures that could not exist: whatever a report says that is more than the recording held at any one time.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace culprit {

struct SeenRow {
    std::string name;
    /// The application or job, else the name.
    std::string key;
    int pid = 0;
    double cpuPercent = 0;
    double memoryBytes = 0;
    double graphicsPercent = 0;
};

struct SeenSnapshot {
    double time = 0;
    std::vector<SeenRow> rows;
};

/// A recording as anybody reads it, and the most that any one of its snapshots held.
class Seen {
public:
    /// `isKept`: the snapshots themselves are wanted as well.
    void add(const std::string& line);

    const std::vector<SeenSnapshot>& snapshots() const { return snapshots_; }

    struct Most {
        double cpuPercent = 0;
        double memoryBytes = 0;
        double graphicsPercent = 0;
    };
    std::map<std::string, Most> ofKey;
    std::map<int, double> ofProcess;
    Most ofAll;
    double largestRow = 0;
    double watts = 0;
    double celsius = 0;
    double rpm = 0;
    double totalBytes = 0;

private:
    std::vector<SeenSnapshot> snapshots_;
};

struct ImpossibleFigure {
    std::string where;
    double figure = 0;
    double most = 0;
};

/// Looks through a JSON report, its texts included.
std::vector<ImpossibleFigure> impossibleFigures(const nlohmann::json& report, const Seen& seen, int cores);

} // namespace culprit
