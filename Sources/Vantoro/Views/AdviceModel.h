// What the advice panel says.
#pragma once

#include "Model/SensorHub.h"

#include <QString>
#include <vector>

namespace vantoro {

/// A sentence, or the label of a quit button and the note below it.
struct AdviceItemModel {
    QString text;
    std::optional<std::int32_t> quitPID;
    QString note;

    bool operator==(const AdviceItemModel&) const = default;
};

struct AdviceModel {
    QString title;
    std::vector<AdviceItemModel> items;
    /// In place of the items when there is none.
    QString emptyText;
    QString explain;
    /// There is nothing to advise upon or to explain yet.
    bool isPending = false;

    bool operator==(const AdviceModel&) const = default;
};

AdviceModel adviceModel(const SensorHub& hub);

} // namespace vantoro
