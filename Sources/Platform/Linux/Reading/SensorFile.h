// One small file of a driver's, kept open and read with one system call.
#pragma once

#include "Platform/Linux/Reading/KeptFile.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

/// Opened at the first reading. The process keeps a bounded number of such files open (512: half of what systems allow
/// a process); those beyond are opened for each reading.
class SensorFile {
public:
    SensorFile() = default;
    /// An empty path is a file that is not there.
    explicit SensorFile(std::string path) : path_(std::move(path)) {}
    SensorFile(SensorFile&& other) noexcept;
    SensorFile& operator=(SensorFile&& other) noexcept;
    ~SensorFile() { release(); }

    /// The first bytes, as many as fit into `room`. None when the driver refuses, the device is gone or the text is
    /// empty.
    std::optional<std::string_view> readText(char* room, std::size_t roomBytes);
    /// The file's one whole number; none also when it holds something else.
    std::optional<std::int64_t> readNumber();

private:
    void release();

    std::string path_;
    Descriptor descriptor_;
    bool isForbidden_ = false;
};

/// A device's state of runtime power management (power/runtime_status).
class SleepCheck {
public:
    SleepCheck() = default;
    explicit SleepCheck(std::string statusPath) : status_(std::move(statusPath)) {}

    /// Whether the device sleeps or is about to, or is only now waking: reading its sensors would wake it, or wait for
    /// it. A device without the file never sleeps.
    bool isAsleep();

private:
    SensorFile status_;
};

} // namespace vantoro
