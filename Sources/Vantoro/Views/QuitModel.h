// Ending an application: which one a process belongs to, and what is said before it is done.
#pragma once

#include "Model/SensorHub.h"

#include <QString>

namespace vantoro {

struct QuitModel {
    QString title;
    QString text;
    QString confirm;
    QString cancel;
    /// False while a recording plays: its processes are not this machine's, and their numbers belong to others here.
    bool canQuit = true;
    /// The group's key.
    std::string key;
    std::int32_t pid = 0;

    bool operator==(const QuitModel&) const = default;
};

/// The group that holds this process at this moment; null when it is gone. Valid until the hub publishes.
const ProcessGroup* groupHolding(const SensorHub& hub, std::int32_t pid);

/// None when the process's group is gone.
std::optional<QuitModel> quitModel(const SensorHub& hub, std::int32_t pid);

/// Ends the group that was asked about, if it is still there and still the same.
void confirmQuit(SensorHub& hub, const QuitModel& asked);

/// "Ends all 11 processes at once. Unsaved changes are lost.", under a quit button.
QString quitNote(const ProcessGroup& group);

} // namespace vantoro
