#include "Views/Suspects/SuspectLines.h"

#include <algorithm>
#include <QPainter>

namespace vantoro {

namespace {
constexpr int memberHeight = 24;
constexpr int memberBar = 6;
constexpr int detailGap = 8;
} // namespace

namespace SuspectPlaces {

int textHeight(const Theme& theme) {
    const double lines = lineHeightOf(Type::body, theme) + lineHeightOf(Type::caption, theme);
    return std::max(48, static_cast<int>(lines) + 12);
}

int rowHeight(const Theme& theme) {
    return textHeight(theme) + (areStacked(theme) ? stackedBar : 0);
}

QRect figure(const Theme& theme, int width, int height) {
    const int wide = qRound(figureWidth * theme.textScale());
    return {width - Space::panelPadding - wide, 0, wide, height};
}

QRect bar(const Theme& theme, int width, int height, int barHeight, bool isNarrow) {
    if (areStacked(theme))
        return {textLeft, height, width - textLeft - Space::panelPadding, barHeight};
    const int wide = isNarrow ? narrowBar : wideBar;
    return {figure(theme, width, height).left() - barGap - wide, (height - barHeight) / 2, wide, barHeight};
}

} // namespace SuspectPlaces

using namespace SuspectPlaces;

MemberLine::MemberLine(Look& look, QWidget* parent) : PaintedWidget(look, parent), bar_(new CoreBar(look, this)) {
    setMouseTracking(true);
    bar_->setBarHeight(memberBar);
}

int MemberLine::heightIn(const Theme& theme) {
    return qRound(memberHeight * theme.textScale()) + (areStacked(theme) ? stackedBar - 2 : 0);
}

int MemberLine::textLine() const {
    return qRound(memberHeight * theme().textScale());
}

void MemberLine::show(const MemberModel& model, int cores, bool isNarrow) {
    bar_->show(model.percent, cores, std::nullopt);
    if (model.key != model_.key)
        bar_->jump();
    if (isNarrow != isNarrow_) {
        isNarrow_ = isNarrow;
        place();
    } else if (model == model_) {
        return;
    }
    model_ = model;
    place();
    update();
    announceChange();
}

double MemberLine::nameRoom() const {
    const QRect figure = SuspectPlaces::figure(theme(), width(), textLine());
    return std::max(0, (areStacked(theme()) ? figure.left() : bar(theme(), width(), 0, 0, isNarrow_).left()) - barGap -
                           textLeft);
}

void MemberLine::place() {
    const int down = areStacked(theme()) ? 2 : 0;
    bar_->setGeometry(mirrored(bar(theme(), width(), textLine() - down, memberBar, isNarrow_)));
    const double whole = textWidth(Type::small, model_.name) + detailGap + textWidth(Type::caption, model_.detail);
    setToolTip(whole > nameRoom() ? (model_.name + u' ' + model_.detail).trimmed() : QString());
}

void MemberLine::resizeEvent(QResizeEvent*) {
    place();
}

void MemberLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const double high = textLine();
    const double room = nameRoom();
    const double named = std::min(textWidth(Type::small, model_.name) + 1, room);
    drawText(painter, {textLeft, 0, named, high}, Type::small,
             color(model_.isSummary ? Tone::textSecondary : Tone::textPrimary), model_.name);
    constexpr double leastDetail = 20; // less would hold no letter beside the ellipsis
    if (const double left = room - named - detailGap; left >= leastDetail)
        drawText(painter, {textLeft + named + detailGap, 0, left, high}, Type::caption, color(Tone::textTertiary),
                 model_.detail);
    drawText(painter, figure(theme(), width(), textLine()), Type::small, color(Tone::textSecondary), model_.figure,
             Qt::AlignRight, Qt::ElideNone);
}

Description MemberLine::describe() {
    const QString name = model_.detail.isEmpty() ? model_.name : model_.name + QStringLiteral(", ") + model_.detail;
    return {.role = QAccessible::TreeItem, .name = name, .value = model_.spokenFigure};
}

UnaccountedRow::UnaccountedRow(Look& look, QWidget* parent)
    : PaintedWidget(look, parent), bar_(new CoreBar(look, this)) {
    setMouseTracking(true);
    bar_->setHollow(true);
}

void UnaccountedRow::show(const UnaccountedModel& model, int cores) {
    bar_->show(model.percent, cores, std::nullopt);
    if (model == model_)
        return;
    model_ = model;
    setToolTip(model.toolTip);
    update();
    announceChange();
}

void UnaccountedRow::setNarrow(bool narrow) {
    isNarrow_ = narrow;
    place();
    update();
}

void UnaccountedRow::setFirst(bool first) {
    if (first == isFirst_)
        return;
    isFirst_ = first;
    update();
}

QRect UnaccountedRow::barRect() const {
    return bar(theme(), width(), textHeight(theme()), bar_->sizeHint().height(), isNarrow_);
}

void UnaccountedRow::place() {
    bar_->setGeometry(mirrored(barRect()));
}

void UnaccountedRow::resizeEvent(QResizeEvent*) {
    place();
}

void UnaccountedRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const double plain = textHeight(theme());
    const double name = lineHeightOf(Type::body, theme());
    const double about = lineHeightOf(Type::caption, theme());
    const double top = (plain - name - about - 1) / 2 + 1;
    const QRect figure = SuspectPlaces::figure(theme(), width(), static_cast<int>(plain));
    const double room = (areStacked(theme()) ? figure.left() : barRect().left()) - barGap - textLeft;
    drawText(painter, {textLeft, top, room, name}, Type::body, color(Tone::textSecondary), model_.name);
    drawText(painter, {textLeft, top + name, room, about}, Type::caption, color(Tone::textTertiary), model_.about);
    drawText(painter, figure, Type::body, color(Tone::textSecondary), model_.figure, Qt::AlignRight, Qt::ElideNone);
    if (!isFirst_)
        painter.fillRect(mirrored(QRect(textLeft, 0, width() - textLeft - Space::panelPadding, 1)), color(Tone::line));
}

Description UnaccountedRow::describe() {
    return {.role = QAccessible::TreeItem,
            .name = model_.name + QStringLiteral(", ") + model_.about,
            .value = model_.spokenFigure};
}

} // namespace vantoro
