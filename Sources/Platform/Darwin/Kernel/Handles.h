// The owners of what the Mac's kernel and its frameworks hand over: one object of Core Foundation's or of IOKit's, and
// the right to ask the Mach kernel about this machine.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <mach/mach.h>
#include <utility>

namespace vantoro {

/// Holds a reference that a function whose name says Create or Copy handed over, and releases it. `Ref` is the object's
/// type, such as CFDataRef.
template <typename Ref>
class CFOwner {
public:
    CFOwner() = default;
    explicit CFOwner(Ref object) : object_(object) {}
    CFOwner(CFOwner&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CFOwner& operator=(CFOwner&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    CFOwner(const CFOwner&) = delete;
    CFOwner& operator=(const CFOwner&) = delete;
    ~CFOwner() {
        if (object_ != nullptr)
            CFRelease(object_);
    }

    explicit operator bool() const { return object_ != nullptr; }
    Ref get() const { return object_; }

private:
    Ref object_ = nullptr;
};

/// Holds a service, a registry entry or an iterator and releases it (IOObjectRelease).
class IOObject {
public:
    IOObject() = default;
    explicit IOObject(io_object_t object) : object_(object) {}
    IOObject(IOObject&& other) noexcept : object_(std::exchange(other.object_, io_object_t{})) {}
    IOObject& operator=(IOObject&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    IOObject(const IOObject&) = delete;
    IOObject& operator=(const IOObject&) = delete;
    ~IOObject() {
        if (object_ != 0)
            IOObjectRelease(object_);
    }

    explicit operator bool() const { return object_ != 0; }
    io_object_t get() const { return object_; }

private:
    io_object_t object_ = 0;
};

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
