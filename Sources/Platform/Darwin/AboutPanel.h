// The Mac's own panel that says which program this is, from what the bundle says of itself.
#pragma once

namespace vantoro {

/// -[NSApplication orderFrontStandardAboutPanel:].
void showAboutPanel();

} // namespace vantoro
