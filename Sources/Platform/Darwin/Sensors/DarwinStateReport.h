// How long each core has spent in each performance state, from the system's report (group "CPU Stats").
#pragma once

#include "Platform/Darwin/Kernel/CFText.h"
#include "Platform/Darwin/Sensors/IOReportLibrary.h"
#include "Platform/StateReport.h"

#include <memory>
#include <optional>

namespace vantoro {

/// Channel names begin with the core's cluster (see coreChannelName).
class DarwinStateReport : public StateReport {
public:
    bool load() override;
    bool subscribe() override;
    std::unique_ptr<StateSample> sample() override;

private:
    std::optional<IOReportLibrary> library_;
    std::optional<IOReportGroup> group_;
    std::shared_ptr<KeptTexts> texts_ = std::make_shared<KeptTexts>();
};

} // namespace vantoro
