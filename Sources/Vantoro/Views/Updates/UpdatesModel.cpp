#include "Views/Updates/UpdatesModel.h"

#include "Model/Updates/Updates.h"
#include "Views/Shared/Words.h"

#include <cmath>
#include <QDateTime>
#include <QStringList>

namespace vantoro {

namespace {

using Kind = UpdatePhase::Kind;

constexpr int longestShownVersion = 32;
/// While it turns, the ring is open by this much.
constexpr double turningRing = 0.92;

/// A text from a feed on one line of bounded length.
QString shownVersion(const UpdatePhase& phase) {
    const QString version = phase.release ? toQString(phase.release->version).simplified() : QString();
    return version.size() > longestShownVersion ? version.left(longestShownVersion - 1) + u'…' : version;
}

/// About a dozen lines of the window; what is longer ends in an ellipsis.
QString boundedNotes(const UpdatePhase& phase) {
    constexpr int mostLines = 12;
    constexpr int lettersPerLine = 80;
    if (!phase.release || !phase.release->notes)
        return {};
    const QString notes = toQString(*phase.release->notes).trimmed();
    QStringList kept;
    int lines = 0;
    for (const QString& paragraph : notes.split(u'\n')) {
        const int needed = static_cast<int>(paragraph.size()) / lettersPerLine + 1;
        if (lines + needed > mostLines) {
            const QString rest = paragraph.left(static_cast<qsizetype>(mostLines - lines) * lettersPerLine);
            kept.append(rest.trimmed() + u'…');
            break;
        }
        lines += needed;
        kept.append(paragraph);
    }
    return kept.join(u'\n');
}

UpdateMarkModel mark(const UpdateState& state) {
    switch (state.phase.kind) {
    case Kind::current:
    case Kind::updated:
        return {.icon = "checkmark.seal", .ring = {}};
    case Kind::downloading:
        return {.icon = {}, .ring = state.progress};
    case Kind::installing:
        return {.icon = {}, .ring = turningRing, .turns = true};
    case Kind::failed:
        return {.icon = "exclamationmark.triangle.fill", .ring = {}};
    default:
        return {.icon = "arrow.down.circle", .ring = {}};
    }
}

/// The phase in words; nothing while idle.
QString phaseText(const UpdateState& state) {
    const QString version = shownVersion(state.phase);
    switch (state.phase.kind) {
    case Kind::idle:
        return {};
    case Kind::checking:
        return tr("Looking for a newer version…");
    case Kind::current:
        return tr("This is the latest version.");
    case Kind::updated:
        return tr("Updated. This is the latest version.");
    case Kind::available:
        return tr("Vantoro %1 is available").arg(version);
    case Kind::needsNewerSystem:
        return state.system == SystemKind::macos ? tr("Vantoro %1 needs a newer macOS").arg(version)
                                                 : tr("Vantoro %1 needs a newer system").arg(version);
    case Kind::downloading:
        return tr("Downloading %1 · %2%").arg(version, QString::number(std::lround(state.progress * 100)));
    case Kind::installing:
        return tr("Installing %1…").arg(version);
    case Kind::failed:
        return toQString(state.phase.message);
    }
    return {};
}

QString more(const UpdatePhase& phase) {
    if (phase.kind == Kind::failed)
        return toQString(phase.detail.value_or(""));
    return phase.kind == Kind::available ? boundedNotes(phase) : QString();
}

std::optional<UpdateCommand> commandFor(const UpdateState& state) {
    if (state.phase.kind == Kind::available)
        return state.isToReadOnly ? std::nullopt : std::optional(UpdateCommand::install);
    if (state.phase.kind == Kind::downloading)
        return state.canCancel ? std::optional(UpdateCommand::cancel) : std::nullopt;
    return state.phase.kind == Kind::failed ? std::optional(UpdateCommand::tryAgain) : std::nullopt;
}

/// Yesterday's and today's check by the local calendar; what is longer ago says nothing of when the next one is.
QString restingText(const UpdateState& state) {
    const auto day = [](double unixSeconds) {
        return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(unixSeconds))).date();
    };
    const qint64 daysAgo = state.lastCheck ? day(*state.lastCheck).daysTo(day(state.now)) : -1;
    if (daysAgo == 0)
        return tr("Checked today.");
    if (daysAgo == 1)
        return tr("Checked yesterday.");
    return state.checksAutomatically ? tr("Checks once a day.") : tr("Checks only when you ask.");
}

} // namespace

UpdateState updateState(const Updates& updates) {
    return {.phase = updates.hasUpdater() ? updates.phase() : UpdatePhase(),
            .progress = updates.progress(),
            .isAnnounced = updates.announcesUpdate(),
            .isToReadOnly = updates.isInformationOnly(),
            .canCancel = updates.canCancel(),
            .checksAutomatically = updates.automaticallyChecksForUpdates(),
            .lastCheck = updates.lastUpdateCheckDate(),
            .now = updates.now(),
            .currentVersion = toQString(updates.currentVersion()),
            .system = updates.system()};
}

QString updateWord(UpdateCommand command) {
    switch (command) {
    case UpdateCommand::check:
        return tr("Check Now");
    case UpdateCommand::install:
        return tr("Install");
    case UpdateCommand::tryAgain:
        return tr("Try Again");
    case UpdateCommand::cancel:
        return tr("Cancel");
    }
    return {};
}

void perform(UpdateCommand command, Updates& updates, UpdateOrigin origin) {
    switch (command) {
    case UpdateCommand::check:
        updates.check();
        break;
    case UpdateCommand::install:
        updates.install(origin);
        break;
    case UpdateCommand::tryAgain:
        updates.tryAgain(origin);
        break;
    case UpdateCommand::cancel:
        updates.cancel();
        break;
    }
}

UpdateLine updateChip(const UpdateState& state) {
    if (state.phase.kind == Kind::idle)
        return {};
    return {.mark = mark(state), .text = phaseText(state), .more = more(state.phase), .command = commandFor(state)};
}

UpdateLine updateRow(const UpdateState& state) {
    switch (state.phase.kind) {
    case Kind::available:
    case Kind::downloading:
    case Kind::installing:
        return updateChip(state);
    case Kind::checking:
        // The feed is asked anew before a known update is installed; the row that was clicked stays.
        return state.isAnnounced ? updateChip(state) : UpdateLine();
    case Kind::failed:
        return state.phase.release ? updateChip(state) : UpdateLine();
    default:
        return {};
    }
}

UpdatesGroupModel updatesGroup(const UpdateState& state) {
    const Kind kind = state.phase.kind;
    const QString asked = tr("Vantoro asks %1 whether there's a newer version. That's the only request it makes: "
                             "nothing about %2 goes with it, and nothing is downloaded until you click Install.")
                              .arg(toQString(Updates::host), toQString(systemWords(state.system).thisMachine));
    const QString about = more(state.phase);
    return {.checksAutomatically = state.checksAutomatically,
            .switchNote = state.checksAutomatically ? tr("once a day, and whenever you click Check Now")
                                                    : tr("only when you click Check Now"),
            .version = tr("Vantoro %1").arg(state.currentVersion),
            .status = kind == Kind::idle ? restingText(state) : phaseText(state),
            .command = commandFor(state).value_or(UpdateCommand::check),
            .canPress =
                kind != Kind::checking && kind != Kind::installing && (kind != Kind::downloading || state.canCancel),
            .note = about.isEmpty() ? asked : about + "\n\n" + asked};
}

QString privacyNote(bool asksForUpdates, const SystemWords& words) {
    const QString stays =
        asksForUpdates ? tr("Everything Vantoro measures stays on %1. Its only request is the update check above.")
                       : tr("Everything Vantoro measures stays on %1. It makes no network requests.");
    return stays.arg(toQString(words.thisMachine));
}

} // namespace vantoro
