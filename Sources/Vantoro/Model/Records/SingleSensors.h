// The single sensors of one family as they are shown: of several looks at them, the last that was whole.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace vantoro {

class SingleSensors {
public:
    /// A reading of so many sensors is whole, however many there are.
    explicit SingleSensors(std::size_t enough) : enough_(enough) {}

    /// Ascending, degrees Celsius.
    const std::vector<double>& celsius() const { return celsius_; }
    /// They were looked at long enough to say that none of them measures.
    bool areSilent() const { return isSettled_ && celsius_.empty(); }

    /// Takes a look at a family of `known` sensors; none when nobody knows how many there are. A reading that misses
    /// more than half of them is a partial one and leaves the one before in place, so that the figures do not flicker,
    /// until it comes so often that it is all there is. True when the reading was taken.
    bool look(std::vector<double> reading, std::optional<std::size_t> known);
    /// Takes a reading as it stands, as a recording holds it; none when it holds none.
    void set(std::optional<std::vector<double>> reading);

private:
    std::size_t enough_;
    std::vector<double> celsius_;
    int partialLooks_ = 0;
    bool isSettled_ = false;
};

} // namespace vantoro
