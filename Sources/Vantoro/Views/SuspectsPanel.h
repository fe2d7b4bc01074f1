// The busiest applications, most responsible first.
#pragma once

#include "Design/Panel.h"
#include "Views/SuspectRow.h"

#include <memory>

namespace vantoro {

/// One stop of the keyboard: up and down move inside. Rows stay with their applications and glide to new places.
class SuspectsPanel : public Panel, public Animated {
    Q_OBJECT
public:
    explicit SuspectsPanel(Look& look, QWidget* parent = nullptr);

    void show(const SuspectsModel& model);
    using QWidget::show;
    /// Shorter bars.
    void setNarrow(bool narrow);
    /// With room for five rows at least.
    int heightFor(int width) const;

    bool advance(double now) override;
    Description describe() override;

signals:
    /// The height it asks for has changed.
    void heightChanged();
    /// To end the group of this process; nothing has been asked yet.
    void quitRequested(std::int32_t pid);
    /// The keyboard went to this row, which may be out of sight.
    void rowReached(QWidget* row);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void themeChanged() override;

private:
    /// A row's widget and where it is.
    struct Entry {
        SuspectRow* row = nullptr; // owned by Qt as a child
        AnimatedValue y;
        std::int32_t quitPID = 0;
    };

    std::size_t shownRows() const;
    void assignRows();
    void placeRows(bool animated);
    void placeButton();
    void chooseCaption();
    void toggleAll();
    void moveFocus(const SuspectRow* from, int rows);
    void setStop(std::size_t index);
    std::unique_ptr<Entry> newEntry();
    int footerHeight(int width) const;
    void askForHeight();
    void paintSkeleton(QPainter& painter, double top) const;

    AppIcons icons_;
    SuspectsModel model_;
    /// In the order shown; those beyond the shown rows are spare and hidden.
    std::vector<std::unique_ptr<Entry>> entries_;
    Button* all_; // owned by Qt as a child
    bool showsAll_ = false;
    bool isNarrow_ = false;
    std::size_t used_ = 0;
    int askedHeight_ = 0;
};

} // namespace vantoro
