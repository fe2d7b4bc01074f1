// What there is to say of the programs and kernel threads that keep a Linux machine busy.
#pragma once

#include <cstdint>
#include <span>

namespace vantoro {

struct LinuxNote {
    /// How a load of this kind is to be taken.
    enum class Nature : std::uint8_t {
        task,    ///< the system does it on a schedule of its own, and it ends
        work,    ///< somebody's job: it ends when that is done, and may be stopped
        errand,  ///< the same, but stopping it half way does harm
        app,     ///< runs for as long as it is wanted, and may be quit
        part,    ///< a part of the system that works for others; quitting it would take something away
        problem, ///< known for getting stuck
    };

    /// Process names with blanks between them; one that ends in "*" stands for all that begin so, and "~" in one for a
    /// blank that is the name's own ("Web~Content").
    const char* names;
    /// Null: the process's own name says it best.
    const char* friendly;
    /// What follows "It's ".
    const char* what;
    /// Null where there is nothing to do.
    const char* advice;
    Nature nature;
};

/// The kernel's own threads, by their names without the numbers of processors and workers ("kworker/i915-unordered").
std::span<const LinuxNote> linuxKernelNotes();

/// Services, the desktop, and what people run.
std::span<const LinuxNote> linuxProgramNotes();

} // namespace vantoro
