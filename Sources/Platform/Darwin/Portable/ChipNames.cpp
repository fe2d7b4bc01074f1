#include "Platform/Darwin/Portable/ChipNames.h"

#include <algorithm>
#include <cstddef>

namespace vantoro {

namespace {

constexpr std::string_view dieMark = "DIE_";
constexpr std::size_t recordBytes = 8;
constexpr std::uint32_t leastHertz = 100'000'000;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Length of "DIE_0_" at the start of a name, 0 when it does not start so.
std::size_t diePrefixLength(std::string_view name) {
    if (!name.starts_with(dieMark))
        return 0;
    const auto afterNumber = std::find_if_not(name.begin() + dieMark.size(), name.end(), isDigit);
    const auto end = static_cast<std::size_t>(afterNumber - name.begin());
    const bool isPrefix = end > dieMark.size() && end + 1 < name.size() && name[end] == '_';
    return isPrefix ? end + 1 : 0;
}

std::string inLowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    });
    return text;
}

std::uint32_t littleEndianWord(const std::uint8_t* bytes) {
    return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
}

void storeLittleEndianWord(std::uint32_t word, std::uint8_t* bytes) {
    for (int index = 0; index < 4; ++index)
        bytes[index] = static_cast<std::uint8_t>(word >> (8 * index));
}

} // namespace

std::string coreChannelName(std::string_view name) {
    const std::size_t prefixLength = diePrefixLength(name);
    const std::string_view core = name.substr(prefixLength);
    std::string result(core);
    if (prefixLength > 0)
        result.append("_").append(name.substr(0, prefixLength - 1));
    return result;
}

void rewriteInKilohertz(std::vector<std::uint8_t>& frequencyTable) {
    for (std::size_t start = 0; start + recordBytes <= frequencyTable.size(); start += recordBytes) {
        std::uint8_t* const bytes = frequencyTable.data() + start;
        const std::uint32_t word = littleEndianWord(bytes);
        if (word >= leastHertz)
            storeLittleEndianWord(word / 1000 + (word % 1000 >= 500 ? 1 : 0), bytes);
    }
}

ProcessorTiers tiersNamed(const std::optional<std::string>& level0, const std::optional<std::string>& level1) {
    ProcessorTiers tiers;
    if (level0)
        tiers.performance = inLowerCase(*level0);
    if (level1)
        tiers.efficiency = inLowerCase(*level1);
    return tiers;
}

bool hasMiddleTier(const ProcessorTiers& tiers) {
    return tiers.efficiency == ProcessorTiers().performance;
}

} // namespace vantoro
