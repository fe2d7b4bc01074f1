// Accounts' names, on every system of the Unix family.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vantoro {

/// The account's name from the system's user database (getpwuid_r); none when there is no such account.
std::optional<std::string> accountName(std::uint32_t uid);

} // namespace vantoro
