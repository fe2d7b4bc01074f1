// Which programs the graphics processors work for, from what the drivers say of their clients in /proc/PID/fdinfo and
// what NVIDIA's library says of processes.
#pragma once

#include "Platform/GraphicsClients.h"
#include "Platform/Linux/Power/NvidiaGPUs.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vantoro {

/// Clients are looked for every ten seconds (DrmSearch); in between only the known clients' files are read. A client is
/// counted once, however many descriptors and processes hold it: for the one that has used the processor most since the
/// reading before. It is all done in the slow lane: xe waits for queues that go away, older amdgpu for the memory it
/// counts. A card that sleeps is not woken (xe's file would), and its clients have done nothing. Of who computes
/// through /dev/kfd nothing is told: it is left out unless it renders as well.
class LinuxGraphicsClients : public GraphicsClients {
public:
    static constexpr double lookSeconds = 10;

    /// `root` is the folder that holds proc and sys; `gpus` may be null; processes of `ownUid` may be looked into, all
    /// of them by user 0.
    LinuxGraphicsClients(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus,
                         std::uint32_t ownUid);
    ~LinuxGraphicsClients() override;

    std::optional<GraphicsShares> read() override;
    void rest() override;

private:
    class Clients;
    struct Taken {
        /// How often there had been a rest.
        std::uint64_t rests = 0;
        GraphicsShares shares;
    };

    void begin();

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    std::shared_ptr<NvidiaGPUs> gpus_;
    std::uint32_t ownUid_;
    bool isResting_ = true;
    std::uint64_t rests_ = 0;
    std::shared_ptr<Clients> clients_;
    std::optional<LanedReading<Taken>> reading_;
};

} // namespace vantoro
