// How devices that may fall asleep are read without keeping them awake.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace vantoro {

/// What may be done with a device's files at this moment.
enum class Look {
    read, ///< as with any other
    hold, ///< it is to be left alone: what was read last still holds
    leave ///< it sleeps, or might be woken: nothing is known of it
};

/// Of one device, for all who read of it: files read at one moment count as one look. Callable from any thread.
class DeviceRest {
public:
    virtual ~DeviceRest() = default;

    /// `isFirst`: this file was never read.
    Look at(double now, bool isFirst = false);
    /// For who can tell whether the device is at work, which keeps it awake anyhow.
    void note(bool works, double now);

protected:
    std::optional<double> lookedAt_;
    /// Until then no look does harm.
    double freeUntil_ = 0;

private:
    virtual Look decide(double now) = 0;
    /// Whether a first reading is worth beginning the rest anew.
    virtual bool mayBeginAnew() const = 0;

    std::mutex mutex_;
    std::optional<double> decidedAt_;
    Look decided_ = Look::leave;
};

/// A graphics processor, by its device's folder. One that may fall asleep (power/control "auto") is looked at once and
/// then left alone for longer than it waits before it sleeps; only if it is awake even then, by somebody else's doing,
/// it is read freely, for a minute at most, and put to the test again. One that shows a picture cannot sleep.
std::shared_ptr<DeviceRest> graphicsRest(const std::string& device);

/// A drive, by its device's folder: read once in five minutes, and a disk that turns only if it was at work just now,
/// by the kernel's account of what was asked of it.
std::shared_ptr<DeviceRest> driveRest(const std::string& device);

} // namespace vantoro
