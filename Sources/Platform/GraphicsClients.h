// Which programs the graphics processors work for.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace vantoro {

/// What was done since the reading before.
struct GraphicsShares {
    struct Program {
        std::int32_t pid = 0;
        /// The part of its busiest engine's time that was spent on it, 0 to 100.
        double percent = 0;

        bool operator==(const Program&) const = default;
    };
    /// By rising pid, each once. At 0 is one that is known to be a client and had nothing done; who is not among them
    /// may be none or one of whom nothing is told.
    std::vector<Program> programs;
    /// What all of them together kept the busiest engine busy, 0 to 100: it was at least so busy.
    double leastBusyPercent = 0;
    /// There is no client but these.
    bool hasAll = false;

    bool operator==(const GraphicsShares&) const = default;
};

/// Used from one thread at a time.
class GraphicsClients {
public:
    virtual ~GraphicsClients() = default;

    /// None until there were two readings, and where nothing tells. Never waits for a driver; clients are looked for
    /// now and then only.
    virtual std::optional<GraphicsShares> read() = 0;
    /// Nobody wants to know for now: all that is kept open is closed.
    virtual void rest() {}
};

} // namespace vantoro
