#include "Platform/UpdateEngine.h"

namespace vantoro {

// Sparkle keeps no copy that could be gone back to.
std::optional<std::string> beginStart(const ProgramStart& /*start*/) {
    return std::nullopt;
}

void startSucceeded() {}

void startEnded() {}

} // namespace vantoro
