// Errors of the updater's own domain.
#pragma once

#include "Platform/UpdateEngine.h"

namespace vantoro {

inline UpdateError sparkleError(int code, std::string description) {
    return {.domain = std::string(sparkleErrorDomain),
            .code = code,
            .description = std::move(description),
            .latestItem = {},
            .noUpdateReason = {}};
}

} // namespace vantoro
