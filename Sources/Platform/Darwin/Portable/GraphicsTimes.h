// The shares that follow from how long the Mac's graphics driver has worked for each of its clients.
#pragma once

#include "Platform/GraphicsClients.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vantoro {

/// One client, an entry of the I/O registry.
struct GraphicsClientTime {
    std::uint64_t entry = 0;
    std::int32_t pid = 0;
    /// Cumulative.
    std::uint64_t nanoseconds = 0;
};

/// The process of "pid 123, name", which is how a client's entry names its creator. None in any other text.
std::optional<std::int32_t> creatorPid(std::string_view creator);

class GraphicsTimes {
public:
    /// Since the call before; none at the first and when no time went by. A client that was not there before has done
    /// all of its work since. The parts of a frame overlap, and so do their times: the sum is no busy share.
    std::optional<GraphicsShares> shares(const std::vector<GraphicsClientTime>& clients, double seconds);

private:
    std::optional<double> readAt_;
    std::unordered_map<std::uint64_t, std::uint64_t> before_;
};

} // namespace vantoro
