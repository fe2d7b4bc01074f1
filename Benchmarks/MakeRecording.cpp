// vantoro_make_recording SNAPSHOTS INTERVAL: prints a recording of that many snapshots of 20 rows.

#include "FullHistory.h"

#include "Model/Recording/Recording.h"

#include <cstdio>
#include <cstdlib>

using namespace vantoro;

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: vantoro_make_recording SNAPSHOTS INTERVAL\n", stderr);
        return 2;
    }
    benchmarks::SnapshotMaker maker(std::strtod(argv[2], nullptr));
    std::puts(headerLine({.machine = "A made-up machine", .created = utcText(1e9)}).c_str());
    for (long left = std::strtol(argv[1], nullptr, 10); left > 0; --left)
        std::puts(snapshotLine(maker.next(History::processesPerSample)).c_str());
    return EXIT_SUCCESS;
}
