// What the readings come from on this system, in the words of the interface.
#pragma once

#include <QString>

namespace vantoro {

/// As people know it there. The defaults are the Mac's.
struct SourceNames {
    /// The program that prints the process list, as it is run and for short.
    QString stream = "/usr/bin/top";
    QString streamForShort = "top";
    /// It sees other users' processes because it runs with the rights of root; otherwise because anybody may see them.
    bool streamIsSetuidRoot = true;
    /// Where fans, temperatures and power come from, and where loads and frequencies.
    QString sensors = "SMC";
    QString reports = "IOReport";
    /// What each choice costs is the same on all its machines, and the notes say it.
    bool costsAreStated = true;

    bool operator==(const SourceNames&) const = default;
};

} // namespace vantoro
