#include "Model/Live/Settings.h"

#include "Model/Text/Numbers.h"
#include "Platform/SettingsStore.h"

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
        return value ? std::visit([](const auto& held) { return variant(held); }, *value) : QVariant();
    }
    void setValue(const QString& key, const QVariant& value) {
        if (ofQt_)
            ofQt_->setValue(key, value);
        else if (value.typeId() == QMetaType::Bool)
            ofSystem_->store(key.toStdString(), value.toBool());
        else if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Int)
            ofSystem_->store(key.toStdString(), value.toDouble());
        else
            ofSystem_->store(key.toStdString(), value.toString().toStdString());
    }
    void remove(const QString& key) { ofQt_ ? ofQt_->remove(key) : ofSystem_->forget(key.toStdString()); }
    void sync() { ofQt_ ? ofQt_->sync() : ofSystem_->sync(); }

private:
    static QVariant variant(const std::string& text) { return toQString(text); }
    static QVariant variant(double number) { return number; }
    static QVariant variant(bool flag) { return flag; }

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

void Settings::storeText(std::string_view key, const std::string& text) {
    store_->setValue(toQString(key), toQString(text));
}

void Settings::forget(std::string_view key) {
    store_->remove(toQString(key));
}

void Settings::sync() {
    store_->sync();
}

double Settings::sampleInterval() const {
    const double seconds = storedNumber("sampleInterval").value_or(0);
    return seconds > 0 ? seconds : 2.0;
}

void Settings::setSampleInterval(double seconds) {
    store_->setValue("sampleInterval", seconds);
}

bool Settings::smoothUpdates() const {
    return storedFlag("smoothUpdates").value_or(true);
}

void Settings::setSmoothUpdates(bool on) {
    store_->setValue("smoothUpdates", on);
}

bool Settings::spinRotors() const {
    return storedFlag("spinRotors").value_or(true);
}

void Settings::setSpinRotors(bool on) {
    store_->setValue("spinRotors", on);
}

std::string Settings::temperatureUnit() const {
    return storedText("temperatureUnit").value_or("C");
}

void Settings::setTemperatureUnit(const std::string& unit) {
    store_->setValue("temperatureUnit", toQString(unit));
}

bool Settings::menuBarShowsRPM() const {
    return storedFlag("menuBarShowsRPM").value_or(false);
}

void Settings::setMenuBarShowsRPM(bool on) {
    store_->setValue("menuBarShowsRPM", on);
}

double Settings::historyMinutes() const {
    const double minutes = storedNumber("historyMinutes").value_or(0);
    return minutes > 0 ? minutes : 30;
}

void Settings::setHistoryMinutes(double minutes) {
    store_->setValue("historyMinutes", minutes);
}

std::string Settings::processMonitorMode() const {
    return storedText("processMonitorMode").value_or("auto");
}

void Settings::setProcessMonitorMode(const std::string& mode) {
    store_->setValue("processMonitorMode", toQString(mode));
}

std::string Settings::appearance() const {
    return storedText("appearance").value_or("system");
}

void Settings::setAppearance(const std::string& name) {
    store_->setValue("appearance", toQString(name));
}

std::string Settings::windowGeometry() const {
    return storedText("windowGeometry").value_or("");
}

void Settings::setWindowGeometry(const std::string& geometry) {
    store_->setValue("windowGeometry", toQString(geometry));
}

bool Settings::toldOfMissingTray() const {
    return storedFlag("toldOfMissingTray").value_or(false);
}

void Settings::setToldOfMissingTray(bool told) {
    store_->setValue("toldOfMissingTray", told);
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
