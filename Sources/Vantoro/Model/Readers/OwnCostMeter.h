// What the program has cost over the last minute, from its own accounts.
#pragma once

#include "Platform/OwnCost.h"

#include <deque>
#include <memory>

namespace vantoro {

class OwnCostMeter {
public:
    struct Figure {
        /// Of one core, over the last minute; none before there was one.
        std::optional<double> percentOfCore;
        /// None where the system does not tell.
        std::optional<double> memoryBytes;
        bool hasPrograms = true;

        bool operator==(const Figure&) const = default;
    };

    /// `source` may be null.
    explicit OwnCostMeter(std::shared_ptr<OwnCost> source) : source_(std::move(source)) {}

    /// To be called often; looks at the clock of the processors at most once in five seconds.
    void note(double now);
    /// None where nothing is known of it. Reads the memory, at most once in five seconds: only for who shows it.
    std::optional<Figure> figure(double now);

private:
    struct Sample {
        double time = 0;
        OwnCost::ProcessorTime used;
    };

    std::shared_ptr<OwnCost> source_;
    /// The last minute's, and one before it.
    std::deque<Sample> samples_;
    std::optional<double> memoryBytes_;
    std::optional<double> memoryReadAt_;
};

} // namespace vantoro
