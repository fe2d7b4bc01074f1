#include "Views/Suspects/QuitModel.h"

#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

namespace {

bool holds(const ProcessGroup& group, std::int32_t pid) {
    return std::any_of(group.members.begin(), group.members.end(),
                       [pid](const ProcessAggregate& member) { return member.pid == pid; });
}

/// The list of the last seconds first: it knows best which processes there are; the verdict looks further back.
std::vector<const ProcessGroup*> groups(const SensorHub& hub) {
    std::vector<const ProcessGroup*> all;
    for (const ProcessGroup& group : hub.suspects())
        all.push_back(&group);
    if (hub.verdict().suspect)
        all.push_back(&*hub.verdict().suspect);
    for (const ProcessGroup& group : hub.verdict().runnersUp)
        all.push_back(&group);
    return all;
}

} // namespace

std::optional<ProcessGroup> wholeGroup(const SensorHub& hub, const std::string& key) {
    std::optional<ProcessGroup> whole;
    for (const ProcessGroup* const group : groups(hub)) {
        if (group->key != key)
            continue;
        if (!whole) {
            whole = *group;
            continue;
        }
        for (const ProcessAggregate& member : group->members)
            if (!holds(*whole, member.pid))
                whole->members.push_back(member);
    }
    return whole;
}

std::optional<ProcessGroup> groupHolding(const SensorHub& hub, std::int32_t pid) {
    if (pid <= 0)
        return std::nullopt;
    for (const ProcessGroup* const group : groups(hub))
        if (holds(*group, pid))
            return wholeGroup(hub, group->key);
    return std::nullopt;
}

bool canBeQuit(const SensorHub& hub, const ProcessGroup& group) {
    return hub.quits().living(group) > 0 && !hub.quits().holdsOwn(group);
}

QuitModel quitModel(const SensorHub& hub, const ProcessGroup& group, int processes) {
    const QString name = toQString(friendlyName(group, hub.words().kind));
    QuitModel model;
    model.title = tr("Quit %1?").arg(name);
    model.confirm = tr("Quit %1").arg(name);
    model.cancel = tr("Cancel");
    model.canConfirm = hub.quits().canEnd();
    if (hub.isReplay())
        model.text = tr("This is a recording. Nothing on this machine is ended.");
    else if (processes >= 2)
        model.text = tr("Vantoro asks its %1 processes to end, and the ones they have started since. What they have "
                        "not saved is lost.")
                         .arg(processes);
    else
        model.text = tr("Vantoro asks this process to end, and the ones it has started since. What it has not saved is "
                        "lost.");
    return model;
}

QuitModel quitModel(const Quits& quits, const Quitting& quitting) {
    const QString name = toQString(quitting.name());
    const int all = quitting.all();
    const int running = quitting.running();
    QuitModel model;
    model.confirm = tr("Force Quit");
    model.cancel = tr("Close");
    model.canConfirm = quitting.stage() == Quitting::Stage::stillRunning;
    if (model.canConfirm) {
        model.title = tr("%1 is still running").arg(name);
        if (all == 1)
            model.text = tr("It did not end within 5 seconds. Force Quit ends it at once; it cannot save anything.");
        else if (running == 1)
            model.text = tr("1 of its %1 processes did not end within 5 seconds. Force Quit ends it at once; it cannot "
                            "save anything.")
                             .arg(all);
        else
            model.text = tr("%1 of its %2 processes did not end within 5 seconds. Force Quit ends them at once; they "
                            "cannot save anything.")
                             .arg(running)
                             .arg(all);
        return model;
    }
    model.title = tr("Quitting %1").arg(name);
    model.text =
        all == 1 ? tr("It has not ended yet.") : tr("%1 of %2 processes have ended.").arg(quitting.ended()).arg(all);
    if (quitting.stage() == Quitting::Stage::asked) {
        const double left = quits.secondsLeft(quitting);
        const int seconds = std::max(1, static_cast<int>(std::ceil(left)));
        model.wait =
            seconds == 1 ? tr("1 more second before Force Quit") : tr("%1 more seconds before Force Quit").arg(seconds);
        model.ring = 1 - left / Quitting::patienceSeconds;
    }
    return model;
}

std::optional<QuitResultModel> quitResultModel(const SensorHub& hub) {
    const std::optional<QuitResult>& result = hub.quits().result();
    if (!result)
        return std::nullopt;
    const QString name = toQString(result->name);
    const int count = result->processes;
    QuitResultModel model{.icon = QStringLiteral("exclamationmark.triangle.fill"), .text = {}, .detail = {}};
    switch (result->kind) {
    case QuitResult::Kind::ended: {
        const QString time = toQString(hub.format().timeOfDay(result->at));
        model.icon = QStringLiteral("checkmark.seal");
        model.text = tr("%1 has ended").arg(name);
        model.detail = count == 1 ? tr("1 process, at %1").arg(time) : tr("%1 processes, at %2").arg(count).arg(time);
        break;
    }
    case QuitResult::Kind::hadEnded:
        model.icon = QStringLiteral("checkmark.seal");
        model.text = tr("%1 had already ended").arg(name);
        break;
    case QuitResult::Kind::refused:
        model.text = count == 1 ? tr("1 process may not be ended") : tr("%1 processes may not be ended").arg(count);
        model.detail = count == 1 ? tr("it belongs to another user") : tr("they belong to another user");
        break;
    case QuitResult::Kind::stillRunning:
        model.text = tr("%1 is still running").arg(name);
        model.detail =
            count == 1 ? tr("1 process ignores being asked") : tr("%1 processes ignore being asked").arg(count);
        break;
    case QuitResult::Kind::stuck:
        model.text = tr("%1 is still running").arg(name);
        model.detail =
            count == 1 ? tr("1 process has not ended yet") : tr("%1 processes have not ended yet").arg(count);
        break;
    }
    return model;
}

QString quitNote(const SensorHub& hub, const ProcessGroup& group) {
    const int processes = hub.quits().living(group);
    return processes >= 2 ? tr("Asks all %1 processes to end. What they have not saved is lost.").arg(processes)
                          : tr("Asks this process to end. What it has not saved is lost.");
}

} // namespace vantoro
