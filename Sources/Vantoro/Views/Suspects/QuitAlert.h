// Asks before an application is ended, shows how its processes end, and offers force where they do not.
#pragma once

#include "Design/Controls/Button.h"
#include "Design/Controls/Sheet.h"
#include "Design/TextLabel.h"
#include "Views/Shared/View.h"
#include "Views/Suspects/QuitModel.h"
#include "Views/Updates/UpdateParts.h"

namespace vantoro {

/// Cancel, later Close, is the default, and Escape.
class QuitAlert : public Sheet {
    Q_OBJECT
public:
    static constexpr int cardWidth = 300;

    /// Asks over the window of `view` about the group of this process, or shows how far its ending is; asks nothing
    /// when it is gone.
    static void ask(ViewContext& context, QWidget& view, std::int32_t pid);

    /// Without a question it shows what is under way for this group.
    QuitAlert(ViewContext& context, QWidget& window, std::string key, const QuitModel& model,
              std::optional<QuitQuestion> question);
    ~QuitAlert() override;

    Button* confirm() const { return confirm_; }
    Button* cancel() const { return cancel_; }
    const QuitModel& model() const { return model_; }

protected:
    QSize cardSize(const QSize& window) const override;
    void accept() override { close(); }
    void themeChanged() override;

private:
    void show(const QuitModel& model);
    void confirmed();
    /// The state of what is under way; closes once that is over.
    void follow();
    void place();

    Quits& quits_;
    std::string key_;
    QuitModel model_;
    std::optional<QuitQuestion> question_;
    bool isFollowing_ = false;
    TextLabel* title_; // owned by Qt as children
    TextLabel* text_;
    UpdateMark* ring_;
    TextLabel* wait_;
    Button* confirm_;
    Button* cancel_;
    int cardHeight_ = 0;
};

} // namespace vantoro
