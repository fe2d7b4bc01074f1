// What machine this is.
#pragma once

#include <optional>
#include <string>

namespace vantoro {

class Machine {
public:
    virtual ~Machine() = default;

    /// The maker's model identifier or product name.
    virtual std::optional<std::string> modelIdentifier() const = 0;
    /// The processor's brand name.
    virtual std::optional<std::string> processorBrand() const = 0;
};

} // namespace vantoro
