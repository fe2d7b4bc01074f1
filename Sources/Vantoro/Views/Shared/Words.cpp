#include "Views/Shared/Words.h"

#include <algorithm>
#include <QTranslator>

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

bool installCatalogue(const QLocale& locale, const QStringList& folders) {
    auto* const catalogue = new QTranslator(QCoreApplication::instance()); // owned by Qt as a child
    const auto holds = [&](const QString& folder) { return catalogue->load(locale, "vantoro", "_", folder); };
    return std::any_of(folders.begin(), folders.end(), holds) && QCoreApplication::installTranslator(catalogue);
}

} // namespace vantoro
