// How much energy the chip's blocks have used, from the system's report (group "Energy Model").
#pragma once

#include "Platform/Darwin/Kernel/CFText.h"
#include "Platform/Darwin/Sensors/IOReportLibrary.h"
#include "Platform/EnergyReport.h"

#include <memory>
#include <optional>

namespace vantoro {

class DarwinEnergyReport : public EnergyReport {
public:
    bool load() override;
    bool subscribe() override;
    std::unique_ptr<EnergySample> sample() override;

private:
    std::optional<IOReportLibrary> library_;
    std::optional<IOReportGroup> group_;
    std::shared_ptr<KeptTexts> texts_ = std::make_shared<KeptTexts>();
};

} // namespace vantoro
