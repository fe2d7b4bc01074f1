#include "Model/Readers/OwnCostMeter.h"

#include <algorithm>

namespace vantoro {

namespace {
constexpr double spanSeconds = 60;
/// Samples this much farther apart say nothing of the last minute: the machine slept, or hardly ever samples.
constexpr double longestSpanSeconds = 75;
constexpr double betweenReadingsSeconds = 5;

/// A clock that was set back makes everything due.
bool isDue(double now, double last) {
    return now < last || now - last >= betweenReadingsSeconds;
}
} // namespace

void OwnCostMeter::note(double now) {
    if (!source_ || (!samples_.empty() && !isDue(now, samples_.back().time)))
        return;
    const std::optional<OwnCost::ProcessorTime> used = source_->processorTime();
    if (!used ||
        (!samples_.empty() && (now < samples_.back().time || used->hasPrograms != samples_.back().used.hasPrograms)))
        samples_.clear();
    if (!used)
        return;
    samples_.push_back({now, *used});
    while (samples_.size() > 2 && now - samples_[1].time >= spanSeconds)
        samples_.pop_front();
}

std::optional<OwnCostMeter::Figure> OwnCostMeter::figure(double now) {
    note(now);
    if (samples_.empty())
        return {};
    const Sample& first = samples_.front();
    const Sample& last = samples_.back();
    Figure figure{.hasPrograms = last.used.hasPrograms};
    const double span = last.time - first.time;
    if (span >= spanSeconds && span <= longestSpanSeconds)
        figure.percentOfCore = 100 * std::max(0.0, last.used.seconds - first.used.seconds) / span;
    if (!memoryReadAt_ || isDue(now, *memoryReadAt_)) {
        const auto bytes = source_->memoryBytes();
        memoryBytes_ = bytes ? std::optional(static_cast<double>(*bytes)) : std::nullopt;
        memoryReadAt_ = now;
    }
    figure.memoryBytes = memoryBytes_;
    return figure;
}

} // namespace vantoro
