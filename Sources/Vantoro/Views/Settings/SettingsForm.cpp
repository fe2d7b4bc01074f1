#include "Views/Settings/SettingsForm.h"

#include <QPainter>

namespace vantoro {

namespace {
constexpr int rowHeight = 44;
constexpr int groupGap = 24;
constexpr int titleGap = 8;
constexpr int noteBottom = 12;
/// How much nearer the next thing stands to a row's text than the row's full height would have it.
constexpr int lineCutWithNote = 4;
constexpr int lineCutWithWideControl = 6;
constexpr int gapUnderWideControl = 9;
constexpr int controlGap = 13;
} // namespace

SettingsRow::SettingsRow(Look& look, const QString& title, QWidget* parent)
    : PaintedWidget(look, parent)
    , line_(new QWidget(this))
    , lineLayout_(new QHBoxLayout(line_))
    , rows_(new QVBoxLayout(this))
    , noteLayout_(new QHBoxLayout)
    , title_(new TextLabel(look, Type::body, Tone::textPrimary, line_))
    , value_(new TextLabel(look, Type::body, Tone::textSecondary, line_))
    , note_(new TextLabel(look, Type::note, Tone::textSecondary, this))
    , rightMargin_(Space::panelPadding) {
    title_->setText(title);
    note_->setWraps(true);
    note_->hide();
    value_->setAlignment(Qt::AlignRight);
    value_->hide();
    lineLayout_->setSpacing(controlGap);
    lineLayout_->addWidget(title_);
    lineLayout_->addStretch(1);
    lineLayout_->addWidget(value_);
    rows_->setContentsMargins(0, 0, 0, 0);
    rows_->setSpacing(0);
    rows_->addWidget(line_);
    setRoomAboveNote(0);
    noteLayout_->addWidget(note_);
    rows_->addLayout(noteLayout_);
    placeLine();
}

void SettingsRow::setValue(const QString& value) {
    value_->setText(value);
    value_->show();
    // Of the two, it is the value that is cut.
    title_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
}

void SettingsRow::setControl(QWidget& control, int ringMargin) {
    rightMargin_ = Space::panelPadding - ringMargin;
    lineLayout_->setSpacing(controlGap - ringMargin);
    lineLayout_->addWidget(&control);
    placeLine();
}

void SettingsRow::setWideControl(QWidget& control, int ringMargin) {
    wide_ = &control;
    auto* const layout = new QHBoxLayout; // owned by the layout it is added to
    const int side = Space::panelPadding - ringMargin;
    layout->setContentsMargins(side, 0, side, gapUnderWideControl);
    layout->addWidget(&control);
    rows_->insertLayout(1, layout);
    placeLine();
}

void SettingsRow::setNote(const QString& note) {
    note_->setText(note);
    note_->setVisible(!note.isEmpty());
    placeLine();
}

void SettingsRow::placeLine() {
    const double scale = theme().textScale();
    const bool hasNote = !note_->text().isEmpty();
    const int cut = wide_ != nullptr ? lineCutWithWideControl : hasNote ? lineCutWithNote : 0;
    const QMargins margins(Space::panelPadding, cut, rightMargin_, 0);
    lineLayout_->setContentsMargins(isRightToLeft() ? QMargins(margins.right(), cut, margins.left(), 0) : margins);
    line_->setFixedHeight(qRound(rowHeight * scale) - cut);
    rows_->setContentsMargins(0, 0, 0, hasNote ? noteBottom + (wide_ != nullptr ? 2 : 0) : 0);
}

SettingsGroup::SettingsGroup(Look& look, const QString& title, QWidget* parent)
    : PaintedWidget(look, parent), title_(title), layout_(new QVBoxLayout(this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
}

SettingsRow& SettingsGroup::addRow(const QString& title) {
    auto* const row = new SettingsRow(look(), title, this);
    layout_->addWidget(row);
    rows_.push_back(row);
    return *row;
}

Description SettingsGroup::describe() {
    return {.role = QAccessible::Grouping, .name = title_};
}

void SettingsGroup::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(Tone::panel));
    painter.drawRoundedRect(rect(), Space::panelRadius, Space::panelRadius);
    for (std::size_t i = 1; i < rows_.size(); ++i)
        if (!rows_[i]->isHidden())
            painter.fillRect(QRect(Space::panelPadding, rows_[i]->y(), width() - 2 * Space::panelPadding, 1),
                             color(Tone::line));
}

SettingsForm::SettingsForm(Look& look, QWidget* parent)
    : ScrollPane(look, parent), look_(look), lastWord_(new TextLabel(look, Type::note, Tone::textTertiary, widget())) {
    lastWord_->setWraps(true);
    column()->setSpacing(0);
    // The pane's own margin above is 8.
    column()->addSpacing(groupGap - 8);
    column()->addSpacing(groupGap);
    column()->addLayout(inset(lastWord_, 8));
    column()->addStretch(1);
}

QLayout* SettingsForm::inset(TextLabel* label, int below) {
    auto* const layout = new QHBoxLayout; // owned by the layout it is added to
    layout->setContentsMargins(Space::panelPadding, 0, Space::panelPadding, below);
    layout->addWidget(label);
    return layout;
}

SettingsGroup& SettingsForm::addGroup(const QString& title) {
    auto* const heading = new TextLabel(look_, Type::sectionTitle, Tone::textPrimary, widget());
    heading->setText(title);
    heading->setHeading(true);
    auto* const group = new SettingsGroup(look_, title, widget());
    // The gap, the last word and the stretch stay behind the new group.
    constexpr int behind = 3;
    const auto insert = [this] { return column()->count() - behind; };
    if (groups_++ > 0)
        column()->insertSpacing(insert(), groupGap);
    column()->insertLayout(insert(), inset(heading, titleGap));
    column()->insertWidget(insert(), group);
    return *group;
}

} // namespace vantoro
