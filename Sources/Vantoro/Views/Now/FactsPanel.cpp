#include "Views/Now/FactsPanel.h"

#include <algorithm>
#include <QPainter>
#include <QPaintEvent>

namespace vantoro {

namespace {
constexpr int iconSize = 14;
constexpr int iconGap = 6;
constexpr int valueGap = 6;
constexpr int detailGap = 1;
constexpr int figureGap = 15;
constexpr int figureHeight = 44;
constexpr int belowFigure = 2;

constexpr int cellGap = 32;
constexpr int belowTitle = 4;
constexpr int rowGap = 20;
constexpr int fewColumns = 3;
/// From this text scale on three cells share the width.
constexpr double fewColumnsScale = 1.25;
} // namespace

FactCell::FactCell(Look& look, QWidget* parent)
    : PaintedWidget(look, parent), line_(new Sparkline(look, this)), meter_(nullptr) {}

int FactCell::cellHeight(const Theme& theme) {
    return static_cast<int>(lineHeightOf(Type::small, theme) + valueGap + lineHeightOf(Type::figure, theme) +
                            detailGap + lineHeightOf(Type::caption, theme)) +
           figureGap + figureHeight + belowFigure;
}

void FactCell::show(const FactModel& model) {
    if (model == model_)
        return;
    FactModel before = model_;
    model_ = model;
    if (model.pressure && meter_ == nullptr)
        meter_ = new FourStepMeter(look(), FourStepMeter::Names::ends, this);
    line_->setVisible(model.line.has_value());
    if (model.line)
        line_->show(*model.line);
    if (meter_ != nullptr) {
        meter_->setVisible(model.pressure.has_value());
        meter_->show(model.pressure.value_or(ThermalPressure::nominal));
    }
    if (before.pressure != model.pressure)
        place();
    before.line = model.line;
    before.pressure = model.pressure;
    if (before == model)
        return;
    update(0, 0, width(), line_->y());
    announceChange(QAccessible::NameChanged);
}

void FactCell::place() {
    const int top = cellHeight(theme()) - belowFigure - figureHeight;
    line_->setGeometry(0, top, width(), figureHeight);
    if (meter_ != nullptr) {
        const int height = meter_->sizeHint().height();
        meter_->setGeometry(0, top + figureHeight - height, width(), height);
    }
}

void FactCell::resizeEvent(QResizeEvent*) {
    place();
}

void FactCell::themeChanged() {
    place();
}

void FactCell::paintEvent(QPaintEvent* event) {
    if (event->rect().top() >= line_->y())
        return;
    QPainter painter(this);
    const double wide = width();
    double line = lineHeight(Type::small);
    drawIcon(painter, QRectF(0, 0, iconSize, line), model_.symbol, iconSize, color(Tone::textSecondary));
    drawText(painter, QRectF(iconSize + iconGap, 0, wide - iconSize - iconGap, line), Type::small,
             color(Tone::textSecondary), model_.title);
    double y = line + valueGap;
    line = lineHeight(Type::figure);
    drawText(painter, QRectF(0, y, wide, line), Type::figure,
             color(model_.isMissing ? Tone::textTertiary : Tone::textPrimary), model_.value, Qt::AlignLeft,
             Qt::ElideNone);
    y += line + detailGap;
    drawText(painter, QRectF(0, y, wide, lineHeight(Type::caption)), Type::caption, color(Tone::textTertiary),
             model_.detail);
}

Description FactCell::describe() {
    return {.role = QAccessible::StaticText,
            .name = model_.title + QStringLiteral(", ") + model_.value + QStringLiteral(", ") + model_.detail};
}

FactsPanel::FactsPanel(Look& look, QWidget* parent) : Panel(look, parent) {
    setFocusPolicy(Qt::TabFocus);
}

void FactsPanel::show(const FactsModel& model) {
    if (model == model_)
        return;
    const std::size_t before = model_.facts.size();
    model_ = model;
    setTitle(model.title);
    setCaption(model.caption);
    while (cells_.size() < model.facts.size())
        cells_.push_back(new FactCell(look(), this));
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        cells_[i]->setVisible(i < model.facts.size());
        if (i < model.facts.size())
            cells_[i]->show(model.facts[i]);
    }
    if (before == model.facts.size())
        return;
    place();
    update();
    if (heightFor(width()) != height())
        emit heightChanged();
}

void FactsPanel::setNarrow(bool narrow) {
    if (narrow == isNarrow_)
        return;
    isNarrow_ = narrow;
    place();
    update();
}

int FactsPanel::columns() const {
    const int count = std::max<int>(1, static_cast<int>(model_.facts.size()));
    const bool few = isNarrow_ || theme().textScale() >= fewColumnsScale;
    return few ? std::min(count, fewColumns) : count;
}

int FactsPanel::rows() const {
    const int count = std::max<int>(1, static_cast<int>(model_.facts.size()));
    return (count + columns() - 1) / columns();
}

int FactsPanel::cellsTop() const {
    return qRound(titleHeight * theme().textScale()) + belowTitle;
}

double FactsPanel::cellWidth() const {
    return (width() - 2.0 * Space::panelPadding - cellGap * (columns() - 1)) / columns();
}

int FactsPanel::heightFor(int) const {
    return cellsTop() + rows() * FactCell::cellHeight(theme()) + (rows() - 1) * rowGap + Space::panelPadding;
}

void FactsPanel::place() {
    const double wide = cellWidth();
    const int high = FactCell::cellHeight(theme());
    for (std::size_t i = 0; i < std::min(cells_.size(), model_.facts.size()); ++i) {
        const int column = static_cast<int>(i) % columns();
        const int row = static_cast<int>(i) / columns();
        cells_[i]->setGeometry(mirrored(QRect(qRound(Space::panelPadding + column * (wide + cellGap)),
                                              cellsTop() + row * (high + rowGap), qRound(wide), high)));
    }
}

void FactsPanel::resizeEvent(QResizeEvent* event) {
    Panel::resizeEvent(event);
    place();
}

void FactsPanel::themeChanged() {
    Panel::themeChanged();
    place();
}

void FactsPanel::keyPressEvent(QKeyEvent* event) {
    keyUsed();
    Panel::keyPressEvent(event);
}

void FactsPanel::paintEvent(QPaintEvent* event) {
    Panel::paintEvent(event);
    QPainter painter(this);
    const double wide = cellWidth();
    const int high = FactCell::cellHeight(theme());
    for (std::size_t i = 0; i < model_.facts.size(); ++i) {
        const int column = static_cast<int>(i) % columns();
        const int row = static_cast<int>(i) / columns();
        if (column + 1 == columns() || i + 1 == model_.facts.size())
            continue;
        const int x = qRound(Space::panelPadding + column * (wide + cellGap) + wide + cellGap / 2.0);
        painter.fillRect(mirrored(QRect(x, cellsTop() + row * (high + rowGap), 1, high)), color(Tone::line));
    }
    drawFocusRing(painter, QRectF(rect()).adjusted(2, 2, -2, -2), Space::panelRadius - 2);
}

} // namespace vantoro
