// What machine this is, from the firmware's tables and /proc/cpuinfo.
#pragma once

#include "Platform/Machine.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

class LinuxMachine : public Machine {
public:
    /// `root` is the folder that holds proc and sys.
    explicit LinuxMachine(const std::string& root = "/");

    /// The product's name (/sys/class/dmi/id/product_name), else its board's, else the device tree's model; makers'
    /// placeholders count as no name. "Linux machine" when nothing names it.
    std::optional<std::string> modelIdentifier() const override;
    /// "model name" of /proc/cpuinfo without trademark signs and clock frequency, else its "Hardware" line, else the
    /// device tree's model.
    std::optional<std::string> processorBrand() const override;

private:
    std::string root_;
};

/// A firmware text without surrounding blanks and control characters; none when nothing is left or when it is one of
/// the fillers that makers forget to replace.
std::optional<std::string> tidyFirmwareText(std::string_view text);

/// "Intel(R) Core(TM) i7-8550U CPU @ 1.80GHz" becomes "Intel Core i7-8550U". Empty when nothing is left.
std::string tidyProcessorBrand(std::string_view text);

/// The value of the first line of /proc/cpuinfo with this title. None when there is no such line or no value.
std::optional<std::string_view> parseCpuInfo(std::string_view text, std::string_view title);

} // namespace vantoro
