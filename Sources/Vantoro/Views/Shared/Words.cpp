#include "Views/Shared/Words.h"

namespace vantoro {

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString trayText(const QString& text) {
    QString shown = text;
    return shown.replace(u'<', QChar(0x2039)).replace(u'>', QChar(0x203A)).replace(u'&', QChar(0xFF06));
}

QString tr(const char* text, int count) {
    return QCoreApplication::translate("vantoro", text, nullptr, count);
}

} // namespace vantoro
