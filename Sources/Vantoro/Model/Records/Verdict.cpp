#include "Model/Records/Verdict.h"

#include <array>
#include <cstddef>

namespace vantoro {

namespace {

using Wording = std::array<std::string_view, 5>; // by StressLevel

constexpr Wording fanLabels{"Silent", "Quiet", "Audible", "Loud", "Roaring"};
constexpr Wording passiveLabels{"Cool", "Mild", "Warm", "Hot", "Very hot"};
constexpr Wording fanPhrases{"Your fans are off", "Your fans are barely turning", "Your fans are audible",
                             "Your fans are loud", "Your fans are roaring"};
constexpr Wording passivePhrases{"Your Mac is cool", "Your Mac is barely warm", "Your Mac is warm",
                                 "Your Mac is running hot", "Your Mac is very hot"};

} // namespace

std::string_view Verdict::stateLabel() const {
    if (awaitingReading)
        return "Measuring";
    return (cooling == Cooling::passive ? passiveLabels : fanLabels)[static_cast<std::size_t>(state)];
}

std::string_view Verdict::statePhrase() const {
    return (cooling == Cooling::passive ? passivePhrases : fanPhrases)[static_cast<std::size_t>(state)];
}

} // namespace vantoro
