// Ending an application: which one a process belongs to, what is said before, meanwhile and after.
#pragma once

#include "Model/Live/Quits.h"
#include "Model/Live/SensorHub.h"

#include <QString>

namespace vantoro {

/// What the alert shows, before and while the processes end.
struct QuitModel {
    QString title;
    QString text;
    /// Beside a ring that is closed this far, while there is something to wait for; else empty.
    QString wait;
    double ring = 0;
    QString confirm;
    QString cancel;
    /// False while the time to end is running, and while a recording plays: its processes are not this machine's, and
    /// their numbers belong to others here.
    bool canConfirm = true;

    bool operator==(const QuitModel&) const = default;
};

/// What became of it, in place of the quit button.
struct QuitResultModel {
    QString icon;
    QString text;
    QString detail;

    bool operator==(const QuitResultModel&) const = default;
};

/// The group that holds this process at this moment, with the members of the last seconds and of the verdict; none when
/// it is gone. It is one group wherever it is shown, so that its processes are counted alike.
std::optional<ProcessGroup> groupHolding(const SensorHub& hub, std::int32_t pid);
std::optional<ProcessGroup> wholeGroup(const SensorHub& hub, const std::string& key);

/// Whether any of it could be ended; never of a group that this program belongs to.
bool canBeQuit(const SensorHub& hub, const ProcessGroup& group);

/// The question, about so many processes.
QuitModel quitModel(const SensorHub& hub, const ProcessGroup& group, int processes);
/// What is shown while they end.
QuitModel quitModel(const Quits& quits, const Quitting& quitting);

/// None when nothing happened lately.
std::optional<QuitResultModel> quitResultModel(const SensorHub& hub);

/// "Asks all 11 processes to end. What they have not saved is lost.", under a quit button.
QString quitNote(const SensorHub& hub, const ProcessGroup& group);

} // namespace vantoro
