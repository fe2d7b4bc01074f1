#include "Views/Shell/LooksFollower.h"

#include "Design/Theme.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QEvent>
#include <QFontInfo>
#include <QPalette>

namespace vantoro {

namespace {

constexpr auto portalService = "org.freedesktop.portal.Desktop";
constexpr auto portalPath = "/org/freedesktop/portal/desktop";
constexpr auto settingsInterface = "org.freedesktop.portal.Settings";
constexpr auto appearanceSpace = "org.freedesktop.appearance";
constexpr auto interfaceSpace = "org.gnome.desktop.interface";

struct PortalKey {
    const char* space;
    const char* key;
};

constexpr PortalKey portalKeys[]{{appearanceSpace, "color-scheme"},
                                 {appearanceSpace, "contrast"},
                                 {appearanceSpace, "accent-color"},
                                 {interfaceSpace, "enable-animations"}};

/// Portals wrap a value once or twice.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

/// Three shares of red, green and blue; a desktop without an accent says so by one beyond their range.
std::optional<SystemLooks::Accent> accentFrom(const QVariant& value) {
    if (!value.canConvert<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::StructureType || argument.currentSignature() != "(ddd)")
        return {};
    SystemLooks::Accent accent;
    argument.beginStructure();
    argument >> accent.red >> accent.green >> accent.blue;
    argument.endStructure();
    const auto isShare = [](double part) { return part >= 0 && part <= 1; };
    return isShare(accent.red) && isShare(accent.green) && isShare(accent.blue) ? std::optional(accent) : std::nullopt;
}

void take(SystemLooks::State& state, const QString& key, const QVariant& value) {
    constexpr unsigned prefersDark = 1;
    constexpr unsigned prefersLight = 2;
    if (key == "color-scheme") {
        const unsigned scheme = value.toUInt();
        state.isDark = scheme == prefersDark    ? std::optional(true)
                       : scheme == prefersLight ? std::optional(false)
                                                : std::nullopt;
    } else if (key == "contrast") {
        state.increasesContrast = value.toUInt() == 1;
    } else if (key == "enable-animations") {
        state.reducesMotion = !value.toBool();
    } else if (key == "accent-color") {
        state.accent = accentFrom(value);
    }
}

bool isDarkPalette() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

/// The desktop's font size against the size that the interface is drawn for.
double systemTextScale() {
    constexpr double nominalPixels = 13.34; // 10 points at 96 per inch
    return QFontInfo(QApplication::font()).pixelSize() / nominalPixels;
}

} // namespace

LooksFollower::LooksFollower(Theme& theme, std::shared_ptr<SystemLooks> source, QObject* parent)
    : QObject(parent), theme_(theme), source_(std::move(source)) {
    qApp->installEventFilter(this);
    if (source_)
        source_->watch([this] { follow(); });
    else
        askPortal();
    follow();
}

LooksFollower::~LooksFollower() {
    if (source_)
        source_->watch({});
}

// Asked without waiting: a portal that has to be started first takes longer than the first frame may.
void LooksFollower::askPortal() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(portalService, portalPath, settingsInterface, "SettingChanged", this,
                SLOT(portalSettingChanged(QDBusMessage)));
    for (const PortalKey& wanted : portalKeys) {
        QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, "Read");
        call << QString(wanted.space) << QString(wanted.key);
        auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this); // owned by Qt as a child
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, key = QString(wanted.key)] {
            const QDBusPendingReply<QVariant> reply = *watcher;
            if (!reply.isError()) {
                take(portal_, key, unwrapped(reply.argumentAt<0>()));
                follow();
            }
            watcher->deleteLater();
        });
    }
}

// As a message: a slot with a variant among its parameters is not connected by every version of Qt 6.
void LooksFollower::portalSettingChanged(const QDBusMessage& message) {
    const QList<QVariant> parts = message.arguments();
    if (parts.size() < 3 || (parts[0].toString() != appearanceSpace && parts[0].toString() != interfaceSpace))
        return;
    take(portal_, parts[1].toString(), unwrapped(parts[2]));
    follow();
}

void LooksFollower::applyAppearance(const QString& name) {
    chosen_ = name;
    if (source_)
        source_->choose(name == "dark" ? std::optional(true) : name == "light" ? std::optional(false) : std::nullopt);
    follow();
}

bool LooksFollower::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && (event->type() == QEvent::ApplicationPaletteChange ||
                            event->type() == QEvent::ApplicationFontChange || event->type() == QEvent::ThemeChange))
        follow();
    return QObject::eventFilter(watched, event);
}

void LooksFollower::follow() {
    const SystemLooks::State state = source_ ? source_->state() : portal_;
    const bool dark = chosen_ == "dark" || (chosen_ != "light" && state.isDark.value_or(isDarkPalette()));
    theme_.setAppearance(dark ? Theme::Appearance::dark : Theme::Appearance::light);
    theme_.setReducesMotion(state.reducesMotion.value_or(false));
    theme_.setIncreasesContrast(state.increasesContrast.value_or(false));
    theme_.setAccent(state.accent ? QColor::fromRgbF(static_cast<float>(state.accent->red),
                                                     static_cast<float>(state.accent->green),
                                                     static_cast<float>(state.accent->blue))
                                  : QColor());
    theme_.setTextScale(systemTextScale());
}

} // namespace vantoro
