// What the desktop asks of every program's looks.
#pragma once

#include <functional>
#include <optional>

namespace vantoro {

class SystemLooks {
public:
    /// In sRGB, each 0 to 1.
    struct Accent {
        double red = 0;
        double green = 0;
        double blue = 0;

        bool operator==(const Accent&) const = default;
    };

    struct State {
        /// None where the system does not say.
        std::optional<bool> isDark;
        std::optional<bool> reducesMotion;
        std::optional<bool> increasesContrast;
        /// What the user chose for controls that are on.
        std::optional<Accent> accent;

        bool operator==(const State&) const = default;
    };

    virtual ~SystemLooks() = default;

    /// As it stands now, for the application as it was told to look.
    virtual State state() const = 0;
    /// What the system itself draws of the application (frames, menus) is to be dark or light; none: as the system is.
    virtual void choose(std::optional<bool> dark) = 0;
    /// From now on `changed` is called on the main thread after a change that the system tells of; empty ends it.
    virtual void watch(std::function<void()> changed) = 0;
};

} // namespace vantoro
