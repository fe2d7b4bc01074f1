// What the list and its rows draw themselves.
#include "Views/Suspects/SuspectsPanel.h"

#include <algorithm>
#include <array>
#include <QPainter>
#include <QPaintEvent>

namespace vantoro {

using namespace SuspectPlaces;

void SuspectRow::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isMoving_)
        painter.fillRect(rect(), color(Tone::panel));
    if (isHovered())
        painter.fillRect(rect(), color(Tone::hover));
    const auto isWithin = [event](const QWidget* part) {
        return part != nullptr && part->isVisible() && part->geometry().contains(event->rect());
    };
    if (isWithin(bar_) || isWithin(graphics_) || std::ranges::any_of(members_, isWithin))
        return;
    const double plain = textHeight(theme());

    const QRectF tile(Space::panelPadding, (plain - tileSize) / 2, tileSize, tileSize);
    if (const QPixmap& icon = icons_.pixmap(model_.appPath, tileSize, devicePixelRatioF()); !icon.isNull()) {
        painter.drawPixmap(mirrored(tile).toRect(), icon);
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(Tone::well));
        painter.drawRoundedRect(mirrored(tile), Space::iconTileRadius, Space::iconTileRadius);
        drawIcon(painter, tile, model_.symbol, 16, color(Tone::textSecondary));
    }

    const bool isSuspect = model_.heatStop.has_value();
    const double nameHeight = lineHeight(Type::body);
    const double aboutHeight = lineHeight(Type::caption);
    const double top = (plain - nameHeight - aboutHeight - 1) / 2 + 1;
    const double textWidth = nameWidth();
    drawText(painter, {textLeft, top, textWidth, nameHeight}, isSuspect ? Type::body.semibold() : Type::body.medium(),
             color(Tone::textPrimary), model_.name);
    drawText(painter, {textLeft, top + nameHeight, textWidth, aboutHeight}, Type::caption, color(Tone::textTertiary),
             model_.about);
    if (!quit_->isVisible())
        paintFigure(painter);

    if (hasGraphics())
        for (const auto& [icon, bar] : {std::pair("cpu", barRect()), std::pair("cube.transparent", graphicsRect())})
            drawIcon(painter, QRectF(bar.left() - barIconGap - barIcon, bar.top(), barIcon, bar.height()), icon,
                     barIcon, color(Tone::textTertiary));
    if (isExpanded_) {
        const double wide = width() - textLeft - Space::panelPadding;
        double y = plainHeight() - explanationGap;
        if (!model_.explanation.isEmpty())
            drawLines(painter, {textLeft, y, wide, 0}, Type::note, color(Tone::textSecondary),
                      brokenLines(model_.explanation, font(Type::note), wide));
        y += explanationHeight(width());
        if (!model_.members.empty())
            y += static_cast<int>(model_.members.size()) * MemberLine::heightIn(theme()) + membersGap;
        drawText(painter, {textLeft, y, wide, aboutHeight}, Type::caption, color(Tone::textTertiary), foot(wide));
    }
    if (!isFirst_)
        painter.fillRect(mirrored(QRect(textLeft, 0, width() - textLeft - Space::panelPadding, 1)), color(Tone::line));
    drawFocusRing(painter, QRectF(rect()).adjusted(4, 2, -4, -2), Space::buttonRadius);
}

void SuspectRow::paintFigure(QPainter& painter) {
    const double faded = fade_.value();
    painter.setOpacity(1 - faded);
    const auto say = [&](const QRectF& place, const TextStyle& style, bool isNamed, const QString& figure) {
        if (faded < 1)
            drawText(painter, place, isNamed ? style.semibold() : style.medium(), color(Tone::textPrimary), figure,
                     Qt::AlignRight, Qt::ElideNone);
    };
    if (hasGraphics()) {
        const QRect whole = figureRect();
        const double line = lineHeight(Type::small);
        const double middle = whole.height() / 2.0 + (upperBar + lowerBar - rowAtFirst) / 2.0;
        const double apart = isStacked() ? line : lowerBar - upperBar;
        const QRectF upper(whole.left(), middle - (apart + line) / 2, whole.width(), line);
        say(upper, Type::small, model_.coreStop().has_value(), model_.figure);
        say(upper.translated(0, apart), Type::small, model_.isNamedForGraphics, model_.graphicsFigure);
    } else {
        say(figureRect(), Type::body, model_.heatStop.has_value(), model_.figure);
    }
    if (faded > 0) {
        painter.setOpacity(faded);
        drawText(painter, figureRect(), Type::caption, color(Tone::textSecondary), model_.quitting, Qt::AlignRight,
                 Qt::ElideNone);
    }
    painter.setOpacity(1);
}

QString SuspectRow::foot(double width) const {
    if (model_.folder.isEmpty())
        return model_.details;
    // Of a long path the middle goes first.
    const QString rest = QStringLiteral(" · ") + model_.details;
    const double room = std::max(0.0, width - textWidth(Type::caption, rest) - 1);
    return elidedTabular(font(Type::caption), model_.folder, room, Qt::ElideMiddle) + rest;
}

void SuspectsPanel::paintSkeleton(QPainter& painter, double top) const {
    constexpr std::array<QSize, SuspectsModel::rowsAtFirst> rows{
        {{120, 80}, {88, 112}, {144, 72}, {104, 96}, {72, 128}}};
    constexpr int left = Space::panelPadding;
    constexpr int textLeft = left + 40;
    constexpr int figureWidth = 32;
    constexpr int barRight = 80;
    const int bar = isNarrow_ ? 128 : 220;
    const int right = width() - left;
    painter.setPen(Qt::NoPen);
    double y = top;
    for (const QSize& row : rows) { // the lengths of name and caption
        const double middle = y + SuspectPlaces::rowHeight(theme()) / 2.0;
        const auto shape = [&](double x, double centre, double width, double height, double radius) {
            painter.drawRoundedRect(mirrored(QRectF(x, centre - height / 2, width, height)), radius, radius);
        };
        if (y > top)
            painter.fillRect(mirrored(QRectF(textLeft, y, right - textLeft, 1)), color(Tone::line));
        painter.setBrush(color(Tone::cell));
        shape(left, middle, 28, 28, Space::iconTileRadius);
        shape(textLeft, middle - 7, row.width(), 10, 5);
        shape(textLeft, middle + 8, row.height(), 8, 4);
        shape(width() - barRight - bar, middle, bar, 8, 4);
        shape(right - figureWidth, middle, figureWidth, 10, 5);
        y += SuspectPlaces::rowHeight(theme());
    }
}

void SuspectsPanel::paintEvent(QPaintEvent* event) {
    Panel::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double title = titleHeight * theme().textScale();
    const int footer = footerHeight(width());
    if (model_.isPending) {
        paintSkeleton(painter, title);
    } else if (!model_.emptyText.isEmpty()) {
        constexpr int icon = 24;
        constexpr int gap = 12;
        const double wide = width() - 2 * Space::panelPadding;
        const QStringList lines = brokenLines(model_.emptyText, font(Type::body), wide);
        const double line = lineHeight(Type::body);
        const double y =
            title + (height() - footer - title - icon - gap - line * static_cast<double>(lines.size())) / 2 - 8;
        drawIcon(painter, QRectF(Space::panelPadding, y, wide, icon), "checkmark.seal", icon,
                 color(Tone::textTertiary));
        drawLines(painter, QRectF(Space::panelPadding, y + icon + gap, wide, 0), Type::body, color(Tone::textSecondary),
                  lines, Qt::AlignHCenter);
    }
    if (footer > 0) {
        const double wide = width() - 2 * Space::panelPadding;
        const int top = height() - footer;
        painter.fillRect(QRectF(Space::panelPadding, top, wide, 1), color(Tone::line));
        drawLines(painter, QRectF(Space::panelPadding, top + footerPadding, wide, 0), Type::caption,
                  color(Tone::textTertiary), brokenLines(model_.footer, font(Type::caption), wide));
    }
}

} // namespace vantoro
