#include "Views/Settings/SettingsView.h"

#include "Design/Controls/Button.h"
#include "Design/Controls/SegmentedControl.h"
#include "Model/Updates/Updates.h"
#include "Views/Settings/PopUpButton.h"
#include "Views/Settings/StepSlider.h"
#include "Views/Settings/Switch.h"
#include "Views/Shared/Words.h"

#include <QKeyEvent>
#include <QPainter>

namespace vantoro {

namespace {
constexpr QSize windowSize(600, 784);
constexpr int lowestWindow = 360;
constexpr int buttonHeight = 26;
constexpr double secondsPerMinute = 60;
} // namespace

SettingsView::SettingsView(ViewContext& context, SourceNames names, QWidget* parent)
    : View(context, parent), names_(std::move(names)), form_(new SettingsForm(context.look, this)) {
    setWindowFlag(Qt::Window);
    setWindowTitle(vantoro::tr("Settings"));
    auto* const layout = new QVBoxLayout(this); // owned by Qt as a child
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form_);
    addSampleRate();
    addMenuBar();
    addGeneral();
    addProcesses();
    addAbout();
    const bool asksForUpdates = context.updates != nullptr && context.updates->hasUpdater();
    if (asksForUpdates)
        addUpdates(*context.updates);
    form_->setLastWord(privacyNote(asksForUpdates));
    SettingsView::themeChanged();
    resize(width(), windowSize.height());
    // The figures of the program itself follow each sample.
    shows({&SensorHub::snapshotChanged, &SensorHub::processSourceChanged, &SensorHub::isReadyChanged,
           &SensorHub::sensorsAvailableChanged});
    present(model());
}

void SettingsView::addSampleRate() {
    SettingsGroup& group = form_->addGroup(vantoro::tr("Sample rate"));
    rateRow_ = &group.addRow({});
    rateRow_->setTitleStyle(Type::body.medium());
    rate_ = new StepSlider(look(), static_cast<int>(sampleRates.size()), rateRow_);
    rate_->setSpokenName(vantoro::tr("Sample rate"));
    rate_->setCaption(0, vantoro::tr("Slowest"));
    rate_->setCaption(defaultRateIndex, vantoro::tr("Default"));
    rate_->setCaption(static_cast<int>(sampleRates.size()) - 1, vantoro::tr("Fastest"));
    rateRow_->setWideControl(*rate_, StepSlider::ringMargin);
    QStringList rateNotes;
    for (int index = 0; index < static_cast<int>(sampleRates.size()); ++index)
        rateNotes.append(rateNote(index, names_.costsAreStated));
    rateRow_->keepRoomForNotes(rateNotes);
    connect(rate_, &StepSlider::moved, this, [this](int index) {
        context().settings.setSampleInterval(sampleRates.at(static_cast<std::size_t>(index)));
        hub().restartTimer();
        refresh();
    });

    motionRow_ = &group.addRow(vantoro::tr("Motion of readings"));
    motion_ = new SegmentedControl(look(), SegmentedControl::Meaning::choices, motionChoiceTexts(), motionRow_);
    motion_->setSpokenName(motionRow_->title());
    motionRow_->setControl(*motion_, SegmentedControl::ringMargin);
    connect(motion_, &SegmentedControl::chosen, this, [this](int index) {
        context().settings.setSmoothUpdates(index == 0);
        refresh();
    });

    rotorRow_ = &group.addRow(vantoro::tr("Spin the fan rotors"));
    rotors_ = new Switch(look(), rotorRow_);
    rotors_->setSpokenName(rotorRow_->title());
    rotorRow_->setControl(*rotors_, Switch::ringMargin);
    connect(rotors_, &Switch::toggled, this, [this](bool on) {
        context().settings.setSpinRotors(on);
        refresh();
        emit rotorSettingChanged();
    });
    ownCostRow_ = &group.addRow(vantoro::tr("Vantoro itself"));
}

void SettingsView::addMenuBar() {
    menuBarRow_ = &form_->addGroup(vantoro::tr("Menu bar")).addRow({});
    menuBar_ = new Switch(look(), menuBarRow_);
    menuBarRow_->setControl(*menuBar_, Switch::ringMargin);
    connect(menuBar_, &Switch::toggled, this, [this](bool on) {
        context().settings.setMenuBarShowsRPM(on);
        refresh();
        emit menuBarSettingChanged();
    });
}

void SettingsView::addGeneral() {
    SettingsGroup& group = form_->addGroup(vantoro::tr("General"));
    SettingsRow& historyRow = group.addRow(vantoro::tr("Keep history for"));
    history_ = new PopUpButton(look(), historyChoiceTexts(), &historyRow);
    history_->setSpokenName(historyRow.title());
    historyRow.setControl(*history_, PopUpButton::ringMargin);
    connect(history_, &PopUpButton::chosen, this, [this](int index) {
        const double minutes = historyChoicesMinutes.at(static_cast<std::size_t>(index));
        context().settings.setHistoryMinutes(minutes);
        hub().history().setRetention(minutes * secondsPerMinute);
        refresh();
    });

    SettingsRow& appearanceRow = group.addRow(vantoro::tr("Appearance"));
    appearance_ =
        new SegmentedControl(look(), SegmentedControl::Meaning::choices, appearanceChoiceTexts(), &appearanceRow);
    appearance_->setSpokenName(appearanceRow.title());
    appearanceRow.setControl(*appearance_, SegmentedControl::ringMargin);
    connect(appearance_, &SegmentedControl::chosen, this, [this](int index) {
        const char* const name = appearanceChoices.at(static_cast<std::size_t>(index));
        context().settings.setAppearance(name);
        refresh();
        emit appearanceChanged(name);
    });

    SettingsRow& unitRow = group.addRow(vantoro::tr("Temperature"));
    unit_ = new SegmentedControl(look(), SegmentedControl::Meaning::choices, unitChoiceTexts(), &unitRow);
    unit_->setSpokenName(unitRow.title());
    unitRow.setControl(*unit_, SegmentedControl::ringMargin);
    connect(unit_, &SegmentedControl::chosen, this, [this](int index) {
        context().settings.setTemperatureUnit(unitChoices.at(static_cast<std::size_t>(index)));
        // The verdict and the facts have the unit in their words.
        hub().publishInNewFormat();
        refresh();
    });
}

void SettingsView::addProcesses() {
    SettingsGroup& group = form_->addGroup(vantoro::tr("Processes"));
    processListRow_ = &group.addRow(vantoro::tr("Process list"));
    processList_ = new PopUpButton(look(), processListChoiceTexts(), processListRow_);
    processList_->setSpokenName(processListRow_->title());
    processListRow_->setControl(*processList_, PopUpButton::ringMargin);
    connect(processList_, &PopUpButton::chosen, this, [this](int index) {
        context().settings.setProcessMonitorMode(processListChoices.at(static_cast<std::size_t>(index)));
        hub().restartTimer();
        refresh();
    });
    readingRow_ = &group.addRow(vantoro::tr("Currently reading"));
}

void SettingsView::addAbout() {
    SettingsGroup& group = form_->addGroup(vantoro::tr("About this Mac"));
    machineRow_ = &group.addRow(vantoro::tr("Machine"));
    coresRow_ = &group.addRow(vantoro::tr("Cores"));
    sensorsRow_ = &group.addRow(vantoro::tr("Sensors found"));
    sourcesRow_ = &group.addRow(vantoro::tr("Data sources"));
}

void SettingsView::addUpdates(Updates& updates) {
    updates_ = &form_->addGroup(vantoro::tr("Updates"));
    automaticRow_ = &updates_->addRow(vantoro::tr("Check for updates automatically"));
    automatic_ = new Switch(look(), automaticRow_);
    automatic_->setSpokenName(automaticRow_->title());
    automaticRow_->setControl(*automatic_, Switch::ringMargin);
    connect(automatic_, &Switch::toggled, &updates, &Updates::setAutomaticallyChecksForUpdates);

    versionRow_ = &updates_->addRow({});
    update_ = new Button(look(), Button::Kind::bordered, QString(), versionRow_);
    update_->setDrawnHeight(buttonHeight);
    versionRow_->setControl(*update_, Button::ringMargin);
    versionRow_->setRoomAboveNote(4);
    connect(update_, &Button::clicked, this,
            [this, &updates] { perform(shownUpdates_.command, updates, UpdateOrigin::settings); });
    connect(&updates, &Updates::changed, this, &SettingsView::refreshUpdates);
    refreshUpdates();
}

void SettingsView::refreshUpdates() {
    const UpdatesGroupModel model = updatesGroup(updateState(*context().updates));
    if (model == shownUpdates_)
        return;
    shownUpdates_ = model;
    automatic_->setOn(model.checksAutomatically);
    automaticRow_->setNote(model.switchNote);
    versionRow_->setTitle(model.version);
    versionRow_->setValue(model.status);
    versionRow_->setNote(model.note);
    update_->setText(updateWord(model.command));
    update_->setEnabled(model.canPress);
}

void SettingsView::showEvent(QShowEvent* event) {
    View::showEvent(event);
    if (updates_ == nullptr)
        return;
    // Today's check is yesterday's some time.
    refreshUpdates();
    if (!context().updates->revealsUpdatesInSettings())
        return;
    context().updates->setRevealsUpdatesInSettings(false);
    // The form has its height once it was laid out.
    QMetaObject::invokeMethod(
        this, [this] { form_->reveal(*updates_); }, Qt::QueuedConnection);
}

SettingsModel SettingsView::model() {
    // Its memory is read for whoever looks at it, and for nobody else.
    OwnCostMeter* const meter = isVisible() ? context().ownCost : nullptr;
    return settingsModel(hub(), context().settings, names_, meter ? meter->figure(look().clock.now()) : std::nullopt);
}

void SettingsView::refresh() {
    SettingsModel model = this->model();
    if (model == shown_)
        return;
    present(model);
}

void SettingsView::present(const SettingsModel& model) {
    shown_ = model;
    rateRow_->setTitle(model.rateLabel);
    rateRow_->setValue(model.rateName);
    rateRow_->setNote(model.rateNote);
    rate_->setValue(model.rateIndex);
    rate_->setSpokenValue(model.rateLabel + ", " + model.rateName);
    motion_->setCurrent(model.isSmooth ? 0 : 1);
    motionRow_->setNote(model.motionNote);
    rotors_->setOn(model.spinsRotors);
    rotorRow_->setNote(model.rotorNote);
    ownCostRow_->setVisible(!model.ownCost.isEmpty());
    ownCostRow_->setValue(model.ownCost);
    ownCostRow_->setNote(model.ownCostNote);
    menuBarRow_->setTitle(model.menuBarLabel);
    menuBarRow_->setNote(model.menuBarNote);
    menuBar_->setSpokenName(model.menuBarLabel);
    menuBar_->setOn(model.showsFigureAlways);
    history_->setCurrent(model.historyIndex);
    appearance_->setCurrent(model.appearanceIndex);
    unit_->setCurrent(model.unitIndex);
    processList_->setCurrent(model.processListIndex);
    processListRow_->setNote(model.processListNote);
    readingRow_->setValue(model.currentlyReading);
    machineRow_->setValue(model.machine);
    coresRow_->setValue(model.cores);
    sensorsRow_->setValue(model.sensorsFound);
    sourcesRow_->setValue(model.dataSources);
}

void SettingsView::themeChanged() {
    setMaximumWidth(smallestSize().width());
    setMinimumSize(smallestSize());
}

QSize SettingsView::smallestSize() const {
    return {qRound(windowSize.width() * theme().textScale()), lowestWindow};
}

void SettingsView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), color(Tone::window));
}

void SettingsView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Close) || event->key() == Qt::Key_Escape)
        close();
    else
        View::keyPressEvent(event);
}

} // namespace vantoro
