// The update engine of the operating system that this program was built for; one file per system implements it.
#pragma once

#include "Platform/UpdateEngine.h"

#include <memory>
#include <vector>

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

/// What a run with a window is, for starting it once more.
struct ProgramStart {
    /// This program's.
    std::string build;
    /// The command line, the program's name included.
    std::vector<std::string> arguments;
    /// Seconds until a window has to have been seen.
    double patience = 60;
};

/// The very first thing that such a run does. Where an update has put this version in its place and no window of it was
/// seen yet, the start is counted. One that crashes or shows no window in time is made once more; then the copy before
/// gets its place back and is started instead. The version that gave way like that to this one, where it is so.
std::optional<std::string> beginStart(const ProgramStart& start);
/// A window was seen, or the run has come as far as one that is to have none: this version stays.
void startSucceeded();
/// This run ends in good order before that, which says nothing about this version.
void startEnded();

/// Null where the build found nothing to update with.
std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup setup);

} // namespace vantoro
