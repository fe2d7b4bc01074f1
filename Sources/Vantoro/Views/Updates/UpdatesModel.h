// What the update parts of the interface say: the control bar's chip, the menu-bar panel's row, the settings' group.
#pragma once

#include "Model/Records/SystemWords.h"
#include "Model/Text/Release.h"

#include <QString>

namespace vantoro {

class Updates;

/// Where updates stand at one moment.
struct UpdateState {
    UpdatePhase phase;
    /// Download and extraction, 0 to 1.
    double progress = 0;
    /// An update is known, whatever the phase.
    bool isAnnounced = false;
    /// What was found cannot be installed, only read about.
    bool isToReadOnly = false;
    /// A download can be ended.
    bool canCancel = false;
    bool checksAutomatically = false;
    /// Seconds since 1970 of the last answer; nothing before the first.
    std::optional<double> lastCheck;
    double now = 0;
    QString currentVersion;
    /// Whose words are spoken.
    SystemKind system = SystemKind::macos;
};

/// Idle where there is no updater: what could not be acted on is not offered.
UpdateState updateState(const Updates& updates);

/// What an update button does.
enum class UpdateCommand { check, install, tryAgain, cancel };

/// "Check Now", "Install", "Try Again", "Cancel".
QString updateWord(UpdateCommand command);
void perform(UpdateCommand command, Updates& updates, UpdateOrigin origin);

/// An icon, or a ring in its place.
struct UpdateMarkModel {
    QString icon;
    /// How much of the ring is closed, 0 to 1.
    std::optional<double> ring;
    bool turns = false;

    bool operator==(const UpdateMarkModel&) const = default;
};

/// The chip and the panel's row: mark, text, and a button where there is something to do. An empty text is nothing.
struct UpdateLine {
    UpdateMarkModel mark;
    QString text;
    /// What more there is to say, in plain text.
    QString more;
    std::optional<UpdateCommand> command;

    bool operator==(const UpdateLine&) const = default;
};

UpdateLine updateChip(const UpdateState& state);
/// Only while an update is known or under way.
UpdateLine updateRow(const UpdateState& state);

struct UpdatesGroupModel {
    bool checksAutomatically = false;
    /// What the switch means where it stands.
    QString switchNote;
    /// "Vantoro 1.2"
    QString version;
    QString status;
    UpdateCommand command = UpdateCommand::check;
    bool canPress = true;
    /// What is new or what went wrong, and what is asked of whom.
    QString note;

    bool operator==(const UpdatesGroupModel&) const = default;
};

UpdatesGroupModel updatesGroup(const UpdateState& state);

/// What leaves this machine: the last word of the settings.
QString privacyNote(bool asksForUpdates, const SystemWords& words);

} // namespace vantoro
