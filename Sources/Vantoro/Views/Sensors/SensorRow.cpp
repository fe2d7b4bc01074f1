#include "Views/Sensors/SensorRow.h"

#include "Design/Gauges/SmallGauges.h"
#include "Design/Panel.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <utility>

namespace vantoro {

namespace {

constexpr int lineWidth = 128;
constexpr int lineWidthLarge = 88;
constexpr double largeFrom = 1.25;
constexpr int lineHeightInRow = 28;
/// From the right end of the sparkline to that of the figure.
constexpr int valueWidth = 99;
constexpr int nameGap = 12;
constexpr int rangeGap = 8;
constexpr int chevron = 12;
constexpr int sensorsBottom = 12;
constexpr int cellGap = 12;
constexpr TextStyle valueStyle = Type::lead.semibold();

} // namespace

SensorRow::SensorRow(Look& look, int leastHeight, bool isFirst, QWidget* parent)
    : Pressable(look, parent), leastHeight_(leastHeight), isFirst_(isFirst), line_(new Sparkline(look, this)) {
    line_->setLineHeight(lineHeightInRow);
    line_->setAreaShown(false);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void SensorRow::show(const SensorRowModel& model) {
    if (model == model_)
        return;
    line_->show(model.line);
    const double headBefore = headHeight(width());
    const bool otherList = model.source != model_.source || model.isExpanded != model_.isExpanded ||
                           model.sensors.size() != model_.sensors.size();
    const bool otherState = model.isExpanded != model_.isExpanded;
    const bool otherTexts = model.value != model_.value || model.range != model_.range || model.label != model_.label ||
                            model.sensors != model_.sensors || model.sensorsTitle != model_.sensorsTitle;
    model_ = model;
    const bool otherShape = otherList || headHeight(width()) != headBefore;
    setToolTip(model.toolTip);
    setFocusPolicy(model.isExpandable ? Qt::StrongFocus : Qt::NoFocus);
    setCursor(model.isExpandable ? Qt::PointingHandCursor : Qt::ArrowCursor);
    if (otherShape) {
        updateGeometry();
        placeLine();
    }
    if (otherShape || otherTexts)
        update();
    if (otherState)
        announceChange(QAccessible::StateChanged);
    else if (otherTexts)
        announceChange();
}

void SensorRow::setFirst(bool isFirst) {
    if (std::exchange(isFirst_, isFirst) != isFirst)
        update();
}

int SensorRow::lineWidthNow() const {
    return theme().textScale() < largeFrom ? lineWidth : lineWidthLarge;
}

/// The figure grows with the type, the room beside it does not.
int SensorRow::valueWidthNow() const {
    constexpr double figure = 56;
    return valueWidth + qRound(figure * (theme().textScale() - 1));
}

double SensorRow::nameWidth(double width) const {
    return std::max(40.0, width - 2 * sideMargin - lineWidthNow() - valueWidthNow() - nameGap);
}

bool SensorRow::rangeFitsBesideName(double width) const {
    const double chevronRoom = model_.isExpandable ? rangeGap + chevron : 0;
    return textWidth(Type::body, model_.label) + rangeGap + textWidth(Type::caption, model_.range) + chevronRoom <=
           nameWidth(width);
}

QStringList SensorRow::captionLines(double width) const {
    QStringList lines;
    if (!model_.range.isEmpty() && !rangeFitsBesideName(width))
        lines.append(model_.range);
    if (!model_.source.isEmpty())
        lines += brokenLines(model_.source, font(Type::caption), nameWidth(width));
    return lines;
}

double SensorRow::headHeight(double width) const {
    const double oneSourceLine = Type::body.lineHeight + Type::caption.lineHeight;
    const double names =
        lineHeight(Type::body) + static_cast<double>(captionLines(width).size()) * lineHeight(Type::caption);
    return std::max<double>(leastHeight_, names + leastHeight_ - oneSourceLine);
}

SensorRow::SensorGrid SensorRow::grid(double width) const {
    SensorGrid grid;
    if (model_.sensors.isEmpty())
        return grid;
    double widest = 0;
    for (const QString& text : model_.sensors)
        widest = std::max(widest, textWidth(Type::small, text));
    grid.cellWidth = widest + cellGap;
    grid.columns = std::max(1, static_cast<int>((width - 2 * sideMargin + cellGap) / grid.cellWidth));
    grid.rows = (static_cast<int>(model_.sensors.size()) + grid.columns - 1) / grid.columns;
    return grid;
}

int SensorRow::heightForWidth(int width) const {
    double height = headHeight(width);
    if (model_.isExpanded)
        height += lineHeight(Type::caption) + grid(width).rows * lineHeight(Type::note) + sensorsBottom;
    return static_cast<int>(std::ceil(height));
}

QSize SensorRow::sizeHint() const {
    constexpr int usual = 472;
    return {usual, heightForWidth(usual)};
}

QSize SensorRow::minimumSizeHint() const {
    return {320, leastHeight_};
}

void SensorRow::placeLine() {
    const int right = width() - sideMargin - valueWidthNow();
    const int top = qRound((headHeight(width()) - lineHeightInRow) / 2);
    line_->setGeometry(mirrored(QRect(right - lineWidthNow(), top, lineWidthNow(), lineHeightInRow)));
}

void SensorRow::resizeEvent(QResizeEvent*) {
    placeLine();
}

void SensorRow::themeChanged() {
    placeLine();
}

void SensorRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const double headBottom = headHeight(width());
    const QRectF head(sideMargin, 0, width() - 2 * sideMargin, headBottom);
    if (!isFirst_)
        painter.fillRect(QRectF(head.left(), 0, head.width(), 1), color(Tone::line));
    paintNames(painter, head);
    drawText(painter, head, valueStyle, color(model_.isMissing ? Tone::textTertiary : Tone::textPrimary), model_.value,
             Qt::AlignRight, Qt::ElideNone);
    if (model_.isExpanded)
        paintSensors(painter, headBottom);
    drawFocusRing(painter, QRectF(rect()).adjusted(0, 2, 0, -1), Space::buttonRadius);
}

void SensorRow::paintNames(QPainter& painter, const QRectF& head) const {
    const QStringList captions = captionLines(width());
    const double body = lineHeight(Type::body);
    const double caption = lineHeight(Type::caption);
    const double names = body + static_cast<double>(captions.size()) * caption;
    QRectF line(head.left(), head.top() + (head.height() - names) / 2, nameWidth(width()), body);
    QRectF rest = line;
    drawText(painter, line, Type::body, color(Tone::textPrimary), model_.label);
    rest.setLeft(line.left() + std::min(textWidth(Type::body, model_.label), line.width()) + rangeGap);
    if (!model_.range.isEmpty() && rangeFitsBesideName(width())) {
        drawText(painter, rest, Type::caption, color(Tone::textTertiary), model_.range);
        rest.setLeft(rest.left() + textWidth(Type::caption, model_.range) + rangeGap);
    }
    const bool isReached = isHovered() || model_.isExpanded || hasKeyboard();
    if (model_.isExpandable && isReached && rest.width() >= chevron)
        drawIcon(painter, QRectF(rest.left(), rest.top(), chevron, rest.height()),
                 model_.isExpanded ? "chevron.down" : "chevron.right", chevron, color(Tone::textTertiary));
    line = QRectF(line.left(), line.bottom(), line.width(), caption);
    for (const QString& text : captions) {
        drawText(painter, line, Type::caption, color(Tone::textTertiary), text);
        line.translate(0, caption);
    }
}

void SensorRow::paintSensors(QPainter& painter, double top) const {
    const QRectF title(sideMargin, top - 4, width() - 2 * sideMargin, lineHeight(Type::caption));
    drawText(painter, title, Type::caption, color(Tone::textTertiary), model_.sensorsTitle);
    const SensorGrid cells = grid(width());
    const double row = lineHeight(Type::note);
    for (int i = 0; i < model_.sensors.size(); ++i) {
        const QRectF cell(sideMargin + i % cells.columns * cells.cellWidth,
                          title.bottom() + 2 + i / cells.columns * row, cells.cellWidth, row);
        drawText(painter, cell, Type::small, color(Tone::textSecondary), model_.sensors[i]);
    }
}

Description SensorRow::describe() {
    Description what{.role = model_.isExpandable ? QAccessible::Button : QAccessible::StaticText,
                     .name = model_.label,
                     .value = model_.spokenValue,
                     .isExpanded = model_.isExpanded,
                     .isExpandable = model_.isExpandable,
                     .actions = pressAction(model_.isExpanded ? vantoro::tr("Fold") : vantoro::tr("Unfold"))};
    if (model_.isExpanded)
        what.value += QStringLiteral(", ") + model_.sensorsTitle + QStringLiteral(": ") + model_.sensors.join(u' ');
    return what;
}

} // namespace vantoro
