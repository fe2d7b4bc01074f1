// The words for everything that can go wrong with an update.
#include "Model/Updates/Updates.h"

#include <fmt/format.h>

namespace vantoro {

Updates::Words Updates::describe(const UpdateError& error, SystemKind system) {
    Words unreachable{fmt::format("Couldn't reach {}.", host), "Check your connection and try again."};
    Words unfinished{"The update didn't finish.", "Nothing was changed. Try again in a moment."};
    if (error.domain == urlErrorDomain)
        return unreachable;
    if (error.domain == ownErrorDomain && error.code == OwnCode::diskFull)
        return {"The update didn't finish.", "The disk is full. Nothing was changed: make some room and try again."};
    if (error.domain != sparkleErrorDomain)
        return unfinished;
    switch (error.code) {
    case SparkleCode::fileCopyFailure:
    case SparkleCode::authenticationFailure:
    case SparkleCode::installationWriteNoPermission:
        return {"Vantoro can't replace itself here.", system == SystemKind::macos
                                                          ? "Move Vantoro to your Applications folder and try again."
                                                          : "Unpack its archive where you may write and try again."};
    case SparkleCode::installationCanceled:
    case SparkleCode::installationAuthorizeLater:
        return {"The update was cancelled.", "Nothing was changed."};
    case SparkleCode::runningFromDiskImage:
    case SparkleCode::runningTranslocated:
        return {"Move Vantoro to Applications first.",
                "macOS runs a downloaded app from a temporary copy until it's moved, so there's nothing here to "
                "update."};
    case SparkleCode::insufficientSigning:
    case SparkleCode::appcastParse:
    case SparkleCode::signature:
    case SparkleCode::validation:
        return {"Not installed: it couldn't be verified.",
                "Every update is signed by Brisel. This one's signature didn't match, so nothing was changed."};
    case SparkleCode::appcast:
    case SparkleCode::download:
        return unreachable;
    default:
        return unfinished;
    }
}

} // namespace vantoro
