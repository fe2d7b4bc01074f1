// What every view model needs to turn the model's texts into the interface's.
#pragma once

#include <QCoreApplication>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <string_view>

namespace vantoro {

/// A text of the model, which is UTF-8.
QString toQString(std::string_view text);

/// A text for the tray's tooltip, which some desktops read as mark-up and others do not: signs that open mark-up are
/// replaced by ones that look like them.
QString trayText(const QString& text);

/// A text of the interface in the user's language, English at the source. Use as tr("…") within a view model and
/// as vantoro::tr("…") within a class, which may have a tr of its own with texts of its own.
QString tr(const char* text, int count = -1);

/// From now on texts come from the first of the folders that has a catalogue for the locale, "vantoro_de.qm" say, and
/// are English where none has. Whether one was found.
bool installCatalogue(const QLocale& locale, const QStringList& folders);

} // namespace vantoro
