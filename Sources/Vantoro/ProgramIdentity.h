// Which program this is, and whom it takes updates from. Built in: nothing that runs beside it can say otherwise.
#pragma once

#include <string>

namespace vantoro {

struct ProgramIdentity {
    /// As people read it: "0.1.0".
    std::string version;
    /// What orders releases: "100".
    std::string build;
    /// Where the feed of releases lies.
    std::string feed;
    /// The Ed25519 key that releases are signed with, 32 bytes in base64; empty in a copy that takes no updates.
    std::string publicKey;
    /// Certificates (PEM) to trust beside the system's; empty in what people install.
    std::string authorities;
    /// Seconds that a version which has just been installed has until a window of it is seen.
    double startPatience = 60;
};

ProgramIdentity programIdentity();

} // namespace vantoro
