// vantoro_append_cost N: appends N snapshots of 20 rows to a full history of 1800. The snapshots are made beforehand,
// so that the difference between two runs is the appends' alone.

#include "FullHistory.h"

#include <cstdlib>
#include <vector>

using namespace vantoro;

int main(int argc, char** argv) {
    const long appends = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    constexpr std::size_t fullHistory = 1800;
    constexpr long most = 2000;
    benchmarks::SnapshotMaker maker(1);
    History history;
    for (std::size_t i = 0; i < fullHistory; ++i)
        history.append(maker.next(History::processesPerSample));
    std::vector<Snapshot> ready;
    for (long i = 0; i < most; ++i)
        ready.push_back(maker.next(History::processesPerSample));
    for (long i = 0; i < appends && i < most; ++i)
        history.append(ready[static_cast<std::size_t>(i)]);
    return history.snapshots().size() >= fullHistory ? EXIT_SUCCESS : EXIT_FAILURE;
}
