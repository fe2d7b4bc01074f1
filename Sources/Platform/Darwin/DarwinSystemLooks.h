// The Mac's appearance, its accent and the accessibility preferences that concern drawing, and its own panel that says
// which program this is.
#pragma once

#include "Platform/SystemLooks.h"

#include <memory>

namespace vantoro {

/// Touches the application object only when asked, so that terminal commands never make one.
class DarwinSystemLooks : public SystemLooks {
public:
    DarwinSystemLooks();
    ~DarwinSystemLooks() override;

    /// -[NSApplication effectiveAppearance], the display options of NSWorkspace and +[NSColor controlAccentColor].
    State state() const override;
    /// -[NSApplication setAppearance:].
    void choose(std::optional<bool> dark) override;
    /// NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification and NSSystemColorsDidChangeNotification.
    void watch(std::function<void()> changed) override;

private:
    class Observer;
    std::unique_ptr<Observer> observer_;
};

/// -[NSApplication orderFrontStandardAboutPanel:].
void showAboutPanel();

} // namespace vantoro
