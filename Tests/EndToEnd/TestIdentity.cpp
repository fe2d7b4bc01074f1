// The identity of a program that a test updates: its own server, key and authority, from the environment.
#include "ProgramIdentity.h"

#include <cstdlib>

namespace vantoro {

namespace {

std::string fromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

ProgramIdentity programIdentity() {
    return {.version = VANTORO_VERSION,
            .build = VANTORO_BUILD,
            .feed = fromEnvironment("VANTORO_TEST_FEED"),
            .publicKey = fromEnvironment("VANTORO_TEST_KEY"),
            .authorities = fromEnvironment("VANTORO_TEST_AUTHORITIES")};
}

} // namespace vantoro
