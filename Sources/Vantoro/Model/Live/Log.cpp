#include "Model/Live/Log.h"

#include "Model/Text/TerminalText.h"
#include "Platform/System.h"

#include <cstdio>

namespace vantoro {

bool Log::updatesEnabled = false;

void Log::updates(const std::string& message) {
    // What a server says is in it.
    const std::string text = terminalText(message);
    writeSystemLog("updates", text);
    if (updatesEnabled) {
        std::fprintf(stdout, "UPDATE %s\n", text.c_str());
        std::fflush(stdout);
    }
}

} // namespace vantoro
