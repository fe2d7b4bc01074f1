// The settings window: every setting, applied as it is chosen, and what each costs.
#pragma once

#include "Views/Settings/SettingsForm.h"
#include "Views/Settings/SettingsModel.h"
#include "Views/Shared/View.h"
#include "Views/Updates/UpdatesModel.h"

namespace vantoro {

class Button;
class PopUpButton;
class SegmentedControl;
class StepSlider;
class Switch;

class SettingsView : public View {
    Q_OBJECT
public:
    /// `names` says what is read on this system.
    SettingsView(ViewContext& context, SourceNames names, QWidget* parent = nullptr);

    void refresh() override;
    /// What the form needs at least.
    QSize smallestSize() const;

signals:
    /// The name that is now stored: "light", "dark", or another for the system's.
    void appearanceChanged(const QString& name);
    void menuBarSettingChanged();
    void rotorSettingChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void themeChanged() override;

private:
    void addSampleRate();
    void addMenuBar();
    void addGeneral();
    void addProcesses();
    void addAbout();
    void addUpdates(Updates& updates);
    SettingsModel model();
    void present(const SettingsModel& model);
    void refreshUpdates();

    SourceNames names_;
    SettingsModel shown_;
    UpdatesGroupModel shownUpdates_;
    // All owned by Qt as children.
    SettingsForm* form_;
    SettingsRow* rateRow_ = nullptr;
    SettingsRow* motionRow_ = nullptr;
    SettingsRow* rotorRow_ = nullptr;
    SettingsRow* ownCostRow_ = nullptr;
    SettingsRow* menuBarRow_ = nullptr;
    SettingsRow* processListRow_ = nullptr;
    SettingsRow* readingRow_ = nullptr;
    SettingsRow* machineRow_ = nullptr;
    SettingsRow* coresRow_ = nullptr;
    SettingsRow* sensorsRow_ = nullptr;
    SettingsRow* sourcesRow_ = nullptr;
    StepSlider* rate_ = nullptr;
    SegmentedControl* motion_ = nullptr;
    Switch* rotors_ = nullptr;
    Switch* menuBar_ = nullptr;
    PopUpButton* history_ = nullptr;
    SegmentedControl* appearance_ = nullptr;
    SegmentedControl* unit_ = nullptr;
    PopUpButton* processList_ = nullptr;
    // These only where there is an updater.
    SettingsGroup* updates_ = nullptr;
    SettingsRow* automaticRow_ = nullptr;
    SettingsRow* versionRow_ = nullptr;
    Switch* automatic_ = nullptr;
    Button* update_ = nullptr;
};

} // namespace vantoro
