// What must and must not be said of a machine, as the `expect` lines of its fixture have it (Tests/Fixtures/README.md).
#pragma once

#include "Model/Recording/Recording.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro::testing {

using Words = std::vector<std::string>;

struct Range {
    double least = 0;
    double most = 0;
};

/// A maximum of 0: what the fan can reach is not known.
struct ExpectedFan {
    double rpm = 0;
    double minRPM = 0;
    double maxRPM = 0;
};

struct ExpectedMachine {
    explicit ExpectedMachine(const std::filesystem::path& fixture);

    /// Its figures by their names in the fixture; what is not in here is not looked at.
    std::optional<Range> figure(const std::string& of) const {
        const auto found = figures.find(of);
        return found == figures.end() ? std::nullopt : std::optional(found->second);
    }
    bool hasCooling(Cooling kind) const {
        return cooling.find(coolings.at(static_cast<std::size_t>(kind))) != std::string::npos;
    }

    static constexpr std::array<std::string_view, 8> figureNames = {
        "chip", "busy-chip", "enclosure", "graphics", "battery", "system-watts", "adapter-watts", "processor-watts"};
    static constexpr std::array<std::string_view, 4> coolings = {"fans", "passive", "heat", "load"};

    std::string name;
    /// One of these.
    std::string cooling;
    RecordedProcessors processors;
    std::map<std::string, Range> figures{{"chip", {}}, {"system-watts", {}}, {"adapter-watts", {}}};
    std::vector<ExpectedFan> fans;
    std::vector<int> megahertz;
    std::string called;
    std::string asleep;
    bool isBuiltWithoutFans = false;
    bool onBattery = false;
    Words says;
    Words never;
};

inline ExpectedMachine::ExpectedMachine(const std::filesystem::path& fixture) : name(fixture.stem()) {
    std::ifstream file(fixture);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string what;
        if (!(words >> what) || what != "expect" || !(words >> what))
            continue;
        std::string rest;
        std::getline(words >> std::ws, rest);
        std::istringstream items(rest);
        if (what == "cooling")
            cooling = rest;
        else if (what == "processors")
            items >> processors.performance >> processors.efficiency;
        else if (what == "fans")
            for (std::string item; items >> item;) {
                ExpectedFan& fan = fans.emplace_back();
                std::sscanf(item.c_str(), "%lf/%lf-%lf", &fan.rpm, &fan.minRPM, &fan.maxRPM);
            }
        else if (what == "megahertz")
            for (std::string item; items >> item;) {
                const std::size_t times = item.find('x');
                const int count = times == std::string::npos ? 1 : std::stoi(item);
                megahertz.insert(megahertz.end(), static_cast<std::size_t>(count), std::stoi(item.substr(times + 1)));
            }
        else if (what == "called" || what == "asleep")
            (what == "called" ? called : asleep) = rest;
        else if (what == "fanless" || what == "on-battery")
            (what == "fanless" ? isBuiltWithoutFans : onBattery) = true;
        else if (what == "says" || what == "never")
            (what == "says" ? says : never).push_back(rest);
        else if (std::ranges::find(figureNames, what) == figureNames.end())
            ADD_FAILURE() << name << ": nothing is known as " << what;
        else if (rest == "any")
            figures.erase(what);
        else if (Range& range = figures[what]; items >> range.least && !(items >> range.most))
            range.most = range.least;
    }
    EXPECT_GT(processors.performance, 0) << name;
}

} // namespace vantoro::testing
