#include "Views/Shell/MainWindow.h"

#include "Model/Updates/Updates.h"
#include "Views/Report/ReportSheet.h"
#include "Views/Settings/SettingsModel.h"

#include <QCloseEvent>
#include <QPainter>
#include <QShortcut>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <QWindow>

namespace vantoro {

MainWindow::MainWindow(ViewContext& context, Simulation simulation, std::function<void()> start)
    : PaintedWidget(context.look)
    , context_(context)
    , start_(std::move(start))
    , simulation_(simulation)
    , bar_(new ControlBar(context.look, this))
    , content_(new QWidget(this))
    , stack_(new QStackedLayout(content_)) {
    setObjectName("main");
    setMinimumSize(smallestSize);
    auto* const column = new QVBoxLayout(this); // owned by Qt as a child
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar_);
    column->addWidget(content_, 1);
    connect(bar_, &ControlBar::paneChosen, this, &MainWindow::showPane);
    connect(bar_, &ControlBar::settingsRequested, this, &MainWindow::settingsRequested);
    connect(&context_.hub, &SensorHub::isReadyChanged, this, &MainWindow::refreshReadiness);
    if (Updates* const updates = context_.updates) {
        connect(updates, &Updates::changed, this, &MainWindow::refreshUpdate);
        connect(bar_, &ControlBar::updatePressed, this,
                [updates](UpdateCommand command) { perform(command, *updates, UpdateOrigin::controlBar); });
        refreshUpdate();
    }
    addShortcuts();
    restoreGeometryOf();
}

MainWindow::~MainWindow() = default;

void MainWindow::addShortcuts() {
    const auto add = [this](const QKeySequence& keys, auto action) {
        auto* const shortcut = new QShortcut(keys, this); // owned by Qt as a child
        shortcut->setAutoRepeat(false);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    for (const PaneKind& kind : panes)
        add(QKeySequence(Qt::CTRL | kind.key), [this, &kind] { showPane(kind.pane); });
    add(QKeySequence(Qt::CTRL | Qt::Key_Comma), [this] { emit settingsRequested(); });
    add(QKeySequence(Qt::CTRL | Qt::Key_E), [this] { openReport(); });
    add(QKeySequence(Qt::CTRL | Qt::Key_W), [this] { close(); });
    add(QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { emit quitRequested(); });
}

void MainWindow::restoreGeometryOf() {
    const QByteArray stored =
        QByteArray::fromBase64(QByteArray::fromStdString(context_.settings.value(Setting::windowGeometry)));
    if (stored.isEmpty() || !restoreGeometry(stored))
        resize(usualSize);
}

// Made when it is first looked at: most panes are never seen by who only wants the verdict.
QWidget* MainWindow::view(Pane pane) {
    const auto place = static_cast<std::size_t>(pane);
    QWidget*& view = views_.at(place);
    if (view == nullptr) {
        view = panes.at(place).make(context_, content_, [this] { openReport(); });
        if (const auto* const now = qobject_cast<NowView*>(view))
            connect(now, &NowView::sensorsRequested, this, [this] { showPane(Pane::sensors); });
        stack_->addWidget(view);
    }
    return view;
}

void MainWindow::showPane(Pane pane) {
    pane_ = pane;
    bar_->showPane(pane);
    if (context_.hub.isReady())
        stack_->setCurrentWidget(view(pane));
}

void MainWindow::refreshReadiness() {
    const Badge mark = badge(context_.hub, simulation_);
    bar_->showBadge(mark);
    setWindowTitle(vantoro::windowTitle(mark));
    content_->setVisible(context_.hub.isReady());
    showPane(pane_);
}

void MainWindow::refreshUpdate() {
    bar_->showUpdate(updateChip(updateState(*context_.updates)));
}

void MainWindow::openReport() {
    const bool hasVerdict = context_.hub.isReady() && context_.hub.measuring() == Measuring::done;
    if (!hasVerdict || findChild<ReportSheet*>() != nullptr)
        return;
    auto* const sheet = new ReportSheet(context_.look, *this, context_.hub); // deletes itself once closed
    sheet->openReport();
}

void MainWindow::raiseToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

Description MainWindow::describe() {
    return {.role = QAccessible::Window, .name = QWidget::windowTitle()};
}

void MainWindow::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), color(Tone::window));
    if (!std::exchange(wasPainted_, true))
        QMetaObject::invokeMethod(this, &MainWindow::firstSeen, Qt::QueuedConnection);
}

void MainWindow::showEvent(QShowEvent* event) {
    if (start_)
        std::exchange(start_, nullptr)();
    refreshReadiness();
    windowHandle()->installEventFilter(this);
    updateCanBeSeen();
    PaintedWidget::showEvent(event);
}

void MainWindow::hideEvent(QHideEvent* event) {
    updateCanBeSeen();
    PaintedWidget::hideEvent(event);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    context_.settings.store(Setting::windowGeometry, saveGeometry().toBase64().toStdString());
    event->accept();
}

// The window system tells of a window that nobody can see any more by "exposing" it with nothing.
bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == windowHandle() && (event->type() == QEvent::Expose || event->type() == QEvent::WindowStateChange ||
                                      event->type() == QEvent::Hide || event->type() == QEvent::Show))
        QMetaObject::invokeMethod(this, &MainWindow::updateCanBeSeen, Qt::QueuedConnection);
    return PaintedWidget::eventFilter(watched, event);
}

void MainWindow::updateCanBeSeen() {
    const bool canBeSeen = isVisible() && !isMinimized() && windowHandle() != nullptr && windowHandle()->isExposed();
    if (canBeSeen == canBeSeen_)
        return;
    canBeSeen_ = canBeSeen;
    emit canBeSeenChanged();
}

} // namespace vantoro
