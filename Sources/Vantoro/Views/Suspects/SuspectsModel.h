// What the list of the busiest applications shows.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Views/Shared/Words.h"

#include <QString>
#include <vector>

namespace vantoro {

/// One line of an unfolded row: a process, several that are alike, the rest of them, or those that have ended.
struct MemberModel {
    /// What it is line by line, however many it stands for.
    QString key;
    QString name;
    QString detail;
    /// Per cent of one core; the lines' figures add up to their row's.
    double percent = 0;
    QString figure;
    QString spokenFigure;
    /// The rest, or the ended: below all that are told one by one.
    bool isSummary = false;

    bool operator==(const MemberModel&) const = default;
};

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
    /// Share of the graphics processor where it did such work at all, 0 to 100, and as text.
    std::optional<double> graphicsPercent;
    QString graphicsFigure;
    /// The one that the verdict names: emphasised, in this stop of the heat ramp.
    std::optional<int> heatStop;
    /// It is named for its graphics work: that is what the stop colours.
    bool isNamedForGraphics = false;
    bool offersQuit = false;
    /// In place of the figure while its processes have been asked to end; else empty.
    QString quitting;
    /// They did not end: what is offered instead stands in place of the figure.
    bool offersForce = false;
    std::int32_t quitPID = 0;
    /// Shown once the row is expanded; the first may be empty.
    QString explanation;
    std::vector<MemberModel> members;
    /// Where its job was started; empty where that is not known.
    QString folder;
    QString details;

    /// The stop of its bar of cores, and of its bar of graphics work.
    std::optional<int> coreStop() const { return isNamedForGraphics ? std::nullopt : heatStop; }
    std::optional<int> graphicsStop() const { return isNamedForGraphics ? heatStop : std::nullopt; }

    bool operator==(const SuspectRowModel&) const = default;
};

/// Work of the processors that belongs to no row.
struct UnaccountedModel {
    QString name;
    QString about;
    QString toolTip;
    double percent = 0;
    QString figure;
    QString spokenFigure;

    bool operator==(const UnaccountedModel&) const = default;
};

/// The row that somebody has unfolded: only of this one its members are told.
struct UnfoldedRow {
    QString key;
    /// Where its job works, as it is shown; read once, when it was unfolded.
    QString folder;
};

struct SuspectsModel {
    static constexpr int rowsAtFirst = 5;

    QString title;
    QString caption;
    /// In its place where the bars have no room for cells.
    QString captionWithoutCells;
    /// What the icon of the graphics bars stands for, behind the caption while there are any.
    QString graphicsCaption;
    std::vector<SuspectRowModel> rows;
    /// The last row, where it is much.
    std::optional<UnaccountedModel> unaccounted;
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
    QString unfoldAction;
    QString foldAction;
    /// How a screen reader is told that a row is.
    QString unfoldedWord;
    QString quitAction;
    QString forceAction;

    bool operator==(const SuspectsModel&) const = default;
};

SuspectsModel suspectsModel(const SensorHub& hub, const SourceNames& names = {}, const UnfoldedRow& unfolded = {});

/// Where the job of this row works at this moment, as people write it: what lies in the home folder begins with "~".
/// Empty of what is no job, and where it cannot be told, as in a recording.
QString jobFolder(const SensorHub& hub, const QString& key, const QString& home);

} // namespace vantoro
