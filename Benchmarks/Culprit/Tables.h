// The tables: per family and over all of them, with 95 % intervals.
#pragma once

#include <string>

namespace culprit {

struct Options {
    int tier = 1;
    /// Recordings of each family, spread over its machines.
    int seeds = 40;
    unsigned firstSeed = 1;
    /// Only families, or loads, whose name holds this.
    std::string family;
    bool showsMisses = false;
    /// Where the recordings are kept; empty: nowhere.
    std::string keepFolder;
    /// The program that is tried live.
    std::string program = "vantoro";
    /// How many times at once each load does its work; 0: half as many as there are processors.
    int parts = 0;
};

struct Interval {
    double low = 0;
    double high = 1;
};

/// Wilson's 95 % interval of a rate.
Interval wilson(int hits, int of);

/// Prints the tables of the made machines.
int made(const Options& options);

/// Real loads on this machine, one after the other, beside `vantoro --explain`. Prints the table; 1 when a load was not
/// named or its share was off by more than 5 points of the machine.
int live(const Options& options);

} // namespace culprit
