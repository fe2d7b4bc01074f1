// The rounded surface that groups what belongs together, with its title line.
#pragma once

#include "Design/TextLabel.h"

#include <QVBoxLayout>

namespace vantoro {

namespace Space {
inline constexpr int windowMargin = 24;
inline constexpr int panelGap = 16;
inline constexpr int panelPadding = 16;
inline constexpr int heroInset = 40;
inline constexpr int panelRadius = 12;
inline constexpr int buttonRadius = 8;
inline constexpr int iconTileRadius = 7;
} // namespace Space

/// Draws its icon, title, subtitle and caption itself; what it holds goes into body().
class Panel : public PaintedWidget {
    Q_OBJECT
public:
    /// The title line is 44 high: 16 above it is the padding, the text 13 semibold.
    static constexpr int titleHeight = 44;

    explicit Panel(Look& look, QWidget* parent = nullptr);

    /// The layout below the title line, inset by the panel's padding at the left, right and bottom.
    QVBoxLayout* body() const { return body_; }

    /// An empty title leaves the title line out.
    void setTitle(const QString& title);
    const QString& title() const { return title_; }
    /// An icon's name, before the title.
    void setIcon(const QString& name);
    /// Tertiary, after the title.
    void setSubtitle(const QString& subtitle);
    /// Tertiary, at the right end; elides before the title does.
    void setCaption(const QString& caption);
    const QString& caption() const { return caption_; }
    /// What a small icon stands for, at the caption's end; neither where the name is empty.
    void setCaptionMark(const QString& icon, const QString& text);
    /// What stands at the title line's right end beside the panel's own texts takes so many points.
    void setRoomAtRight(int points);
    /// A figure in place of the caption: primary, semibold.
    void setFigure(const QString& figure);
    /// The room below the body: the panel's padding unless told.
    void setBottomPadding(int points);
    /// The room at both sides of the body: less than the panel's padding for rows that bring their own, so that a
    /// focus ring stands clear of what it surrounds.
    void setSidePadding(int points);

    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void themeChanged() override;
    /// Whether this caption stands beside the title in full, with its mark.
    bool hasRoomForCaption(const QString& caption) const;

private:
    void placeBody();
    /// Of the dot behind the caption, the icon and its text.
    double markWidth() const;
    void assign(QString& member, const QString& value);

    QVBoxLayout* body_;
    QString title_;
    QString icon_;
    QString subtitle_;
    QString caption_;
    QString markIcon_;
    QString markText_;
    QString figure_;
    int roomAtRight_ = 0;
    int sidePadding_ = Space::panelPadding;
    int bottomPadding_ = Space::panelPadding;
};

} // namespace vantoro
