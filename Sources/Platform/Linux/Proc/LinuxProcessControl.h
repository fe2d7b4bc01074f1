// Processes as the kernel shows them below /proc, ended through a handle where the kernel has one.
#pragma once

#include "Platform/ProcessControl.h"

#include <cstdint>

namespace vantoro {

class LinuxProcessControl : public ProcessControl {
public:
    LinuxProcessControl();

    std::int32_t ownPid() const override;
    void list(std::vector<LivingProcess>& alive) override;
    std::optional<LivingProcess> find(std::int32_t pid) override;
    /// /proc/PID/cwd
    std::string folder(const LivingProcess& process) override;
    /// The handle is opened first and the process compared after: the signal then reaches what was compared. Kernels
    /// before 5.3 have no handles; there the number is signalled right after the comparison.
    QuitAnswer end(const LivingProcess& process, QuitManner manner) override;

private:
    std::uint64_t ticksPerSecond_;
};

} // namespace vantoro
