#include "Platform/Linux/Processor/CpufreqTables.h"

#include "Platform/Linux/Processor/CpufreqPolicies.h"

#include <utility>

namespace vantoro {

namespace {

class Entry : public RegistryEntry {
public:
    explicit Entry(CpufreqPolicies policies) : policies_(std::move(policies)) {}

    std::optional<std::vector<std::uint8_t>> data(const std::string& property) const override {
        if (property == "voltage-states1-sram" && !policies_.efficiencyTable.empty())
            return records(policies_.efficiencyTable);
        if (property == "voltage-states5-sram" && !policies_.performanceTable.empty())
            return records(policies_.performanceTable);
        return {};
    }

private:
    static std::vector<std::uint8_t> records(const std::vector<std::int64_t>& frequencies) {
        std::vector<std::uint8_t> bytes;
        for (const std::int64_t frequency : frequencies) {
            const std::uint64_t word = static_cast<std::uint32_t>(frequency); // the second word stays 0
            for (unsigned place = 0; place < 8; ++place)
                bytes.push_back(static_cast<std::uint8_t>(word >> 8 * place));
        }
        return bytes;
    }

    CpufreqPolicies policies_;
};

} // namespace

CpufreqTables::CpufreqTables(std::string root) : root_(std::move(root)) {}

std::unique_ptr<RegistryEntry> CpufreqTables::entryAtPath(const std::string& path) {
    if (path != "IODeviceTree:/arm-io/pmgr")
        return nullptr;
    CpufreqPolicies policies = readCpufreqPolicies(root_);
    return policies.policies.empty() ? nullptr : std::make_unique<Entry>(std::move(policies));
}

std::optional<std::vector<std::unique_ptr<RegistryEntry>>> CpufreqTables::entriesNamed(const std::string&) {
    return std::vector<std::unique_ptr<RegistryEntry>>();
}

} // namespace vantoro
