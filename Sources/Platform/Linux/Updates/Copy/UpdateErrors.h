// Errors of the updater's.
#pragma once

#include "Platform/UpdateEngine.h"

#include <cerrno>
#include <cstring>

namespace vantoro {

inline UpdateError sparkleError(int code, std::string description) {
    return {.domain = std::string(sparkleErrorDomain),
            .code = code,
            .description = std::move(description),
            .latestItem = {},
            .noUpdateReason = {}};
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

} // namespace vantoro
