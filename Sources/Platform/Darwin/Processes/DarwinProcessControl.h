// Processes as the kernel reports them. Applications are asked to end as the Dock asks them, so that they can ask about
// unsaved work; every other process gets a signal.
#pragma once

#include "Platform/ProcessControl.h"

namespace vantoro {

class DarwinProcessControl : public ProcessControl {
public:
    std::int32_t ownPid() const override;
    void list(std::vector<LivingProcess>& alive) override;
    std::optional<LivingProcess> find(std::int32_t pid) override;
    /// PROC_PIDVNODEPATHINFO of proc_info.h
    std::string folder(const LivingProcess& process) override;
    /// The system has no handle on a process: it is compared right before it is asked.
    QuitAnswer end(const LivingProcess& process, QuitManner manner) override;
};

} // namespace vantoro
