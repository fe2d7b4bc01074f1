// What several views say alike, and how the model's texts become the interface's.
#pragma once

#include "Model/Records/Verdict.h"

#include <optional>
#include <QCoreApplication>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <string_view>
#include <vector>

namespace vantoro {

struct Core;
class SensorHub;

/// A text of the model, which is UTF-8.
QString toQString(std::string_view text);

/// "8 cores", "1 core".
QString alikeCores(int count);
/// "6 performance · 6 efficiency", by the names that the system has for its kinds of cores; "8 cores" where all are
/// alike.
QString coreCounts(const std::vector<Core>& cores);

/// A text for the tray's tooltip, which some desktops read as mark-up and others do not: signs that open mark-up are
/// replaced by ones that look like them.
QString trayText(const QString& text);

/// A text of the interface in the user's language, English at the source. Use as tr("…") within a view model and
/// as vantoro::tr("…") within a class, which may have a tr of its own with texts of its own.
QString tr(const char* text, int count = -1);

/// From now on texts come from the first of the folders that has a catalogue for the locale, "vantoro_de.qm" say, and
/// are English where none has. Whether one was found.
bool installCatalogue(const QLocale& locale, const QStringList& folders);

/// What the readings come from on this system, as people know it there. The defaults are the Mac's.
struct SourceNames {
    /// Whose words are spoken.
    SystemKind system = SystemKind::macos;
    /// The program that prints the process list, as it is run and for short.
    QString stream = "/usr/bin/top";
    QString streamForShort = "top";
    /// Where fans, temperatures and power come from, and where loads and frequencies.
    QString sensors = "SMC";
    QString reports = "IOReport";
    /// What each choice costs is the same on all its machines, and the notes say it.
    bool costsAreStated = true;

    bool operator==(const SourceNames&) const = default;
};

/// The sources of what the hub shows: a recording's are its own system's.
SourceNames sourcesShown(const SensorHub& hub, const SourceNames& own);

/// The line over a headline: how hard the machine works, in pips and in a word, and for how long.
struct EyebrowModel {
    /// The level's raw value; none while a reading is awaited.
    std::optional<int> level;
    int heatStop = 0;
    QString label;
    bool isCritical = false;
    /// "for 6 minutes"; empty below three quarters of a minute.
    QString duration;
    /// "Loud, 4 of 5"
    QString spokenValue;

    bool operator==(const EyebrowModel&) const = default;
};

EyebrowModel eyebrowModel(const Verdict& verdict);
/// While there is no verdict yet.
EyebrowModel measuringEyebrow();

/// The level that the verdict's label names: of its fans or its heat or, where it speaks of work, of that.
StressLevel namedLevel(const Verdict& verdict);
/// The heat stop of everything that is coloured by what the verdict names, but the last one when it is critical.
int verdictHeatStop(const Verdict& verdict);
/// The same for what shows the fans, the chip's heat or the busy share themselves.
int dialHeatStop(const Verdict& verdict);

} // namespace vantoro
