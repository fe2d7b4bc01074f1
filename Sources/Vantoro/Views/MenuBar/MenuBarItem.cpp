#include "Views/MenuBar/MenuBarItem.h"

#include "Views/Shared/Words.h"

#include <QCursor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>

namespace vantoro {

namespace {

constexpr char trayService[] = "org.kde.StatusNotifierWatcher";
constexpr char trayPath[] = "/StatusNotifierWatcher";
constexpr int patienceMilliseconds = 3000;

/// Where every picture is sent to another process they are rationed.
double picturesPerSecond(MenuBarArrangement arrangement) {
    return arrangement == MenuBarArrangement::sideBySide ? 30 : 8;
}

QColor ink(MenuBarArrangement arrangement) {
    if (arrangement == MenuBarArrangement::sideBySide)
        return Qt::black; // a template: only its shape counts
    const QPalette palette = QGuiApplication::palette();
    const bool isDark = palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
    return trayInk(isDark, qEnvironmentVariable("XDG_CURRENT_DESKTOP"));
}

} // namespace

MenuBarItem::MenuBarItem(ViewContext& context, MenuBarArrangement arrangement, QObject* parent)
    : QObject(parent)
    , context_(context)
    , arrangement_(arrangement)
    , image_(arrangement, context.look.icons)
    , spin_(picturesPerSecond(arrangement))
    , watch_(
          context.hub, {&SensorHub::vitalsChanged, &SensorHub::verdictChanged, &SensorHub::formatChanged},
          [this] { refresh(); }, nullptr) {
    patience_.setSingleShot(true);
    connect(&patience_, &QTimer::timeout, this, [this] {
        // Only X11 knows another kind of tray; elsewhere the bar may still come.
        if (QGuiApplication::platformName() == QStringLiteral("wayland"))
            emit availabilityKnown(false);
        else
            create();
    });
    connect(&context.settings, &Settings::changed, this, [this](std::string_view key) {
        if (key == Setting::menuBarShowsRPM.key)
            refresh();
    });
    connect(&context.look.theme, &Theme::changed, this, [this] {
        refresh();
        showPicture();
    });
}

MenuBarItem::~MenuBarItem() = default;

int MenuBarItem::pictureMilliseconds(MenuBarArrangement arrangement) {
    return qRound(1000 / picturesPerSecond(arrangement));
}

void MenuBarItem::appear() {
    if (item_ != nullptr || patience_.isActive())
        return;
    // Qt settles on its kind of tray when the first icon is made: made before the bar is there, it would never show.
    if (arrangement_ == MenuBarArrangement::sideBySide || !QDBusConnection::sessionBus().isConnected()) {
        create();
        return;
    }
    waitForTray();
    askForTray();
}

void MenuBarItem::askForTray() {
    // The service may be up before the bar that it speaks for.
    QDBusMessage question =
        QDBusMessage::createMethodCall(trayService, trayPath, "org.freedesktop.DBus.Properties", "Get");
    question << QString(trayService) << QString("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question),
                                                     this); // owned by Qt as a child
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        call->deleteLater();
        if (reply.isValid() && reply.value().variant().toBool())
            create();
    });
}

void MenuBarItem::waitForTray() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    trayWatcher_ =
        std::make_unique<QDBusServiceWatcher>(QString(trayService), bus, QDBusServiceWatcher::WatchForRegistration);
    connect(trayWatcher_.get(), &QDBusServiceWatcher::serviceRegistered, this, &MenuBarItem::askForTray);
    bus.connect(QString(), trayPath, trayService, "StatusNotifierHostRegistered", this, SLOT(create()));
    patience_.start(patienceMilliseconds);
}

void MenuBarItem::create() {
    if (item_ != nullptr)
        return;
    patience_.stop();
    trayWatcher_.reset();
    item_ = std::make_unique<QSystemTrayIcon>();
    connect(item_.get(), &QSystemTrayIcon::activated, this, &MenuBarItem::activated);
    spin_.appear(context_.look.clock.now());
    refresh();
    showPicture();
    item_->show();
    if (model_.variant == MenuBarVariant::fan && item_->isVisible())
        context_.look.clock.run(*this);
    // Queued: who made the item hears of it from the event loop in every case.
    QMetaObject::invokeMethod(
        this, [this] { emit availabilityKnown(QSystemTrayIcon::isSystemTrayAvailable()); }, Qt::QueuedConnection);
}

QRect MenuBarItem::geometry() const {
    return item_ != nullptr ? item_->geometry() : QRect();
}

void MenuBarItem::refresh() {
    if (item_ == nullptr)
        return;
    MenuBarModel model = menuBarModel(context_.hub, context_.settings.value(Setting::menuBarShowsRPM),
                                      context_.look.theme.reducesMotion());
    if (model == model_)
        return;
    const bool looksSame = model.symbol == model_.symbol && model.figure == model_.figure;
    if (model.tooltip != model_.tooltip)
        item_->setToolTip(trayText(model.tooltip));
    model_ = std::move(model);
    if (!looksSame)
        showPicture();
    if (model_.secondsPerTurn && isShown())
        context_.look.clock.run(*this);
}

void MenuBarItem::showPicture() {
    if (item_ != nullptr)
        item_->setIcon(image_.icon(model_, spin_.frame(), ink(arrangement_)));
}

bool MenuBarItem::advance(double now) {
    if (!isShown())
        return false;
    const bool isTurning = spin_.isTurning(model_.secondsPerTurn);
    if (spin_.advance(now, model_.secondsPerTurn))
        showPicture();
    return isTurning || spin_.frame() != 0;
}

void MenuBarItem::activated(QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::DoubleClick || reason == QSystemTrayIcon::MiddleClick) {
        emit openRequested();
        return;
    }
    const QRect place = geometry();
    emit panelRequested(place.isValid() ? QPoint(place.center().x(), place.bottom()) : QCursor::pos());
}

} // namespace vantoro
