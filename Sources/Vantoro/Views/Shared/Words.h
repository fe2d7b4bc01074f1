// What every view model needs to turn the model's texts into the interface's.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <string_view>

namespace vantoro {

/// A text of the model, which is UTF-8.
QString toQString(std::string_view text);

/// A text for the tray's tooltip, which some desktops read as mark-up and others do not: signs that open mark-up are
/// replaced by ones that look like them.
QString trayText(const QString& text);

/// A text of the interface in the user's language, English at the source. Use as tr("…") within a view model.
QString tr(const char* text, int count = -1);

} // namespace vantoro
