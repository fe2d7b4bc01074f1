// What the list of the busiest applications shows.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Views/Shared/Words.h"

#include <QString>
#include <vector>

namespace vantoro {

/// One application or lone process.
struct SuspectRowModel {
    QString key;
    QString name;
    /// What kind of process it is, how many, and its own name where a friendly one hides it.
    QString about;
    /// The bundle or desktop entry whose icon stands for it; the symbol where there is none.
    QString appPath;
    QString symbol;
    /// Per cent of one core, and as text.
    double percent = 0;
    QString figure;
    QString spokenFigure;
    /// The one that the verdict names: emphasised, in this stop of the heat ramp.
    std::optional<int> heatStop;
    bool offersQuit = false;
    /// In place of the figure while its processes have been asked to end; else empty.
    QString quitting;
    /// They did not end: what is offered instead stands in place of the figure.
    bool offersForce = false;
    std::int32_t quitPID = 0;
    /// Shown once the row is expanded; the first may be empty.
    QString explanation;
    QString details;

    bool operator==(const SuspectRowModel&) const = default;
};

struct SuspectsModel {
    static constexpr int rowsAtFirst = 5;

    QString title;
    QString caption;
    /// In its place where the bars have no room for cells.
    QString captionWithoutCells;
    std::vector<SuspectRowModel> rows;
    /// How many cells a bar has.
    int cores = 0;
    /// There is nothing to name anyone by yet.
    bool isPending = false;
    /// In place of the rows when there is none.
    QString emptyText;
    /// The process source, where it sees less than everything; else empty.
    QString footer;
    /// The button that shows every row, and the one that goes back; empty while all fit.
    QString showAll;
    QString showFewer;
    QString expandAction;
    QString quitAction;
    QString forceAction;

    bool operator==(const SuspectsModel&) const = default;
};

SuspectsModel suspectsModel(const SensorHub& hub, const SourceNames& names = {});

} // namespace vantoro
