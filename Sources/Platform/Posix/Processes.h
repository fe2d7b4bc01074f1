// What both systems' ways of reading processes share: accounts' names, and the command line of the programs that print
// the process stream.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// The account's name from the system's user database (getpwuid_r); none when there is no such account.
std::optional<std::string> accountName(std::uint32_t uid);

/// `samples` blocks (0: without end), `intervalSeconds` apart, of the `rows` busiest processes each. `more` goes behind
/// the list of columns.
std::vector<std::string> topArguments(int samples, int intervalSeconds, int rows, const std::string& more = "");

} // namespace vantoro
