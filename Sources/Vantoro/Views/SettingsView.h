// The settings window: every setting, applied as it is chosen, and what each costs.
#pragma once

#include "Views/SettingsForm.h"
#include "Views/SettingsModel.h"
#include "Views/View.h"

namespace vantoro {

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
    /// Where further groups can be put.
    SettingsForm& form() const { return *form_; }

signals:
    /// The name that is now stored: "light", "dark", or another for the system's.
    void appearanceChanged(const QString& name);
    void menuBarSettingChanged();
    void rotorSettingChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void themeChanged() override;

private:
    void addSampleRate();
    void addMenuBar();
    void addGeneral();
    void addProcesses();
    void addAbout();
    void present(const SettingsModel& model);

    SourceNames names_;
    SettingsModel shown_;
    // All owned by Qt as children.
    SettingsForm* form_;
    SettingsRow* rateRow_ = nullptr;
    SettingsRow* motionRow_ = nullptr;
    SettingsRow* rotorRow_ = nullptr;
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
};

} // namespace vantoro
