// The command line that the programs which print the process stream understand.
#pragma once

#include <string>
#include <vector>

namespace vantoro {

/// `samples` blocks (0: without end), `intervalSeconds` apart, of the `rows` busiest processes each. `more` goes behind
/// the list of columns.
std::vector<std::string> topArguments(int samples, int intervalSeconds, int rows, const std::string& more = "");

} // namespace vantoro
