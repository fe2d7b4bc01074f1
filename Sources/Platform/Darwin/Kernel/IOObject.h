// The owner of one IOKit object.
#pragma once

#include <IOKit/IOKitLib.h>

#include <utility>

namespace vantoro {

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

} // namespace vantoro
