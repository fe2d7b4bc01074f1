#include "Views/QuitModel.h"

#include "Model/ProcessKnowledge.h"
#include "Views/Words.h"

#include <algorithm>

namespace vantoro {

namespace {

bool holds(const ProcessGroup& group, std::int32_t pid) {
    return std::any_of(group.members.begin(), group.members.end(),
                       [pid](const ProcessAggregate& member) { return member.pid == pid; });
}

} // namespace

const ProcessGroup* groupHolding(const SensorHub& hub, std::int32_t pid) {
    if (pid <= 0)
        return nullptr;
    // The list of the last seconds knows best which processes there are; the verdict looks further back.
    for (const ProcessGroup& group : hub.suspects())
        if (holds(group, pid))
            return &group;
    const Verdict& verdict = hub.verdict();
    if (verdict.suspect && holds(*verdict.suspect, pid))
        return &*verdict.suspect;
    for (const ProcessGroup& group : verdict.runnersUp)
        if (holds(group, pid))
            return &group;
    return nullptr;
}

std::optional<QuitModel> quitModel(const SensorHub& hub, std::int32_t pid) {
    const ProcessGroup* const group = groupHolding(hub, pid);
    if (group == nullptr)
        return std::nullopt;
    const QString name = toQString(friendlyName(group->displayName));
    QuitModel model;
    model.title = tr("Quit %1?").arg(name);
    model.confirm = tr("Quit %1").arg(name);
    model.cancel = tr("Cancel");
    model.canQuit = !hub.isReplay();
    model.key = group->key;
    model.pid = pid;
    if (!model.canQuit)
        model.text = tr("This is a recording. Nothing on this machine is ended.");
    else if (group->members.size() >= 2)
        model.text = tr("Vantoro ends its %1 processes at once. Unsaved changes are lost.").arg(group->members.size());
    else
        model.text = tr("Vantoro ends this process at once. Unsaved changes are lost.");
    return model;
}

void confirmQuit(SensorHub& hub, const QuitModel& asked) {
    const ProcessGroup* const group = groupHolding(hub, asked.pid);
    if (group == nullptr || group->key != asked.key || hub.isReplay())
        return;
    const ProcessGroup copy = *group;
    hub.forceQuit(copy);
}

QString quitNote(const ProcessGroup& group) {
    return group.members.size() >= 2
               ? tr("Ends all %1 processes at once. Unsaved changes are lost.").arg(group.members.size())
               : tr("Ends this process at once. Unsaved changes are lost.");
}

} // namespace vantoro
