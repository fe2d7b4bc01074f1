// Which programs the Mac's graphics processor works for, from the entries that its driver's clients have in the I/O
// registry: "IOUserClientCreator" and, for each kind of work, "accumulatedGPUTime" in "AppUsage".
#pragma once

#include "Platform/Darwin/Portable/GraphicsTimes.h"
#include "Platform/GraphicsClients.h"

#include <functional>
#include <optional>

namespace vantoro {

/// Every client is told to every user. They are no registered services: they are found below the accelerator's.
class DarwinGraphicsClients : public GraphicsClients {
public:
    explicit DarwinGraphicsClients(std::function<double()> monotonicSeconds)
        : monotonicSeconds_(std::move(monotonicSeconds)) {}

    std::optional<GraphicsShares> read() override;
    void rest() override { times_.reset(); }

private:
    std::function<double()> monotonicSeconds_;
    std::optional<GraphicsTimes> times_;
};

} // namespace vantoro
