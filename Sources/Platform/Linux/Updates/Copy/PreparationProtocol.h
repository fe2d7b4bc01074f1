// What the updater's parts tell each other: errors, and the lines of text of the program that prepares a release.
#pragma once

#include "Platform/UpdateEngine.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <variant>

namespace vantoro {

inline UpdateError sparkleError(int code, std::string description) {
    return {.domain = std::string(sparkleErrorDomain), .code = code, .description = std::move(description)};
}

inline UpdateError ownError(int code, std::string description) {
    UpdateError error = sparkleError(code, std::move(description));
    error.domain = ownErrorDomain;
    return error;
}

/// The system refused something about a file; a full disk is an error of its own, whatever was being done.
inline UpdateError fileError(int code, const std::string& what, int systemError) {
    if (systemError == ENOSPC || systemError == EDQUOT)
        return ownError(OwnCode::diskFull, what + ": the disk is full");
    return sparkleError(code, what + ": " + std::strerror(systemError));
}

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
