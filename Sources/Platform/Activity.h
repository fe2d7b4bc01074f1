// Work that goes on while nothing of the program is to be seen, made known to the system.
#pragma once

#include <memory>

namespace vantoro {

class Activity {
public:
    /// The system is told until this goes.
    class Held {
    public:
        virtual ~Held() = default;
    };

    virtual ~Activity() = default;

    /// Keeps the system from slowing this program's timers down while its windows are hidden; the machine may still go
    /// to sleep. `reason` is for who looks into what the system holds.
    virtual std::unique_ptr<Held> begin(const char* reason) = 0;
};

} // namespace vantoro
