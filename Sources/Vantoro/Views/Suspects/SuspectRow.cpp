#include "Views/Suspects/SuspectRow.h"

#include <algorithm>
#include <initializer_list>
#include <QKeyEvent>
#include <utility>

namespace vantoro {

namespace {

constexpr int quitHeight = 24;
constexpr int expandedBottom = 12;
constexpr double fadeSeconds = 0.3;

} // namespace

using namespace SuspectPlaces;

SuspectRow::SuspectRow(Look& look, AppIcons& icons, QWidget* parent)
    : Pressable(look, parent)
    , icons_(icons)
    , bar_(new CoreBar(look, this))
    , quit_(new Button(look, Button::Kind::bordered, {}, this))
    , fade_(look, 0, [this] { update(mirrored(figureRect())); }) {
    setFocusPolicy(Qt::ClickFocus);
    // The list hears every movement of the pointer, whichever part of a row it is over.
    for (QWidget* const part : std::initializer_list<QWidget*>{this, bar_, quit_})
        part->setMouseTracking(true);
    quit_->setDrawnHeight(quitHeight);
    quit_->setFocusPolicy(Qt::NoFocus);
    quit_->hide();
    connect(quit_, &Button::clicked, this, &SuspectRow::quitAsked);
}

void SuspectRow::show(const SuspectRowModel& model, const SuspectsModel& words) {
    unfoldAction_ = words.unfoldAction;
    foldAction_ = words.foldAction;
    unfoldedWord_ = words.unfoldedWord;
    quitAction_ = words.quitAction;
    cores_ = words.cores;
    forceAction_ = words.forceAction;
    bar_->show(model.percent, words.cores, model.coreStop());
    if (model.graphicsPercent && graphics_ == nullptr) {
        graphics_ = new CoreBar(look(), this);
        graphics_->setBarHeight(graphicsHeight);
    }
    if (graphics_ != nullptr) {
        graphics_->show(model.graphicsPercent.value_or(0), 1, model.graphicsStop());
        graphics_->setVisible(model.graphicsPercent.has_value());
    }
    if (model == model_)
        return;
    SuspectRowModel before = std::exchange(model_, model);
    if (before.key != model.key)
        jump();
    else if (isExpanded_ && !before.members.empty())
        keepMembersOrder(before.members);
    showMembers();
    fade_.set(model.quitting.isEmpty() ? 0 : 1, fadeSeconds, isVisible() && before.key == model.key);
    before.percent = model.percent;
    before.figure = model.figure;
    before.spokenFigure = model.spokenFigure;
    if (before.members.size() == model.members.size())
        before.members = model.members;
    if (before.graphicsPercent && model.graphicsPercent) {
        before.graphicsPercent = model.graphicsPercent;
        before.graphicsFigure = model.graphicsFigure;
    }
    if (!isExpanded_)
        before.details = model.details;
    if (before == model) {
        update(mirrored(figureRect()));
    } else {
        quit_->setText(model_.offersForce ? forceAction_ : quitAction_);
        setToolTip(QString());
        showQuit();
        place();
        update();
    }
    announceChange();
}

void SuspectRow::keepMembersOrder(const std::vector<MemberModel>& before) {
    std::ranges::stable_sort(model_.members, {}, [&before](const MemberModel& member) {
        const auto place = std::ranges::find(before, member.key, &MemberModel::key) - before.begin();
        return std::pair(member.isSummary, member.isSummary ? 0 : place);
    });
}

void SuspectRow::showMembers() {
    const std::size_t count = isExpanded_ ? model_.members.size() : 0;
    memberRoom_ = count == 0 ? 0 : std::max(memberRoom_, count);
    while (members_.size() < count)
        members_.push_back(new MemberLine(look(), this));
    for (std::size_t i = 0; i < members_.size(); ++i) {
        if (i < count)
            members_[i]->show(model_.members[i], cores_, isNarrow_);
        members_[i]->setVisible(i < count);
    }
}

void SuspectRow::jump() {
    bar_->jump();
    if (graphics_ != nullptr)
        graphics_->jump();
    fade_.settle();
    cancelPress();
    quit_->cancelPress();
}

void SuspectRow::setMoving(bool moving) {
    if (moving == isMoving_)
        return;
    isMoving_ = moving;
    update();
}

void SuspectRow::setExpanded(bool expanded) {
    if (expanded == isExpanded_)
        return;
    isExpanded_ = expanded;
    memberRoom_ = 0;
    showMembers();
    place();
    update();
    announceChange(QAccessible::StateChanged);
}

void SuspectRow::setNarrow(bool narrow) {
    if (narrow == isNarrow_)
        return;
    isNarrow_ = narrow;
    showMembers();
    place();
    update();
}

void SuspectRow::setFirst(bool first) {
    if (first == isFirst_)
        return;
    isFirst_ = first;
    update();
}

int SuspectRow::plainHeight() const {
    return rowHeight(theme()) + (isStacked() && hasGraphics() ? betweenBars : 0);
}

int SuspectRow::explanationHeight(int width) const {
    if (model_.explanation.isEmpty())
        return 0;
    const auto lines = brokenLines(model_.explanation, font(Type::note), width - textLeft - Space::panelPadding).size();
    return static_cast<int>(static_cast<double>(lines) * lineHeight(Type::note)) + detailsGap;
}

int SuspectRow::heightFor(int width) const {
    if (!isExpanded_)
        return plainHeight();
    const int members =
        static_cast<int>(memberRoom_) * MemberLine::heightIn(theme()) + (memberRoom_ > 0 ? membersGap : 0);
    return plainHeight() + explanationHeight(width) + members - explanationGap +
           static_cast<int>(lineHeight(Type::caption)) + expandedBottom;
}

QRect SuspectRow::figureRect() const {
    return figure(theme(), width(), textHeight(theme()));
}

QRect SuspectRow::barRect() const {
    QRect bar = SuspectPlaces::bar(theme(), width(), textHeight(theme()), bar_->sizeHint().height(), isNarrow_);
    // The wider button stands at the bar's end, and the bar begins where every other does.
    if (model_.offersForce && !isStacked())
        bar.setWidth(bar.width() - std::max(0, quitWidth() - 2 * Button::ringMargin - figureRect().width()));
    if (!hasGraphics())
        return bar;
    if (isStacked())
        bar.setLeft(bar.left() + barIcon + barIconGap);
    else
        bar.moveTop((textHeight(theme()) - rowAtFirst) / 2 + upperBar - bar.height() / 2);
    return bar;
}

QRect SuspectRow::graphicsRect() const {
    QRect bar = barRect();
    const int down = isStacked() ? betweenBars : lowerBar - upperBar;
    return {bar.left(), bar.top() + down + (bar.height() - graphicsHeight) / 2, bar.width(), graphicsHeight};
}

double SuspectRow::nameWidth() const {
    const int icon = hasGraphics() ? barIcon + barIconGap : 0;
    const int right = isStacked() ? figureRect().left() : barRect().left() - icon;
    return std::max(0, right - barGap - textLeft);
}

int SuspectRow::quitWidth() const {
    return std::max(quit_->sizeHint().width(), figureWidth + 2 * Button::ringMargin);
}

void SuspectRow::place() {
    bar_->setGeometry(mirrored(barRect()));
    if (graphics_ != nullptr)
        graphics_->setGeometry(mirrored(graphicsRect()));
    const int line = MemberLine::heightIn(theme());
    int y = plainHeight() - explanationGap + explanationHeight(width());
    for (MemberLine* const member : members_) {
        member->setGeometry(0, y, width(), line);
        y += line;
    }
    const QSize button = quit_->sizeHint();
    const int drawn = quitWidth();
    quit_->setGeometry(mirrored(QRect(width() - Space::panelPadding + Button::ringMargin - drawn,
                                      (textHeight(theme()) - button.height()) / 2, drawn, button.height())));
}

void SuspectRow::resizeEvent(QResizeEvent*) {
    place();
}

void SuspectRow::themeChanged() {
    place();
}

Description SuspectRow::describe() {
    const QString comma = QStringLiteral(", ");
    Description what{.role = QAccessible::TreeItem,
                     .name = model_.name + comma + QString(model_.about).replace(QStringLiteral(" · "), comma),
                     .value = model_.quitting.isEmpty() ? model_.spokenFigure : model_.quitting,
                     .isExpanded = isExpanded_,
                     .isExpandable = true,
                     .actions = pressAction(isExpanded_ ? foldAction_ : unfoldAction_)};
    if (isExpanded_) {
        QStringList known{model_.explanation, model_.folder, model_.details};
        known.removeAll(QString());
        what.name += comma + unfoldedWord_ + QStringLiteral(". ") + known.join(comma);
    }
    if (model_.offersQuit)
        what.actions.push_back({quit_->text(), [this] { emit quitAsked(); }});
    return what;
}

void SuspectRow::showQuit() {
    quit_->setVisible(model_.offersForce || (isHovered() && model_.offersQuit));
}

void SuspectRow::setHovered(bool hovered) {
    Pressable::setHovered(hovered);
    showQuit();
    const double room = nameWidth();
    const bool isCut =
        textWidth(Type::body.semibold(), model_.name) > room || textWidth(Type::caption, model_.about) > room;
    setToolTip(hovered && isCut ? model_.name + u'\n' + model_.about : QString());
}

void SuspectRow::enterEvent(QEnterEvent* event) {
    Pressable::enterEvent(event);
    emit entered(event->globalPosition().toPoint());
}

void SuspectRow::leaveEvent(QEvent* event) {
    Pressable::leaveEvent(event);
    emit attentionChanged();
}

void SuspectRow::hideEvent(QHideEvent* event) {
    setHovered(false);
    fade_.settle();
    Pressable::hideEvent(event);
}

void SuspectRow::keyPressEvent(QKeyEvent* event) {
    keyUsed();
    constexpr int toTheEnd = 10'000;
    switch (event->key()) {
    case Qt::Key_Right:
    case Qt::Key_Left:
        emit unfoldAsked((event->key() == Qt::Key_Right) != isRightToLeft());
        break;
    case Qt::Key_Up:
        emit moved(-1);
        break;
    case Qt::Key_Down:
        emit moved(1);
        break;
    case Qt::Key_Home:
        emit moved(-toTheEnd);
        break;
    case Qt::Key_End:
        emit moved(toTheEnd);
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (model_.offersQuit)
            emit quitAsked();
        break;
    default:
        Pressable::keyPressEvent(event);
    }
}

void SuspectRow::focusOutEvent(QFocusEvent* event) {
    Pressable::focusOutEvent(event);
    emit attentionChanged();
}

} // namespace vantoro
