#include "Views/Now/AdviceModel.h"

#include "Views/Shared/Words.h"

namespace vantoro {

AdviceModel adviceModel(const SensorHub& hub) {
    AdviceModel model{.title = tr("What you can do"),
                      .items = {},
                      .result = quitResultModel(hub),
                      .emptyText = tr("Nothing needs doing."),
                      .explain = tr("Explain in full…")};
    if (hub.measuring() != Measuring::done) {
        model.emptyText.clear();
        model.isPending = true;
        return model;
    }
    for (const Advice& advice : hub.verdict().advice) {
        AdviceItemModel item{.text = toQString(advice.text), .quitPID = advice.quitPID, .note = {}};
        if (advice.quitPID) {
            const std::optional<ProcessGroup> group = groupHolding(hub, *advice.quitPID);
            // The verdict remembers for longer than a process may live.
            if (model.result || !group || !canBeQuit(hub, *group))
                continue;
            item.note = quitNote(hub, *group);
        }
        model.items.push_back(std::move(item));
    }
    return model;
}

} // namespace vantoro
