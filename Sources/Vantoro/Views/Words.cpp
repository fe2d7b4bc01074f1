#include "Views/Words.h"

namespace vantoro {

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString tr(const char* text, int count) {
    return QCoreApplication::translate("vantoro", text, nullptr, count);
}

} // namespace vantoro
