// The right to ask the Mach kernel about this machine.
#pragma once

#include <mach/mach.h>

namespace vantoro {

/// mach_host_self gives a new reference at every call: one is taken and given back.
class HostPort {
public:
    HostPort() : port_(mach_host_self()) {}
    HostPort(const HostPort&) = delete;
    HostPort& operator=(const HostPort&) = delete;
    ~HostPort() { mach_port_deallocate(mach_task_self(), port_); }

    mach_port_t get() const { return port_; }

private:
    mach_port_t port_;
};

} // namespace vantoro
