#include "Platform/Linux/Processor/LinuxMachine.h"

#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <fcntl.h>

namespace vantoro {

namespace {

bool isBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

char lowered(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, lowered, lowered);
}

std::optional<std::string> firmwareText(const std::string& path) {
    constexpr std::size_t limit = 4096;
    const auto text = readFileAt(AT_FDCWD, path.c_str(), limit);
    return text ? tidyFirmwareText(*text) : std::nullopt;
}

std::optional<std::string> deviceTreeModel(const std::string& root) {
    if (auto model = firmwareText(root + "/proc/device-tree/model"))
        return model;
    return firmwareText(root + "/sys/firmware/devicetree/base/model");
}

} // namespace

std::optional<std::string> tidyFirmwareText(std::string_view text) {
    static constexpr std::string_view fillers[] = {"To Be Filled By O.E.M.",
                                                   "To be filled by O.E.M",
                                                   "System Product Name",
                                                   "Default string",
                                                   "System Name",
                                                   "Not Applicable",
                                                   "Not Specified",
                                                   "Not Available",
                                                   "N/A",
                                                   "None",
                                                   "Unknown",
                                                   "Undefined",
                                                   "INVALID",
                                                   "OEM",
                                                   "O.E.M.",
                                                   "Product Name",
                                                   "Base Board Product Name",
                                                   "Type1ProductConfigId",
                                                   "All Series",
                                                   "empty",
                                                   "x.x",
                                                   "0"};
    std::string kept;
    for (const char character : trimmedText(text.substr(0, text.find('\0'))))
        if (static_cast<unsigned char>(character) >= ' ' && character != '\x7f')
            kept += character;
    const auto isFiller = [&kept](std::string_view filler) { return equalIgnoringCase(kept, filler); };
    if (kept.empty() || std::ranges::any_of(fillers, isFiller))
        return {};
    return kept;
}

std::string tidyProcessorBrand(std::string_view text) {
    std::string brand(trimmedText(text));
    for (const std::string_view sign : {"(R)", "(r)", "(TM)", "(tm)", "®", "™"})
        for (std::size_t at = brand.find(sign); at != std::string::npos; at = brand.find(sign))
            brand.erase(at, sign.size());
    if (const std::size_t at = brand.find(" @ "); at != std::string::npos)
        brand.erase(at);
    // Makers pad these texts with runs of blanks.
    std::string tidy;
    for (const char character : brand)
        if (!isBlank(character))
            tidy += character;
        else if (!tidy.empty() && tidy.back() != ' ')
            tidy += ' ';
    for (const std::string_view ending : {" ", " CPU", " Processor", " processor", " "})
        if (tidy.ends_with(ending))
            tidy.erase(tidy.size() - ending.size());
    return tidy;
}

std::optional<std::string_view> parseCpuInfo(std::string_view text, std::string_view title) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t newline = text.find('\n', start);
        const std::string_view line = text.substr(start, newline - start);
        start = newline == std::string_view::npos ? text.size() : newline + 1;
        if (!line.starts_with(title))
            continue;
        const std::string_view rest = trimmedText(line.substr(title.size()));
        if (rest.starts_with(':'))
            if (const std::string_view value = trimmedText(rest.substr(1)); !value.empty())
                return value;
    }
    return {};
}

LinuxMachine::LinuxMachine(const std::string& root) : root_(root) {}

std::optional<std::string> LinuxMachine::modelIdentifier() const {
    for (const char* name : {"product_name", "board_name"})
        if (auto model = firmwareText(root_ + "/sys/class/dmi/id/" + name))
            return model;
    if (auto model = deviceTreeModel(root_))
        return model;
    return "Linux machine";
}

std::optional<std::string> LinuxMachine::processorBrand() const {
    constexpr std::size_t limit = std::size_t{1} << 20;
    const std::string cpuInfo = readFileAt(AT_FDCWD, (root_ + "/proc/cpuinfo").c_str(), limit).value_or("");
    for (const std::string_view title : {"model name", "Hardware"})
        if (const auto value = parseCpuInfo(cpuInfo, title))
            if (std::string brand = tidyProcessorBrand(*value); !brand.empty())
                return brand;
    return deviceTreeModel(root_);
}

} // namespace vantoro
