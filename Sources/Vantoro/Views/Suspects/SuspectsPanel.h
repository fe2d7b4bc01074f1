// The busiest applications, most responsible first.
#pragma once

#include "Design/Panel.h"
#include "Views/Suspects/SuspectRow.h"

#include <memory>

namespace vantoro {

/// One stop of the keyboard: up and down move inside. Rows stay with their applications and glide to new places, but
/// not while the pointer is over the list or the keyboard in it: what somebody is about to press stays where it is.
class SuspectsPanel : public Panel, public Animated {
    Q_OBJECT
public:
    explicit SuspectsPanel(Look& look, QWidget* parent = nullptr);
    ~SuspectsPanel() override;

    /// While the order is kept, what has ended goes and what is new comes last.
    void show(const SuspectsModel& model);
    using QWidget::show;
    /// Shorter bars.
    void setNarrow(bool narrow);
    /// With room for five rows at least.
    int heightFor(int width) const;
    /// The row that is unfolded, by its key; empty for none.
    QString unfoldedKey() const;

    bool advance(double now) override;
    Description describe() override;

signals:
    /// The height it asks for has changed.
    void heightChanged();
    /// One row at a time; none with an empty key. Whoever hears of it shows its members at once.
    void unfolded(const QString& key);
    /// To end the group of this process; nothing has been asked yet.
    void quitRequested(std::int32_t pid);
    /// The keyboard went to this row, which may be out of sight.
    void rowReached(QWidget* row);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void themeChanged() override;

private:
    /// A row's widget and where it is.
    struct Entry {
        SuspectRow* row = nullptr; // owned by Qt as a child
        AnimatedValue y;
        std::int32_t quitPID = 0;
    };

    bool keepsOrder() const;
    void arrange(const SuspectsModel& model);
    /// Marks the row that lies under the pointer now, wherever the pointer came into the list.
    void followPointer();
    /// What lies under the pointer; null while it is not over the list. It may be a sheet over the window.
    QWidget* childAtPointer() const;
    void pointerAt(const QPoint& screen);
    void attentionChanged();
    void unfold(const Entry& entry, bool unfolds);
    std::size_t shownRows() const;
    /// Gives every row its place anew.
    void dealRows(bool animated);
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
    /// What is shown, and what was given last where the order differs.
    SuspectsModel model_;
    SuspectsModel latest_;
    /// Where on the screen it was last seen over the list; the rows may move under it while it rests.
    std::optional<QPoint> pointer_;
    /// In the order shown; those beyond the shown rows are spare and hidden.
    std::vector<std::unique_ptr<Entry>> entries_;
    Button* all_;                           // owned by Qt as a child
    UnaccountedRow* unaccounted_ = nullptr; // owned by Qt as a child; made when first needed
    bool showsAll_ = false;
    bool isNarrow_ = false;
    bool isArranging_ = false;
    bool isUnfolding_ = false;
    std::size_t used_ = 0;
    int askedHeight_ = 0;
};

} // namespace vantoro
