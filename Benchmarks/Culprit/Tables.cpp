#include "Tables.h"

#include "Scoring.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <numeric>

namespace culprit {

namespace {

struct Tally {
    const Family* family = nullptr;
    bool hasCulprit = true;
    int cases = 0;
    int first = 0;
    int three = 0;
    int falseBlame = 0;
    std::array<int, 4> baselineFirst{};
    std::array<int, 4> baselineThree{};
    int reports = 0;
    std::size_t impossible = 0;
    std::vector<double> errors;
    std::vector<double> seconds;

    double rate() const { return cases > 0 ? static_cast<double>(first) / cases : 0; }
    double baselineRate(std::size_t i) const { return cases > 0 ? static_cast<double>(baselineFirst[i]) / cases : 0; }
    int bestBaseline() const { return *std::max_element(baselineFirst.begin(), baselineFirst.end()); }
};

void add(Tally& tally, const Marks& marks, const Truth& truth) {
    ++tally.cases;
    tally.hasCulprit = !truth.isNobody() && !truth.mayBeNobody;
    tally.first += marks.isRightFirst ? 1 : 0;
    tally.three += marks.isAmongThree ? 1 : 0;
    tally.falseBlame += marks.isFalseBlame ? 1 : 0;
    for (std::size_t i = 0; i < 4; ++i) {
        tally.baselineFirst[i] += marks.baselineFirst[i] ? 1 : 0;
        tally.baselineThree[i] += marks.baselineAmongThree[i] ? 1 : 0;
    }
    tally.reports += marks.reports;
    tally.impossible += marks.impossible.size();
    if (marks.shareError)
        tally.errors.push_back(*marks.shareError);
    if (marks.secondsUntilRight)
        tally.seconds.push_back(*marks.secondsUntilRight);
}

bool isOn(const Family& family, int kind) {
    const bool isNoMac = static_cast<MachineKind>(kind) == MachineKind::noSensors;
    return (family.machines >> static_cast<unsigned>(kind) & 1U) != 0 && !(isNoMac && family.lists == Lists::mac);
}

double mean(const std::vector<double>& figures) {
    return figures.empty() ? NAN
                           : std::accumulate(figures.begin(), figures.end(), 0.0) / static_cast<double>(figures.size());
}

double median(std::vector<double> figures) {
    if (figures.empty())
        return NAN;
    std::nth_element(figures.begin(), figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2), figures.end());
    return figures[figures.size() / 2];
}

std::string percent(double rate) {
    return fmt::format("{:.0f} %", rate * 100);
}

std::string figure(double value) {
    return std::isnan(value) ? "–" : fmt::format("{:.1f}", value);
}

/// The mean over families; its interval by drawing families, and within them recordings, anew.
template <class Hits>
std::string macro(const std::vector<Tally>& tallies, Hits hits) {
    constexpr int draws = 2000;
    const auto rate = [&hits](const Tally& tally) { return static_cast<double>(hits(tally)) / tally.cases; };
    double sum = 0;
    for (const Tally& tally : tallies)
        sum += rate(tally);
    const auto count = static_cast<double>(tallies.size());
    Random random(7);
    std::vector<double> means;
    for (int i = 0; i < draws; ++i) {
        double total = 0;
        for (std::size_t j = 0; j < tallies.size(); ++j) {
            const Tally& tally = random.of(tallies);
            int right = 0;
            for (int k = 0; k < tally.cases; ++k)
                right += random.chance(rate(tally)) ? 1 : 0;
            total += static_cast<double>(right) / tally.cases;
        }
        means.push_back(total / count);
    }
    std::sort(means.begin(), means.end());
    return fmt::format("{:.1f} % ({:.0f}–{:.0f})", sum / count * 100, means[draws / 40] * 100,
                       means[draws - draws / 40 - 1] * 100);
}

void printFamilies(const std::vector<Tally>& tallies, bool hasCulprit) {
    fmt::print("| family | n | {} | {} | {} | {} | {} | {} | share error, points | seconds until right | impossible "
               "figures |\n",
               hasCulprit ? "right first (95 %)" : "nobody blamed wrongly (95 %)",
               hasCulprit ? "among three" : "false blame", baselineNames[0], baselineNames[1], baselineNames[2],
               baselineNames[3]);
    fmt::print("|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (const Tally& tally : tallies) {
        if (tally.hasCulprit != hasCulprit)
            continue;
        const Interval interval = wilson(tally.first, tally.cases);
        const bool isBehind = hasCulprit && tally.first < tally.bestBaseline();
        fmt::print("| {}{}{} | {} | {} ({:.0f}–{:.0f}) | {} |", tally.family->name,
                   tally.family->undecidable != nullptr ? " †" : "", isBehind ? " ▾" : "", tally.cases,
                   percent(tally.rate()), interval.low * 100, interval.high * 100,
                   percent(static_cast<double>(hasCulprit ? tally.three : tally.falseBlame) / tally.cases));
        for (std::size_t i = 0; i < 4; ++i)
            fmt::print(" {} |", hasCulprit ? percent(tally.baselineRate(i)) : "–");
        fmt::print(" {} | {} | {} |\n", figure(mean(tally.errors)), figure(median(tally.seconds)), tally.impossible);
    }
}

void print(const std::vector<Tally>& tallies) {
    std::vector<Tally> withCulprit;
    int nobody = 0;
    int falselyBlamed = 0;
    int reports = 0;
    std::size_t impossible = 0;
    std::vector<double> errors;
    for (const Tally& tally : tallies) {
        reports += tally.reports;
        impossible += tally.impossible;
        errors.insert(errors.end(), tally.errors.begin(), tally.errors.end());
        if (tally.hasCulprit) {
            withCulprit.push_back(tally);
        } else {
            nobody += tally.cases;
            falselyBlamed += tally.falseBlame;
        }
    }
    fmt::print("## Somebody is to blame\n\n");
    printFamilies(tallies, true);
    fmt::print("\n† processor time cannot decide it · ▾ a baseline is better\n\n## Nobody is to blame, or nobody who "
               "may be read\n\n");
    printFamilies(tallies, false);
    fmt::print("\n## Over all families\n\n| | right first (95 %) | among three (95 %) |\n|---|---|---|\n");
    if (!withCulprit.empty()) {
        fmt::print("| Vantoro | {} | {} |\n", macro(withCulprit, [](const Tally& tally) { return tally.first; }),
                   macro(withCulprit, [](const Tally& tally) { return tally.three; }));
        for (std::size_t i = 0; i < 4; ++i)
            fmt::print("| {} | {} | {} |\n", baselineNames[i],
                       macro(withCulprit, [i](const Tally& tally) { return tally.baselineFirst[i]; }),
                       macro(withCulprit, [i](const Tally& tally) { return tally.baselineThree[i]; }));
    }
    if (nobody > 0) {
        const Interval interval = wilson(falselyBlamed, nobody);
        fmt::print("\nFalse blame: {} of {}, {} ({:.0f}–{:.0f}); every baseline always names somebody.\n",
                   falselyBlamed, nobody, percent(static_cast<double>(falselyBlamed) / nobody), interval.low * 100,
                   interval.high * 100);
    }
    fmt::print("Impossible figures: {} in {} reports. Mean error of the stated share: {} points of the machine.\n",
               impossible, reports, figure(mean(errors)));
}

void printWhatTheyAre(const std::vector<Tally>& tallies) {
    fmt::print("\n## The families\n\n| family | what happens | machines |\n|---|---|---|\n");
    for (const Tally& tally : tallies) {
        const Family& family = *tally.family;
        std::string machines;
        for (int kind = 0; kind < machineKinds; ++kind)
            if (isOn(family, kind))
                machines += (machines.empty() ? "" : ", ") + std::string(nameOf(static_cast<MachineKind>(kind)));
        const char* const system = family.lists == Lists::mac        ? "Macs: "
                                   : family.lists == Lists::gnuLinux ? "Linux: "
                                                                     : "";
        fmt::print("| {} | {}{} | {}{} |\n", family.name, family.what,
                   family.undecidable != nullptr ? std::string(". † ") + family.undecidable : "", system, machines);
    }
}

void keep(const std::string& folder, const std::string& name, const Made& made) {
    std::filesystem::create_directories(folder);
    std::ofstream file(folder + "/" + name + ".jsonl");
    for (const std::string& line : made.lines)
        file << line << '\n';
}

void printMiss(const std::string& name, const Made& made, const Marks& marks) {
    std::string expected;
    for (const std::vector<std::string>& names : made.truth.culprits)
        expected += (expected.empty() ? "" : " or ") + names.front();
    fmt::print(stderr, "{}: it was {}; said \"{}\" / {}\n", name, expected.empty() ? "nobody" : expected,
               marks.headline, marks.detail);
}

} // namespace

Interval wilson(int hits, int of) {
    if (of == 0)
        return {};
    constexpr double z = 1.959964;
    const double n = of;
    const double rate = hits / n;
    const double middle = (rate + z * z / (2 * n)) / (1 + z * z / n);
    const double half = z * std::sqrt(rate * (1 - rate) / n + z * z / (4 * n * n)) / (1 + z * z / n);
    return {std::max(0.0, middle - half), std::min(1.0, middle + half)};
}

int made(const Options& options) {
    std::vector<Tally> tallies;
    static const std::vector<Family> families = allFamilies();
    for (const Family& family : families) {
        if (std::string(family.name).find(options.family) == std::string::npos)
            continue;
        Tally tally{.family = &family};
        std::vector<MachineKind> kinds;
        for (int kind = 0; kind < machineKinds; ++kind)
            if (isOn(family, kind))
                kinds.push_back(static_cast<MachineKind>(kind));
        for (unsigned seed = options.firstSeed; seed < options.firstSeed + static_cast<unsigned>(options.seeds);
             ++seed) {
            const MachineKind kind = kinds[seed % kinds.size()];
            const std::optional<Made> recording = make(family, kind, seed);
            if (!recording)
                continue;
            const Marks marks = score(recording->lines, recording->truth, recording->machine.cores());
            add(tally, marks, recording->truth);
            const std::string name =
                fmt::format("{}, {}, {}{}", family.name, seed, nameOf(kind), recording->machine.isMac ? ", Mac" : "");
            if (!options.keepFolder.empty())
                keep(options.keepFolder, name, *recording);
            if (options.showsMisses && !marks.isRightFirst)
                printMiss(name, *recording, marks);
            if (options.showsMisses)
                for (const ImpossibleFigure& figure : marks.impossible)
                    fmt::print(stderr, "{}: {:.1f} where at most {:.1f} was: {}\n", name, figure.figure, figure.most,
                               figure.where);
        }
        if (tally.cases > 0)
            tallies.push_back(std::move(tally));
    }
    print(tallies);
    printWhatTheyAre(tallies);
    return 0;
}

} // namespace culprit
