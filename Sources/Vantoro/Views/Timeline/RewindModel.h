// What the Timeline pane says of the moment under the pointer.
#pragma once

#include "Model/Records/Telemetry.h"
#include "Model/Text/Format.h"

#include <QString>
#include <vector>

namespace vantoro {

struct RewindModel {
    struct Reading {
        QString label;
        QString value;

        bool operator==(const Reading&) const = default;
    };

    struct Process {
        QString name;
        /// Empty where it is the name shown.
        QString rawName;
        QString share;

        bool operator==(const Process&) const = default;
    };

    QString title;
    std::vector<Reading> readings;
    /// Busiest first.
    std::vector<Process> processes;
    /// In place of the processes, or of everything when there is no moment.
    QString notice;
    /// The moment stays until it is let go.
    bool isPinned = false;

    bool isAtMoment() const { return !readings.empty(); }

    bool operator==(const RewindModel&) const = default;
};

/// Of this snapshot; without one it says how to rewind.
RewindModel rewindModel(const Snapshot* snapshot, bool isPinned, const Format& format);

/// "At 2:36:12 PM", or "Rewind" without a snapshot.
QString scrubTitle(const Snapshot* snapshot, const Format& format);

} // namespace vantoro
