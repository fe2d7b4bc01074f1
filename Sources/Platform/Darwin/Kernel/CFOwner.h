// The owner of one Core Foundation object.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

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

} // namespace vantoro
