// The controller's keys as its readers want them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// Those keys of the controller whose name is a text of four characters and whose type is a floating-point number, in
/// the controller's order. `count` is how many keys it says it holds.
std::vector<std::string> floatKeys(std::uint32_t count);

/// The value of a key; none when it cannot be read or is no finite number.
std::optional<double> readKey(const std::string& key);

} // namespace vantoro
