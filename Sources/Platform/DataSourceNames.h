// What people know a system's sources of data by.
#pragma once

#include <string>

namespace vantoro {

struct DataSourceNames {
    /// Where fans, temperatures and power come from.
    std::string sensors;
    /// Where loads, frequencies and energy come from.
    std::string reports;
    /// The program that prints the process list runs with root's rights; otherwise what it reads is open to all.
    bool streamIsSetuidRoot = false;
    /// What the choices of the settings cost is known for this system's machines beforehand.
    bool costsAreStated = false;

    bool operator==(const DataSourceNames&) const = default;
};

} // namespace vantoro
