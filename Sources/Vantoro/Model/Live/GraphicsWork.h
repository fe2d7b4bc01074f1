// Who the graphics processor works for, joined to the processes of each snapshot: asked only while it works or somebody
// looks at what programs do.
#pragma once

#include "Model/Records/Telemetry.h"
#include "Platform/GraphicsClients.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vantoro {

class GraphicsWork {
public:
    /// Null where the platform does not tell: then nothing is ever added.
    explicit GraphicsWork(std::shared_ptr<GraphicsClients> clients) : clients_(std::move(clients)) {}

    /// Somebody sees what programs do, until the next snapshot.
    void see() { isSeen_ = true; }
    /// Somebody waits for all there is to be known, from now on.
    void seeAlways() { isAlwaysSeen_ = true; }

    /// Gives the snapshot's rows and the snapshot their shares, once per snapshot, after its powers and busy share are
    /// known. `awakePercent` is the time in which a device was awake that does not tell its busy share. The busy share
    /// is at least what its clients had done; where the device tells none it is that, but only where it cannot be much
    /// more: every client is known, or it slept nearly all of the rest.
    void add(Snapshot& snapshot, std::optional<double> awakePercent);
    /// Of those who had work done, who must not be missing among the processes, ascending; few.
    const std::vector<std::int32_t>& workers() const { return workers_; }

private:
    bool isWanted(const Snapshot& snapshot, std::optional<double> awakePercent);
    void chooseWorkers(const std::vector<GraphicsShares::Program>& programs);

    std::shared_ptr<GraphicsClients> clients_;
    bool isSeen_ = false;
    bool isAlwaysSeen_ = false;
    std::optional<UnixSeconds> wantedAt_;
    std::vector<std::int32_t> workers_;
};

} // namespace vantoro
