// What the advice panel says.
#pragma once

#include "Views/Suspects/QuitModel.h"

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
    /// What became of the last quitting, in place of the quit button.
    std::optional<QuitResultModel> result;
    /// In place of the items when there is none.
    QString emptyText;
    QString explain;
    /// There is nothing to advise upon or to explain yet.
    bool isPending = false;

    bool operator==(const AdviceModel&) const = default;
};

AdviceModel adviceModel(const SensorHub& hub);

} // namespace vantoro
