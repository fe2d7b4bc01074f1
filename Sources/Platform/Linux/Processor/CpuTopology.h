// Which processors there are and of which kind.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vantoro {

/// Numbers of logical processors, ascending.
struct CpuTopology {
    std::vector<int> efficiency;
    std::vector<int> performance;

    bool operator==(const CpuTopology&) const = default;
};

/// The processors online (/sys/devices/system/cpu/online; without that file, those that /proc/stat lists). Their kinds
/// from the hybrid processor's own lists (/sys/devices/cpu_core/cpus, cpu_atom/cpus), else from their capacities
/// (cpuN/cpu_capacity); all are performance processors where neither tells them apart.
CpuTopology readCpuTopology(const std::string& root);

/// Processors by capacity. Two groups where the widest gap between neighbouring capacities is a quarter or more: those
/// below it are the efficiency processors. Favoured cores of one kind differ by less.
CpuTopology splitByCapacity(const std::map<int, std::int64_t>& capacities);

} // namespace vantoro
