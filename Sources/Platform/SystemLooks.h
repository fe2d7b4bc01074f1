// What the desktop asks of every program's looks.
#pragma once

#include <functional>
#include <optional>

namespace vantoro {

class SystemLooks {
public:
    struct State {
        /// None where the system does not say.
        std::optional<bool> isDark;
        std::optional<bool> reducesMotion;
        std::optional<bool> increasesContrast;

        bool operator==(const State&) const = default;
    };

    virtual ~SystemLooks() = default;

    /// As it stands now.
    virtual State state() const = 0;

    /// Called on the main thread after a change, where the system tells of one.
    std::function<void()> onChange;
};

} // namespace vantoro
