#include "Views/AdviceModel.h"

#include "Views/QuitModel.h"
#include "Views/Words.h"

namespace vantoro {

AdviceModel adviceModel(const SensorHub& hub) {
    AdviceModel model{.title = tr("What you can do"),
                      .items = {},
                      .emptyText = tr("Nothing needs doing."),
                      .explain = tr("Explain in full…")};
    if (hub.measuring() != Measuring::done) {
        model.emptyText.clear();
        model.isPending = true;
        return model;
    }
    for (const Advice& advice : hub.verdict().advice) {
        AdviceItemModel item{.text = toQString(advice.text), .quitPID = advice.quitPID, .note = {}};
        if (advice.quitPID)
            if (const ProcessGroup* const group = groupHolding(hub, *advice.quitPID); group != nullptr)
                item.note = quitNote(*group);
        model.items.push_back(std::move(item));
    }
    return model;
}

} // namespace vantoro
