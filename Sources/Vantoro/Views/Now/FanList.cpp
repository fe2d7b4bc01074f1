#include "Views/Now/FanList.h"

#include "Design/TextLabel.h"

#include <algorithm>
#include <QPainter>

namespace vantoro {

namespace {
constexpr int listWidth = 176;
constexpr int rowHeight = 26;
constexpr int figureGap = 12;
constexpr int footPadding = 6;
constexpr TextStyle figureStyle = Type::small.medium();
} // namespace

/// One fan, or the way to those that are left out.
class FanList::Line : public Pressable {
public:
    Line(Look& look, QWidget* parent) : Pressable(look, parent) {}

    void show(const FanListModel::Row& row) {
        if (row == row_)
            return;
        const bool speaksAnew = row.spoken != row_.spoken;
        row_ = row;
        explainCut();
        update();
        if (speaksAnew)
            announceChange(QAccessible::NameChanged);
    }
    using PaintedWidget::show;

    Description describe() override {
        return {.role = isPressable() ? QAccessible::Button : QAccessible::ListItem,
                .name = row_.spoken,
                .actions = pressAction()};
    }

protected:
    bool isPressable() const override { return row_.figure.isEmpty(); }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        drawText(painter, QRectF(0, 0, nameWidth(), height()), Type::small,
                 color(isPressable() && isHovered() ? Tone::textPrimary : Tone::textSecondary), row_.name);
        drawText(painter, QRectF(rect()), figureStyle, color(Tone::textPrimary), row_.figure, Qt::AlignRight,
                 Qt::ElideNone);
    }

    void resizeEvent(QResizeEvent* event) override {
        explainCut();
        Pressable::resizeEvent(event);
    }

private:
    double nameWidth() const {
        return row_.figure.isEmpty() ? width() : width() - textWidth(figureStyle, row_.figure) - figureGap;
    }
    void explainCut() { setToolTip(textWidth(Type::small, row_.name) > nameWidth() ? row_.name : QString()); }

    FanListModel::Row row_;
};

FanList::FanList(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void FanList::show(const FanListModel& model) {
    if (model == model_)
        return;
    const bool isOtherSize = model.rows.size() != model_.rows.size() || model.foot != model_.foot;
    model_ = model;
    while (lines_.size() < model.rows.size()) {
        lines_.push_back(new Line(look(), this));
        connect(lines_.back(), &Pressable::clicked, this, &FanList::moreRequested);
        lines_.back()->show();
    }
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        lines_[i]->setVisible(i < model.rows.size());
        if (i < model.rows.size())
            lines_[i]->show(model.rows[i]);
    }
    if (!isOtherSize)
        return;
    updateGeometry();
    place();
    update();
}

int FanList::rowHigh() const {
    return qRound(rowHeight * theme().textScale());
}

QStringList FanList::foot() const {
    return brokenLines(model_.foot, font(Type::caption), listWidth * theme().textScale());
}

QSize FanList::sizeHint() const {
    const int foot = qRound(static_cast<double>(this->foot().size()) * lineHeight(Type::caption));
    return {qRound(listWidth * theme().textScale()),
            static_cast<int>(model_.rows.size() + 1) * rowHigh() + 2 * footPadding + foot};
}

Description FanList::describe() {
    return {.role = QAccessible::List, .name = model_.title, .value = model_.foot};
}

void FanList::place() {
    for (std::size_t i = 0; i < lines_.size(); ++i)
        lines_[i]->setGeometry(0, static_cast<int>(i + 1) * rowHigh(), width(), rowHigh() - 1);
}

void FanList::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const int high = rowHigh();
    const QRectF head(0, 0, width(), high - 1);
    drawText(painter, head, Type::caption, color(Tone::textTertiary), model_.title);
    drawText(painter, head, Type::caption, color(Tone::textTertiary), model_.unit, Qt::AlignRight);
    const int bottom = static_cast<int>(model_.rows.size() + 1) * high;
    for (int y = high; y <= bottom; y += high)
        painter.fillRect(QRectF(0, y - 1, width(), 1), color(Tone::line));
    drawLines(painter, QRectF(0, bottom + footPadding - 1, width(), height() - bottom), Type::caption,
              color(Tone::textTertiary), foot());
}

void FanList::resizeEvent(QResizeEvent* event) {
    place();
    PaintedWidget::resizeEvent(event);
}

void FanList::themeChanged() {
    place();
}

} // namespace vantoro
