// What helps, in the order in which it is most likely to.
#pragma once

#include "Design/Controls/Button.h"
#include "Design/Panel.h"
#include "Views/Now/NowModel.h"

namespace vantoro {

/// A panel's last line as one wide button: an icon, a text and a chevron, with a separator above.
/// Lies over the panel's whole width at its lower edge, whose round corners it follows.
class FooterButton : public Pressable {
    Q_OBJECT
public:
    FooterButton(Look& look, const QString& icon, QWidget* parent = nullptr);

    void setText(const QString& text);

    QSize sizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString icon_;
    QString text_;
};

class AdvicePanel : public Panel {
    Q_OBJECT
public:
    explicit AdvicePanel(Look& look, QWidget* parent = nullptr);

    void show(const AdviceModel& model);
    using QWidget::show;
    int heightFor(int width) const;

signals:
    /// The height it asks for has changed.
    void heightChanged();
    void explainRequested();
    /// To end the group of this process; nothing has been asked yet.
    void quitRequested(std::int32_t pid);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    /// A sentence is `text` alone, a quit action `quit` and the note in `text`. Owned by Qt as children.
    struct Item {
        TextLabel* text = nullptr;
        Button* quit = nullptr;
    };

    class ResultNote;

    Item newItem(std::size_t index);
    /// Stacks the items at this width, moving them when asked, and gives the height they end at.
    int stack(int width, bool place) const;
    bool isEmpty() const { return model_.items.empty() && !model_.result; }

    AdviceModel model_;
    std::vector<Item> items_;
    ResultNote* note_; // owned by Qt as a child
    int askedHeight_ = 0;
    FooterButton* explain_; // owned by Qt as a child
};

} // namespace vantoro
