// The settings window: every setting, applied as it is chosen, and what each costs.
#pragma once

#include "Views/Settings/SettingsForm.h"
#include "Views/Settings/SettingsModel.h"
#include "Views/Shared/View.h"
#include "Views/Updates/UpdatesModel.h"

#include <functional>

namespace vantoro {

class Button;
class Switch;

class SettingsView : public View {
    Q_OBJECT
public:
    /// `names` says what is read on this system.
    SettingsView(ViewContext& context, SourceNames names, QWidget* parent = nullptr);

    void refresh() override;
    /// What the form needs at least.
    QSize smallestSize() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void themeChanged() override;

private:
    struct Line {
        SettingsRow* row = nullptr;
        /// Shows what is chosen, where something is.
        std::function<void(const SettingsRowModel&)> showChoice;
    };

    void addGroups();
    Line line(SettingsRow& row, const SettingsRowModel& model);
    void addUpdates(Updates& updates);
    std::vector<SettingsGroupModel> model() const;
    void present();
    void refreshUpdates();

    SourceNames names_;
    std::vector<SettingsGroupModel> shown_;
    /// One for each row of the model.
    std::vector<Line> lines_;
    UpdatesGroupModel shownUpdates_;
    // All owned by Qt as children.
    SettingsForm* form_;
    // These only where there is an updater.
    SettingsGroup* updates_ = nullptr;
    SettingsRow* automaticRow_ = nullptr;
    SettingsRow* versionRow_ = nullptr;
    Switch* automatic_ = nullptr;
    Button* update_ = nullptr;
};

} // namespace vantoro
