// Whether enough has been measured for anything to be said of this machine.
#pragma once

#include <cstdint>

namespace vantoro {

enum class Measuring : std::uint8_t {
    looking,     ///< the first list of processes, or a second sample that holds it, is still to come
    withoutList, ///< the list is long overdue: what else was found may be shown
    done
};

/// Samples that hold a list of processes before there is a verdict: one alone has nothing to be compared with.
inline constexpr int samplesForVerdict = 2;
/// From then on a list that has not come is said to be missing.
inline constexpr double longestWaitForList = 10;

/// `samplesWithList` samples hold a list of processes; the first sample of all was taken `secondsWaited` ago.
constexpr Measuring measuringState(int samplesWithList, double secondsWaited) {
    if (samplesWithList >= samplesForVerdict)
        return Measuring::done;
    return samplesWithList == 0 && secondsWaited >= longestWaitForList ? Measuring::withoutList : Measuring::looking;
}

} // namespace vantoro
