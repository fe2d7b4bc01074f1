// What every view model needs to turn the model's texts into the interface's.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <string_view>

namespace vantoro {

/// A text of the model, which is UTF-8.
QString toQString(std::string_view text);

/// A text of the interface in the user's language, English at the source. Use as tr("…") within a view model.
QString tr(const char* text, int count = -1);

} // namespace vantoro
