// What the program that prepares a release says to the one that started it: lines of text.
#pragma once

#include "Platform/UpdateEngine.h"

#include <optional>
#include <string>
#include <variant>

namespace vantoro {

/// The staged folder, or what went wrong.
using PreparationOutcome = std::variant<std::string, UpdateError>;

/// "progress 0.42".
std::string preparationProgressLine(double share);
std::optional<double> parsePreparationProgress(const std::string& line);

/// "staged FOLDER" or "error CODE TEXT", the last line. Whatever else is said counts as an archive that broke the
/// program.
std::string preparationOutcomeLine(const PreparationOutcome& outcome);
PreparationOutcome parsePreparationOutcome(const std::string& line);

} // namespace vantoro
