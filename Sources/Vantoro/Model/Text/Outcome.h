// How everything here that can fail for a reason says so.
#pragma once

#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace vantoro {

/// Either it went well or this is what went wrong.
template <class Fault = std::string>
class [[nodiscard]] Outcome {
public:
    /// It went well.
    Outcome() = default;
    template <class Reason, class = std::enable_if_t<std::is_convertible_v<Reason, Fault>>>
    Outcome(Reason&& fault) : fault_(std::in_place, std::forward<Reason>(fault)) {}

    bool failed() const { return fault_.has_value(); }
    /// What went wrong; only for what failed.
    const Fault& fault() const { return *fault_; }

    friend bool operator==(const Outcome&, const Outcome&) = default;

private:
    std::optional<Fault> fault_;
};

} // namespace vantoro
