#include "Views/Settings/SettingsView.h"

#include "Design/Controls/Button.h"
#include "Design/Controls/SegmentedControl.h"
#include "Model/Updates/Updates.h"
#include "Views/Settings/PopUpButton.h"
#include "Views/Settings/SettingsControls.h"
#include "Views/Shared/Words.h"

#include <QKeyEvent>
#include <QPainter>

namespace vantoro {

namespace {
constexpr QSize windowSize(600, 784);
constexpr int lowestWindow = 360;
constexpr int buttonHeight = 26;
} // namespace

SettingsView::SettingsView(ViewContext& context, SourceNames names, QWidget* parent)
    : View(context, parent), names_(std::move(names)), form_(new SettingsForm(context.look, this)) {
    setWindowFlag(Qt::Window);
    setWindowTitle(vantoro::tr("Settings"));
    auto* const layout = new QVBoxLayout(this); // owned by Qt as a child
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form_);
    shown_ = model();
    addGroups();
    const bool asksForUpdates = context.updates != nullptr && context.updates->hasUpdater();
    if (asksForUpdates)
        addUpdates(*context.updates);
    form_->setLastWord(privacyNote(asksForUpdates, context.hub.words()));
    SettingsView::themeChanged();
    resize(width(), windowSize.height());
    // The figures of the program itself follow each sample.
    shows({&SensorHub::snapshotChanged, &SensorHub::processSourceChanged, &SensorHub::isReadyChanged,
           &SensorHub::sensorsAvailableChanged});
    connect(&context.settings, &Settings::changed, this, &SettingsView::refresh);
    present();
}

void SettingsView::addGroups() {
    for (const SettingsGroupModel& group : shown_) {
        SettingsGroup& panel = form_->addGroup(group.title);
        for (const SettingsRowModel& row : group.rows)
            lines_.push_back(line(panel.addRow(row.title), row));
    }
}

SettingsView::Line SettingsView::line(SettingsRow& row, const SettingsRowModel& model) {
    using Kind = SettingsRowModel::Kind;
    const auto choose = [this, key = model.key, stores = model.stores](int index) {
        context().settings.store(key, stores.at(static_cast<std::size_t>(index)));
    };
    const auto named = [](auto* control) {
        return [control](const SettingsRowModel& now) {
            control->setCurrent(now.current);
            control->setSpokenName(now.title);
        };
    };
    switch (model.kind) {
    case Kind::text:
        break;
    case Kind::onOff: {
        auto* const control = new Switch(look(), &row); // owned by Qt as a child, as are all below
        row.setControl(*control, Switch::ringMargin);
        connect(control, &Switch::toggled, this, choose);
        return {&row, [control](const SettingsRowModel& now) {
                    control->setOn(now.current == 1);
                    control->setSpokenName(now.title);
                }};
    }
    case Kind::segments: {
        auto* const control = new SegmentedControl(look(), SegmentedControl::Meaning::choices, model.choices, &row);
        row.setControl(*control, SegmentedControl::ringMargin);
        connect(control, &SegmentedControl::chosen, this, choose);
        return {&row, named(control)};
    }
    case Kind::popUp: {
        auto* const control = new PopUpButton(look(), model.choices, &row);
        row.setControl(*control, PopUpButton::ringMargin);
        connect(control, &PopUpButton::chosen, this, choose);
        return {&row, named(control)};
    }
    case Kind::slider: {
        auto* const control = new StepSlider(look(), static_cast<int>(model.choices.size()), &row);
        for (int stop = 0; stop < model.choices.size(); ++stop)
            if (!model.choices[stop].isEmpty())
                control->setCaption(stop, model.choices[stop]);
        control->setSpokenName(model.spokenName);
        row.setTitleStyle(Type::body.medium());
        row.setWideControl(*control, StepSlider::ringMargin);
        row.keepRoomForNotes(model.notes);
        connect(control, &StepSlider::chosen, this, choose);
        return {&row, [control](const SettingsRowModel& now) {
                    control->setCurrent(now.current);
                    control->setSpokenValue(now.title + ", " + now.value);
                }};
    }
    }
    return {&row, {}};
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

std::vector<SettingsGroupModel> SettingsView::model() const {
    // Its memory is read for whoever looks at it, and for nobody else.
    OwnCostMeter* const meter = isVisible() ? context().ownCost : nullptr;
    return settingsModel(hub(), context().settings, names_, meter ? meter->figure(look().clock.now()) : std::nullopt);
}

void SettingsView::refresh() {
    std::vector<SettingsGroupModel> model = this->model();
    if (model == shown_)
        return;
    shown_ = std::move(model);
    present();
}

void SettingsView::present() {
    auto line = lines_.begin();
    for (const SettingsGroupModel& group : shown_)
        for (const SettingsRowModel& model : group.rows) {
            line->row->setTitle(model.title);
            if (model.kind == SettingsRowModel::Kind::text || !model.value.isEmpty())
                line->row->setValue(model.value);
            line->row->setNote(model.note);
            line->row->setVisible(model.isShown);
            if (line->showChoice)
                line->showChoice(model);
            ++line;
        }
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
