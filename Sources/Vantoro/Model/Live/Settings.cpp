#include "Model/Live/Settings.h"

#include "Model/Text/Numbers.h"

#include <cmath>
#include <QDateTime>
#include <QLocale>
#include <QSettings>

namespace vantoro {

namespace {

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The locale of texts on screen. The C locale is what a machine has that was never told its language: people there
/// read English.
QLocale userLocale() {
    const QLocale system = QLocale::system();
    return system.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : system;
}

QTime localTime(UnixSeconds instant) {
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::floor(instant * 1000))).time();
}

/// The format with each letter outside its quoted texts as `replace(letter, following)` gives it.
template <class Replace>
QString rewritten(const QString& format, Replace replace) {
    QString result;
    bool isQuoted = false;
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar letter = format[i];
        isQuoted = isQuoted != (letter == u'\'');
        result += isQuoted ? QString(letter) : replace(letter, i + 1 < format.size() ? format[i + 1] : QChar());
    }
    return result;
}

/// The locale's long form is its standard one with the time zone added.
QString withoutZone(const QString& format) {
    QString result = rewritten(
        format, [](QChar letter, QChar) { return letter == u't' || letter == u'z' ? QString() : QString(letter); });
    return result.remove("()").remove("[]").trimmed();
}

constexpr QChar periodMark(u'\x1');

/// The format with a mark before and after its "AP" or "A".
QString withPeriodMarked(const QString& format) {
    return rewritten(format, [](QChar letter, QChar following) {
        QString marked(letter);
        if (letter.toLower() == u'a') {
            marked.prepend(periodMark);
            if (following.toLower() != u'p')
                marked.append(periodMark);
        } else if (letter.toLower() == u'p') {
            marked.append(periodMark);
        }
        return marked;
    });
}

} // namespace

/// The system's own store where it has one, else Qt's.
class Settings::Store {
public:
    explicit Store(std::unique_ptr<SettingsStore> ofSystem) : ofSystem_(std::move(ofSystem)) {}
    explicit Store(std::unique_ptr<QSettings> ofQt) : ofQt_(std::move(ofQt)) {}

    QVariant value(const QString& key) const {
        if (ofQt_)
            return ofQt_->value(key);
        const auto value = ofSystem_->value(key.toStdString());
        return value ? variant(*value) : QVariant();
    }
    void setValue(const QString& key, const SettingsStore::Value& value) {
        ofQt_ ? ofQt_->setValue(key, variant(value)) : ofSystem_->store(key.toStdString(), value);
    }
    void remove(const QString& key) { ofQt_ ? ofQt_->remove(key) : ofSystem_->forget(key.toStdString()); }
    void sync() { ofQt_ ? ofQt_->sync() : ofSystem_->sync(); }

private:
    static QVariant variant(const SettingsStore::Value& value) {
        const auto* const text = std::get_if<std::string>(&value);
        return text != nullptr ? toQString(*text)
                               : std::visit([](const auto& held) { return QVariant::fromValue(held); }, value);
    }

    std::unique_ptr<SettingsStore> ofSystem_;
    std::unique_ptr<QSettings> ofQt_;
};

Settings::Settings() {
    std::unique_ptr<SettingsStore> ofSystem = systemSettingsStore();
    store_ = ofSystem ? std::make_unique<Store>(std::move(ofSystem))
                      : std::make_unique<Store>(std::make_unique<QSettings>("Brisel", "Vantoro"));
}

Settings::Settings(const std::string& iniFile)
    : store_(std::make_unique<Store>(std::make_unique<QSettings>(toQString(iniFile), QSettings::IniFormat))) {}

Settings::Settings(std::unique_ptr<SettingsStore> store) : store_(std::make_unique<Store>(std::move(store))) {}

Settings::~Settings() = default;

std::optional<std::string> Settings::storedText(std::string_view key) const {
    const QVariant value = store_->value(toQString(key));
    if (!value.isValid() || !value.canConvert<QString>())
        return std::nullopt;
    return value.toString().toStdString();
}

std::optional<double> Settings::storedNumber(std::string_view key) const {
    const std::optional<std::string> text = storedText(key);
    return text ? parseDecimal(*text) : std::nullopt;
}

std::optional<bool> Settings::storedFlag(std::string_view key) const {
    const std::optional<std::string> text = storedText(key);
    if (text == "true" || text == "1")
        return true;
    if (text == "false" || text == "0")
        return false;
    return std::nullopt;
}

void Settings::store(std::string_view key, const SettingsStore::Value& value) {
    store_->setValue(toQString(key), value);
    emit changed(key);
}

void Settings::forget(std::string_view key) {
    store_->remove(toQString(key));
    emit changed(key);
}

void Settings::sync() {
    store_->sync();
}

double Settings::value(const NumberSetting& setting) const {
    const double number = storedNumber(setting.key).value_or(0);
    return number > 0 ? number : setting.byDefault;
}

bool Settings::value(const FlagSetting& setting) const {
    return storedFlag(setting.key).value_or(setting.byDefault);
}

std::string Settings::value(const TextSetting& setting) const {
    return storedText(setting.key).value_or(std::string(setting.byDefault));
}

std::optional<std::string> SettingsFormatContext::grouped(std::int64_t number) const {
    return userLocale().toString(static_cast<qlonglong>(number)).toStdString();
}

std::string SettingsFormatContext::timeOfDay(UnixSeconds instant) const {
    return userLocale().toString(localTime(instant), QLocale::ShortFormat).toStdString();
}

std::string SettingsFormatContext::timeWithSeconds(UnixSeconds instant) const {
    const QLocale locale = userLocale();
    return locale.toString(localTime(instant), withoutZone(locale.timeFormat(QLocale::LongFormat))).toStdString();
}

std::string SettingsFormatContext::clockFace(UnixSeconds instant) const {
    const QLocale locale = userLocale();
    const QString format = locale.timeFormat(QLocale::ShortFormat);
    // The period stays in the format, since without it the hours would be those of a 24-hour clock, and is cut out of
    // what was written.
    const QString written = locale.toString(localTime(instant), withPeriodMarked(format));
    const qsizetype begin = written.indexOf(periodMark);
    const qsizetype end = written.lastIndexOf(periodMark);
    return (begin < 0 ? written : written.left(begin) + written.mid(end + 1)).trimmed().toStdString();
}

} // namespace vantoro
