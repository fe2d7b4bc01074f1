// What a control group is named for, and a thread of the kernel's. Pure.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// The ids of desktop entries that the innermost unit of a control group may stand for, likeliest first; empty when the
/// unit is not an application's. Known are systemd's convention for desktops, app[-LAUNCHER]-ID[-RANDOM].scope and
/// app[-LAUNCHER]-ID[@RANDOM].service with "-" in a part written as \x2d, and snap's snap.NAME.APP[-RANDOM].scope.
std::vector<std::string> applicationIds(std::string_view controlGroup);

/// A part of a unit's name with the service manager's \xNN resolved.
std::string unescaped(std::string_view part);

/// The innermost unit of the service manager's in a control group, "ssh.service" or "session-3.scope"; empty when there
/// is none.
std::string_view unitOf(std::string_view controlGroup);

/// The container that a control group is of: its name where the group bears it (LXC, systemd-nspawn), else the twelve
/// digits by which engines list it (Docker, Podman, containerd, CRI-O, Kubernetes); empty for no container.
std::string containerOf(std::string_view controlGroup);

/// The name of a thread of the kernel's without the numbers of processors, workers and instances: "ksoftirqd",
/// "irq/nvme0q3", "kworker/i915-unordered" for the queue that a worker serves.
std::string kernelThreadName(std::string_view name);

} // namespace vantoro
