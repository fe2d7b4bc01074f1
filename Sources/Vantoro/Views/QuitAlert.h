// Asks before an application is ended.
#pragma once

#include "Design/Button.h"
#include "Design/Sheet.h"
#include "Design/TextLabel.h"
#include "Views/QuitModel.h"
#include "Views/View.h"

namespace vantoro {

/// Cancel is the default, and Escape.
class QuitAlert : public Sheet {
    Q_OBJECT
public:
    static constexpr int cardWidth = 300;

    /// Asks over the window of `view` about the group of this process; asks nothing when it is gone.
    static void ask(ViewContext& context, QWidget& view, std::int32_t pid);

    QuitAlert(ViewContext& context, QWidget& window, const QuitModel& model);

    Button* confirm() const { return confirm_; }
    Button* cancel() const { return cancel_; }

protected:
    QSize cardSize(const QSize& window) const override;
    void accept() override { close(); }
    void themeChanged() override;

private:
    void place();

    SensorHub& hub_;
    QuitModel model_;
    TextLabel* title_; // owned by Qt as children
    TextLabel* text_;
    Button* confirm_;
    Button* cancel_;
    int cardHeight_ = 0;
};

} // namespace vantoro
