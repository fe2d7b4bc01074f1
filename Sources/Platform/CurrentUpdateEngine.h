// The update engine of the operating system that this program was built for; one file per system implements it.
#pragma once

#include "Platform/UpdateEngine.h"

#include <memory>

namespace vantoro {

/// What an engine of our own is told; a framework of the system's knows it from the program's bundle.
struct UpdateSetup {
    std::string version;
    std::string build;
    /// Address of the feed, https.
    std::string feed;
    /// The Ed25519 key that every archive is signed with: 32 bytes in base64.
    std::string publicKey;
    /// Certificates (PEM) to trust beside the system's; empty in every copy that people install.
    std::string authorities;
    /// Where the running program lies, read before anything can have moved it.
    std::string program;
    /// What the engine keeps from run to run, under names of its own; an empty text forgets.
    std::function<std::string(std::string_view key)> recall;
    std::function<void(std::string_view key, const std::string& text)> remember;
    /// Seconds since 1970.
    std::function<double()> now;
    /// Ends this program in its own good time and starts the one at that path in its place.
    std::function<void(const std::string& program)> relaunch;
};

/// Null where the build found nothing to update with.
std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup setup);

} // namespace vantoro
