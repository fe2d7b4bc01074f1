// Desktop entries and the names of control groups.
#include "Platform/Linux/Apps/AppUnit.h"
#include "Platform/Linux/Apps/DesktopEntry.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto entry = vantoro::parseDesktopEntry(text)) {
        (void)vantoro::commandProgram(entry->command);
        for (const char character : entry->name)
            if (static_cast<unsigned char>(character) < ' ')
                std::abort();
    }
    for (const auto& id : vantoro::applicationIds(text))
        if (id.empty())
            std::abort();
    (void)vantoro::containerOf(text);
    (void)vantoro::unitOf(text);
    (void)vantoro::kernelThreadName(text);
    return 0;
}
