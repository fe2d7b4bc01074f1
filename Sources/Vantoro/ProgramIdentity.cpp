#include "ProgramIdentity.h"

#include "Model/Updates/Updates.h"

namespace vantoro {

ProgramIdentity programIdentity() {
    return {.version = VANTORO_VERSION,
            .build = VANTORO_BUILD,
            .feed = "https://" + std::string(Updates::host) + "/appcast.xml",
            .publicKey = VANTORO_UPDATE_KEY,
            .authorities = {}};
}

} // namespace vantoro
