#include "Views/Suspects/SuspectsPanel.h"

#include <algorithm>
#include <QMouseEvent>

namespace vantoro {

namespace {
constexpr int bottomPadding = 12;
} // namespace

SuspectsPanel::SuspectsPanel(Look& look, QWidget* parent)
    : Panel(look, parent), all_(new Button(look, Button::Kind::quiet, {}, this)) {
    setMouseTracking(true);
    all_->setDrawnHeight(24);
    all_->hide();
    connect(all_, &Button::clicked, this, &SuspectsPanel::toggleAll);
}

// The rows are destroyed after this, and lose the pointer and the keyboard on the way.
SuspectsPanel::~SuspectsPanel() {
    for (const std::unique_ptr<Entry>& entry : entries_)
        entry->row->disconnect(this);
}

std::unique_ptr<SuspectsPanel::Entry> SuspectsPanel::newEntry() {
    auto entry = std::make_unique<Entry>();
    entry->row = new SuspectRow(look(), icons_, this);
    entry->row->setNarrow(isNarrow_);
    entry->row->hide();
    const Entry* const owned = entry.get();
    connect(entry->row, &SuspectRow::clicked, this, [this, owned] { unfold(*owned, !owned->row->isExpanded()); });
    connect(entry->row, &SuspectRow::unfoldAsked, this, [this, owned](bool unfolds) { unfold(*owned, unfolds); });
    connect(entry->row, &SuspectRow::quitAsked, this, [this, owned] { emit quitRequested(owned->quitPID); });
    connect(entry->row, &SuspectRow::attentionChanged, this, &SuspectsPanel::attentionChanged);
    connect(entry->row, &SuspectRow::entered, this, &SuspectsPanel::pointerAt);
    connect(entry->row, &SuspectRow::moved, this, [this, owned](int rows) { moveFocus(owned->row, rows); });
    return entry;
}

void SuspectsPanel::unfold(const Entry& entry, bool unfolds) {
    if (entry.row->isExpanded() == unfolds)
        return;
    for (const std::unique_ptr<Entry>& other : entries_)
        other->row->setExpanded(other.get() == &entry && unfolds);
    isUnfolding_ = true;
    emit unfolded(unfoldedKey());
    isUnfolding_ = false;
    placeRows(false);
    askForHeight();
    if (entry.row->hasKeyboard())
        emit rowReached(entry.row);
}

QString SuspectsPanel::unfoldedKey() const {
    for (std::size_t i = 0; i < used_; ++i)
        if (entries_[i]->row->isExpanded())
            return entries_[i]->row->key();
    return {};
}

std::size_t SuspectsPanel::shownRows() const {
    const std::size_t first = SuspectsModel::rowsAtFirst - (model_.unaccounted ? 1 : 0);
    return showsAll_ ? model_.rows.size() : std::min(model_.rows.size(), first);
}

bool SuspectsPanel::keepsOrder() const {
    if (!isVisible())
        return false;
    const QWidget* const at = childAtPointer();
    if (at == this || isAncestorOf(at))
        return true;
    return std::any_of(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(used_),
                       [](const std::unique_ptr<Entry>& entry) { return entry->row->hasKeyboard(); });
}

void SuspectsPanel::show(const SuspectsModel& model) {
    latest_ = model;
    if (!keepsOrder()) {
        arrange(model);
        return;
    }
    SuspectsModel kept = model;
    const auto placeBefore = [this](const SuspectRowModel& row) {
        return std::find_if(model_.rows.begin(), model_.rows.end(),
                            [&row](const SuspectRowModel& before) { return before.key == row.key; });
    };
    std::stable_sort(kept.rows.begin(), kept.rows.end(),
                     [&placeBefore](const SuspectRowModel& one, const SuspectRowModel& other) {
                         return placeBefore(one) < placeBefore(other);
                     });
    arrange(kept);
}

void SuspectsPanel::attentionChanged() {
    // A row that is hidden loses the keyboard and the pointer while the rows are being dealt out.
    if (isArranging_)
        return;
    followPointer();
    if (isVisible() && !keepsOrder())
        arrange(SuspectsModel(latest_));
}

QWidget* SuspectsPanel::childAtPointer() const {
    return pointer_ && isVisible() ? window()->childAt(window()->mapFromGlobal(*pointer_)) : nullptr;
}

void SuspectsPanel::pointerAt(const QPoint& screen) {
    pointer_ = screen;
    attentionChanged();
}

void SuspectsPanel::followPointer() {
    const QWidget* at = childAtPointer();
    while (at != nullptr && at->parentWidget() != this)
        at = at->parentWidget();
    for (const std::unique_ptr<Entry>& entry : entries_)
        if (entry->row->isHovered() != (entry->row == at))
            entry->row->setHovered(entry->row == at);
}

void SuspectsPanel::enterEvent(QEnterEvent* event) {
    pointerAt(event->globalPosition().toPoint());
    Panel::enterEvent(event);
}

void SuspectsPanel::mouseMoveEvent(QMouseEvent* event) {
    pointerAt(event->globalPosition().toPoint());
    Panel::mouseMoveEvent(event);
}

void SuspectsPanel::leaveEvent(QEvent* event) {
    pointer_.reset();
    attentionChanged();
    Panel::leaveEvent(event);
}

void SuspectsPanel::arrange(const SuspectsModel& model) {
    if (model == model_)
        return;
    const bool sameFrame =
        model.isPending == model_.isPending && model.emptyText == model_.emptyText && model.footer == model_.footer;
    model_ = model;
    setTitle(model.title);
    all_->setVisible(!model.showAll.isEmpty());
    if (model.unaccounted && unaccounted_ == nullptr) {
        unaccounted_ = new UnaccountedRow(look(), this);
        unaccounted_->setNarrow(isNarrow_);
    }
    if (unaccounted_ != nullptr) {
        unaccounted_->setVisible(model.unaccounted.has_value());
        unaccounted_->show(model.unaccounted.value_or(UnaccountedModel()), model.cores);
    }
    if (!sameFrame)
        update();
    dealRows(true);
}

void SuspectsPanel::dealRows(bool animated) {
    all_->setText(showsAll_ ? model_.showFewer : model_.showAll);
    placeButton();
    assignRows();
    placeRows(animated && !isUnfolding_);
    askForHeight();
}

void SuspectsPanel::assignRows() {
    isArranging_ = true;
    const std::size_t wanted = shownRows();
    // A row's widget stays with its application; the others take over the applications that are new.
    std::vector<std::unique_ptr<Entry>> spare;
    std::vector<std::unique_ptr<Entry>> order(wanted);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        std::unique_ptr<Entry>& entry = entries_[i];
        const auto place =
            i >= used_ ? model_.rows.begin() + static_cast<std::ptrdiff_t>(wanted)
                       : std::find_if(model_.rows.begin(), model_.rows.begin() + static_cast<std::ptrdiff_t>(wanted),
                                      [&](const SuspectRowModel& row) { return row.key == entry->row->key(); });
        const auto index = static_cast<std::size_t>(place - model_.rows.begin());
        if (index < wanted && order[index] == nullptr)
            order[index] = std::move(entry);
        else
            spare.push_back(std::move(entry));
    }
    int y = qRound(titleHeight * theme().textScale());
    for (std::size_t i = 0; i < wanted; ++i) {
        const SuspectRowModel& row = model_.rows[i];
        const bool isNew = order[i] == nullptr;
        if (isNew && !spare.empty()) {
            order[i] = std::move(spare.back());
            spare.pop_back();
        } else if (isNew) {
            order[i] = newEntry();
        }
        Entry& entry = *order[i];
        if (isNew)
            entry.row->setExpanded(false);
        entry.quitPID = row.quitPID;
        entry.row->show(row, model_);
        entry.row->setFirst(i == 0);
        if (isNew) {
            entry.row->jump();
            entry.y.set(y, look().clock.now(), std::nullopt);
        }
        entry.row->setVisible(true);
        y += entry.row->heightFor(width());
    }
    used_ = wanted;
    for (std::unique_ptr<Entry>& entry : spare) {
        entry->row->hide();
        order.push_back(std::move(entry));
    }
    entries_ = std::move(order);
    std::size_t stop = 0;
    for (std::size_t i = 0; i < used_; ++i)
        if (entries_[i]->row->focusPolicy() == Qt::StrongFocus)
            stop = i;
    setStop(stop);
    isArranging_ = false;
}

void SuspectsPanel::setStop(std::size_t index) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const Qt::FocusPolicy policy = i == index && i < used_ ? Qt::StrongFocus : Qt::ClickFocus;
        if (entries_[i]->row->focusPolicy() != policy)
            entries_[i]->row->setFocusPolicy(policy);
    }
}

void SuspectsPanel::placeRows(bool animated) {
    const double now = look().clock.now();
    const std::optional<Animation> animation = animated && isVisible() ? look().update() : std::nullopt;
    int y = qRound(titleHeight * theme().textScale());
    bool isMoving = false;
    for (std::size_t i = 0; i < used_; ++i) {
        Entry& entry = *entries_[i];
        const int height = entry.row->heightFor(width());
        if (entry.y.target() != y)
            entry.y.set(y, now, animation);
        if (entry.row->size() != QSize(width(), height))
            entry.row->resize(width(), height);
        isMoving = isMoving || !entry.y.isAtRest(now);
        y += height;
    }
    if (isMoving)
        look().clock.run(*this);
    advance(now);
    if (unaccounted_ != nullptr) {
        unaccounted_->setGeometry(0, y, width(), SuspectPlaces::rowHeight(theme()));
        unaccounted_->setFirst(used_ == 0);
        unaccounted_->lower(); // what is on its way passes over it
    }
    chooseCaption();
}

bool SuspectsPanel::advance(double now) {
    bool isMoving = false;
    for (std::size_t i = 0; i < used_; ++i) {
        const Entry& entry = *entries_[i];
        const int y = qRound(entry.y.at(now));
        const bool isUnderWay = !entry.y.isAtRest(now);
        if (entry.row->pos() != QPoint(0, y))
            entry.row->move(0, y);
        entry.row->setMoving(isUnderWay);
        isMoving = isMoving || isUnderWay;
    }
    followPointer();
    return isMoving;
}

void SuspectsPanel::toggleAll() {
    showsAll_ = !showsAll_;
    dealRows(false);
}

void SuspectsPanel::moveFocus(const SuspectRow* from, int rows) {
    for (std::size_t i = 0; i < used_; ++i) {
        if (entries_[i]->row != from)
            continue;
        const int last = static_cast<int>(used_) - 1;
        const auto to = static_cast<std::size_t>(std::clamp(static_cast<int>(i) + rows, 0, last));
        setStop(to);
        entries_[to]->row->setFocus(Qt::OtherFocusReason);
        emit rowReached(entries_[to]->row);
        return;
    }
}

void SuspectsPanel::setNarrow(bool narrow) {
    if (narrow == isNarrow_)
        return;
    isNarrow_ = narrow;
    for (const std::unique_ptr<Entry>& entry : entries_)
        entry->row->setNarrow(narrow);
    if (unaccounted_ != nullptr)
        unaccounted_->setNarrow(narrow);
    chooseCaption();
}

void SuspectsPanel::chooseCaption() {
    const auto shown = entries_.begin() + static_cast<std::ptrdiff_t>(used_);
    const bool hasGraphics =
        std::any_of(entries_.begin(), shown, [](const auto& entry) { return entry->row->hasGraphics(); });
    setCaptionMark(hasGraphics ? QStringLiteral("cube.transparent") : QString(), model_.graphicsCaption);
    const bool hasCells = used_ == 0 || entries_.front()->row->hasCells();
    // Beside what explains the second bar the longer caption may find no room.
    const bool isLong = hasCells && (!hasGraphics || hasRoomForCaption(model_.caption));
    setCaption(isLong ? model_.caption : model_.captionWithoutCells);
}

int SuspectsPanel::footerHeight(int width) const {
    if (model_.footer.isEmpty())
        return 0;
    const auto lines = brokenLines(model_.footer, font(Type::caption), width - 2 * Space::panelPadding).size();
    return static_cast<int>(static_cast<double>(lines) * lineHeight(Type::caption)) + 2 * SuspectPlaces::footerPadding;
}

int SuspectsPanel::heightFor(int width) const {
    int rows = 0;
    for (std::size_t i = 0; i < used_; ++i)
        rows += entries_[i]->row->heightFor(width);
    rows += model_.unaccounted ? SuspectPlaces::rowHeight(theme()) : 0;
    rows = std::max(rows, SuspectsModel::rowsAtFirst * SuspectPlaces::rowHeight(theme()));
    return qRound(titleHeight * theme().textScale()) + rows + bottomPadding + footerHeight(width);
}

void SuspectsPanel::askForHeight() {
    const int height = heightFor(width());
    if (height == askedHeight_)
        return;
    askedHeight_ = height;
    emit heightChanged();
}

void SuspectsPanel::placeButton() {
    // Its text, not its edge, stands in line with what is below.
    const QSize button = all_->sizeHint();
    const QPoint corner(width() - Space::panelPadding + Button::ringMargin + Button::smallSidePadding - button.width(),
                        (qRound(titleHeight * theme().textScale()) - button.height()) / 2);
    all_->setGeometry(mirrored(QRect(corner, button)));
    setRoomAtRight(
        model_.showAll.isEmpty() ? 0 : button.width() - 2 * Button::ringMargin - 2 * Button::smallSidePadding + 12);
}

void SuspectsPanel::resizeEvent(QResizeEvent* event) {
    Panel::resizeEvent(event);
    askedHeight_ = heightFor(width());
    placeButton();
    placeRows(false);
}

void SuspectsPanel::hideEvent(QHideEvent* event) {
    look().clock.stop(*this);
    for (const std::unique_ptr<Entry>& entry : entries_)
        entry->y.set(entry->y.target(), look().clock.now(), std::nullopt);
    advance(look().clock.now());
    Panel::hideEvent(event);
}

void SuspectsPanel::themeChanged() {
    Panel::themeChanged();
    placeButton();
    placeRows(false);
}

Description SuspectsPanel::describe() {
    QString name = model_.title;
    if (!model_.emptyText.isEmpty())
        name += QStringLiteral(": ") + model_.emptyText;
    return {.role = QAccessible::Tree, .name = name, .value = model_.footer};
}

} // namespace vantoro
