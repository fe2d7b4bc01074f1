#include "Model/Readers/SMCKeys.h"

#include "CSensors/smc.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace vantoro {

namespace {

/// A name of four bytes is a text of four characters exactly when all of them are ASCII.
bool isFourCharacters(std::string_view name) {
    return name.size() == 4 && std::ranges::all_of(name, [](unsigned char c) { return c < 0x80; });
}

} // namespace

std::vector<std::string> floatKeys(std::uint32_t count) {
    // Controllers hold a few thousand keys. A count that was misread must not keep the program busy for hours.
    constexpr std::uint32_t most = 65'536;
    std::vector<std::string> keys;
    for (std::uint32_t index = 0; index < std::min(count, most); ++index) {
        char key[5] = {};
        char type[5] = {};
        std::uint32_t size = 0;
        if (smc_key_at_index(index, key, type, &size) == 0)
            continue;
        if (isFourCharacters(key) && std::string_view(type) == "flt ")
            keys.emplace_back(key);
    }
    return keys;
}

std::optional<double> readKey(const std::string& key) {
    double value = 0;
    if (smc_read_number(key.c_str(), &value) == 0 || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace vantoro
