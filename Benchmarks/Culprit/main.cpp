// vantoro_culprit: how often Vantoro names who heats a machine, on made machines and on this one.
#include "Tables.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

constexpr const char* usage =
    "usage: vantoro_culprit [--tier 1|2] [--seeds N] [--first-seed N] [--family WORD] [--misses] [--keep FOLDER]\n"
    "                       [--vantoro PROGRAM] [--parts N]\n";

} // namespace

int main(int argc, char** argv) {
    culprit::Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--misses") {
            options.showsMisses = true;
            continue;
        }
        const char* const value = i + 1 < argc ? argv[++i] : nullptr;
        if (value != nullptr && name == "--tier")
            options.tier = std::atoi(value);
        else if (value != nullptr && name == "--seeds")
            options.seeds = std::atoi(value);
        else if (value != nullptr && name == "--first-seed")
            options.firstSeed = static_cast<unsigned>(std::atoi(value));
        else if (value != nullptr && name == "--family")
            options.family = value;
        else if (value != nullptr && name == "--keep")
            options.keepFolder = value;
        else if (value != nullptr && name == "--parts")
            options.parts = std::atoi(value);
        else if (value != nullptr && name == "--vantoro")
            options.program = value;
        else {
            std::fputs(usage, stderr);
            return 2;
        }
    }
    try {
        return options.tier == 2 ? culprit::live(options) : culprit::made(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "vantoro_culprit: %s\n", failure.what());
        return 1;
    }
}
