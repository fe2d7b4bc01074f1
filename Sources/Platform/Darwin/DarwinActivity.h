// The Mac slows down programs that nobody sees (App Nap), unless they say that they are at work.
#pragma once

#include "Platform/Activity.h"

namespace vantoro {

class DarwinActivity : public Activity {
public:
    /// -[NSProcessInfo beginActivityWithOptions:reason:], begun by the user, with idle system sleep allowed.
    std::unique_ptr<Held> begin(const char* reason) override;
};

} // namespace vantoro
