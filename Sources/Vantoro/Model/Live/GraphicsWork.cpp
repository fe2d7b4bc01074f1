#include "Model/Live/GraphicsWork.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantoro {

bool GraphicsWork::isWanted(const Snapshot& snapshot, std::optional<double> awakePercent) {
    // Between two pictures it may seem to rest.
    constexpr double lingerSeconds = 10;
    const double watts = snapshot.power.gpuWatts;
    const double busy = snapshot.gpuPercent.value_or(0);
    const double awake = awakePercent.value_or(0);
    // A large card draws its watts at rest, too.
    const bool draws = watts >= 2 && !(snapshot.gpuPercent && busy < 1);
    const bool works = busy >= 5 || draws || awake >= 10;
    const bool hasLittle = snapshot.gpuPercent ? busy < 1 : watts < 0.3 && (watts > 0 || awakePercent);
    const bool rests = hasLittle && awake < 2;
    const bool isSeen = std::exchange(isSeen_, false) || isAlwaysSeen_;
    if (works || (isSeen && !rests))
        wantedAt_ = snapshot.timestamp;
    if (wantedAt_ && std::abs(snapshot.timestamp - *wantedAt_) > lingerSeconds)
        wantedAt_.reset();
    return wantedAt_.has_value();
}

void GraphicsWork::chooseWorkers(const std::vector<GraphicsShares::Program>& programs) {
    constexpr std::size_t most = 8;
    // Who is listed for its work is not dropped again for a moment's rest.
    const auto isWorker = [this](const GraphicsShares::Program& program) {
        return program.percent >= (std::ranges::binary_search(workers_, program.pid) ? 0.2 : 1);
    };
    std::vector<GraphicsShares::Program> chosen;
    std::ranges::copy_if(programs, std::back_inserter(chosen), isWorker);
    std::ranges::stable_sort(chosen, std::ranges::greater(), &GraphicsShares::Program::percent);
    chosen.resize(std::min(chosen.size(), most));
    workers_.clear();
    for (const GraphicsShares::Program& program : chosen)
        workers_.push_back(program.pid);
    std::ranges::sort(workers_);
}

void GraphicsWork::add(Snapshot& snapshot, std::optional<double> awakePercent) {
    constexpr double mostUnknown = 10;
    if (!clients_)
        return;
    std::optional<GraphicsShares> shares;
    if (isWanted(snapshot, awakePercent))
        shares = clients_->read();
    else
        clients_->rest();
    chooseWorkers(shares ? shares->programs : std::vector<GraphicsShares::Program>());
    if (!shares)
        return;
    for (ProcessSample& row : snapshot.processes) {
        const auto program = std::ranges::lower_bound(shares->programs, row.pid(), {}, &GraphicsShares::Program::pid);
        if (program != shares->programs.end() && program->pid == row.pid())
            row.gpuPercent = program->percent;
    }
    const double least = shares->leastBusyPercent;
    if (snapshot.gpuPercent)
        snapshot.gpuPercent = std::max(*snapshot.gpuPercent, least);
    else if (shares->hasAll || (awakePercent && *awakePercent - least <= mostUnknown))
        snapshot.gpuPercent = least;
}

} // namespace vantoro
