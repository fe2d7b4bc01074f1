// The identity of a program that a test updates: its own server, key and authority, from the environment.
#include "ProgramIdentity.h"

#include <cstdlib>
#include <string>
#include <unistd.h>

namespace vantoro {

namespace {

std::string fromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// The second release can be one that never gets to its window: asked who it is, it does as the environment says. The
/// first to ask is who counts the starts.
void misbehave() {
    static int asked = 0;
    const std::string fault = fromEnvironment("VANTORO_TEST_FAULT");
    if (std::string(VANTORO_BUILD) != "200" || ++asked < 2)
        return;
    if (fault == "abort")
        std::abort();
    if (fault == "exit")
        std::_Exit(EXIT_FAILURE);
    while (fault == "hang")
        ::pause();
}

} // namespace

ProgramIdentity programIdentity() {
    misbehave();
    return {.version = VANTORO_VERSION,
            .build = VANTORO_BUILD,
            .feed = fromEnvironment("VANTORO_TEST_FEED"),
            .publicKey = fromEnvironment("VANTORO_TEST_KEY"),
            .authorities = fromEnvironment("VANTORO_TEST_AUTHORITIES"),
            .startPatience = fromEnvironment("VANTORO_TEST_FAULT").empty() ? 60.0 : 0.5};
}

} // namespace vantoro
