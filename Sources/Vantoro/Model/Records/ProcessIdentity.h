// What names a process and stays the same from tick to tick, shared between all the samples of that process: a history
// of 36,000 rows then holds its texts once per process rather than once per row, with the semantics of a value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vantoro {

enum class ProcessKind : std::uint8_t {
    userApp,      ///< an application the user opened
    helper,       ///< a helper process of such an application
    commandLine,  ///< command-line work under the user's account
    systemDaemon, ///< a background service of the system
    kernel        ///< the kernel
};

struct ProcessIdentity {
    std::int32_t pid = 0;
    /// The name exactly as the process source reported it.
    std::string rawName;
    /// The name shown to the user.
    std::string displayName;
    /// Full path of the executable; empty when unknown.
    std::string executablePath;
    /// The application that the process belongs to: its name, and the path of its bundle or desktop entry.
    std::optional<std::string> owningAppName;
    std::optional<std::string> owningAppPath;
    /// Name of the account it runs under.
    std::string user;
    ProcessKind kind = ProcessKind::userApp;

    /// A thread that makes a processor pause so that it cools down (Linux: drivers/powercap/idle_inject.c and, before
    /// it, intel_powerclamp.c). It is counted as busy, but it is the slowing itself and draws no power.
    bool isCoolingPause() const {
        return kind == ProcessKind::kernel &&
               (displayName.starts_with("idle_inject") || displayName.starts_with("kidle_inj"));
    }
    /// That, or the Mac's kernel while thermal pressure is serious or worse: then it parks work so that the chip cools
    /// down.
    bool isSlowing(bool isUnderPressure) const {
        return isCoolingPause() || (isUnderPressure && kind == ProcessKind::kernel && displayName == "kernel_task");
    }
    bool operator==(const ProcessIdentity&) const = default;
};

/// A shared, immutable ProcessIdentity in one pointer (a std::shared_ptr is two, and the history counts its bytes).
/// Copies share the record across threads; equality compares the records themselves.
class SharedProcessIdentity {
public:
    /// The identity of no process: every field at its initial value.
    SharedProcessIdentity() = default;
    SharedProcessIdentity(ProcessIdentity identity); // NOLINT(google-explicit-constructor): a value like any other
    SharedProcessIdentity(const SharedProcessIdentity& other) noexcept;
    SharedProcessIdentity(SharedProcessIdentity&& other) noexcept : record_(other.record_) { other.record_ = nullptr; }
    SharedProcessIdentity& operator=(const SharedProcessIdentity& other) noexcept;
    SharedProcessIdentity& operator=(SharedProcessIdentity&& other) noexcept;
    ~SharedProcessIdentity();

    const ProcessIdentity& operator*() const;
    const ProcessIdentity* operator->() const { return &**this; }

    /// Whether both are the very same record: a cheap test that equal texts need not be compared or copied again.
    bool sharesRecordWith(const SharedProcessIdentity& other) const { return record_ == other.record_; }

    bool operator==(const SharedProcessIdentity& other) const;

private:
    struct Record;
    Record* record_ = nullptr;
};

} // namespace vantoro
