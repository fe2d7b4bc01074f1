// The buttons: bordered, default, quiet (no border until the pointer is over it), with a text, an icon, or both.
#pragma once

#include "Design/Controls/Pressable.h"

#include <utility>

namespace vantoro {

class Button : public Pressable {
    Q_OBJECT
public:
    enum class Kind {
        bordered,
        standard, ///< the default button of a sheet or an alert
        quiet,
    };

    /// The widget is 4 points larger than what it draws on every side, for the focus ring.
    static constexpr int ringMargin = 4;
    /// From the drawn edge to a text at least; the second in a button of 24 and less, whose text is smaller too.
    static constexpr int sidePadding = 12;
    static constexpr int smallSidePadding = 9;

    Button(Look& look, Kind kind, const QString& text, QWidget* parent = nullptr);

    void setText(const QString& text);
    const QString& text() const { return text_; }
    /// An icon's name; with an empty text the button is square.
    void setIcon(const QString& name, int size = 16);
    /// What a screen reader says where the text does not; also the tooltip of a button without a text.
    void setSpokenName(const QString& name);
    /// The drawn height in points: 32 unless told.
    void setDrawnHeight(int points);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isSmall() const { return height_ <= 24; }
    TextStyle textStyle() const;
    QColor fill() const;
    QColor ink() const;

    Kind kind_;
    QString text_;
    QString icon_;
    int iconSize_ = 16;
    int height_ = 32;
};

/// What a button says for two seconds once it has done its work. A member of what owns the button.
class BriefText : public Animated {
public:
    static constexpr double seconds = 2;

    BriefText(Look& look, Button& button) : look_(look), button_(button) {}

    /// The button says this, and after two seconds what it said before.
    void say(const QString& text) {
        if (!usual_)
            usual_ = button_.text();
        button_.setText(text);
        button_.announceChange(QAccessible::NameChanged);
        until_ = look_.clock.now() + seconds;
        look_.clock.run(*this);
    }

    /// At once: nobody sees the button any more.
    void end() {
        look_.clock.stop(*this);
        if (usual_)
            button_.setText(*std::exchange(usual_, std::nullopt));
    }

    bool advance(double now) override {
        if (now < until_)
            return true;
        end();
        return false;
    }

private:
    Look& look_;
    Button& button_;
    std::optional<QString> usual_;
    double until_ = 0;
};

} // namespace vantoro
