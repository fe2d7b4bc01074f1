// The Mac's system management controller, through IOKit.
#pragma once

#include "Platform/SMCService.h"

namespace vantoro {

class DarwinSMCService : public SMCService {
public:
    /// IOServiceGetMatchingService on the class name, then IOServiceOpen for this task, type 0.
    std::uint32_t open(const char* className) override;
    /// IOConnectCallStructMethod, selector 2.
    bool call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) override;
    /// IOServiceClose.
    std::uint32_t close(std::uint32_t handle) override;
    /// On chips with a middle tier of cores.
    bool measuresCoresUnderTs() const override;
};

} // namespace vantoro
