// What this program itself takes of the machine, with the programs that it runs.
#pragma once

#include <cstdint>
#include <optional>

namespace vantoro {

class OwnCost {
public:
    struct ProcessorTime {
        /// Used since the start, by all threads on all processors.
        double seconds = 0;
        /// What the programs that it runs have used is in it; false where the system does not let one look at them.
        bool hasPrograms = true;

        bool operator==(const ProcessorTime&) const = default;
    };

    virtual ~OwnCost() = default;

    /// A handful of system calls.
    virtual std::optional<ProcessorTime> processorTime() = 0;
    /// Bytes of memory held at this moment, of what is shared with others its share. The kernel walks through all of it
    /// for that: not to be asked for at every tick.
    virtual std::optional<std::uint64_t> memoryBytes() = 0;
};

} // namespace vantoro
