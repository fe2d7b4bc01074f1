#include "Views/Suspects/SuspectRow.h"

#include "Design/Panel.h"

#include <algorithm>
#include <initializer_list>
#include <QKeyEvent>
#include <QPainter>
#include <QPaintEvent>

namespace vantoro {

namespace {

constexpr int tileSize = 28;
constexpr int textLeft = Space::panelPadding + tileSize + 12;
constexpr int figureWidth = 52;
constexpr int barGap = 12;
constexpr int quitHeight = 24;
constexpr int explanationGap = 2;
constexpr int detailsGap = 6;
constexpr int expandedBottom = 12;
/// From this text scale on the bar has a line of its own.
constexpr double stackedScale = 1.25;
constexpr int stackedBar = 14;
constexpr double fadeSeconds = 0.3;

int plainTextHeight(const Theme& theme) {
    const double lines = lineHeightOf(Type::body, theme) + lineHeightOf(Type::caption, theme);
    return std::max(48, static_cast<int>(lines) + 12);
}

} // namespace

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
    expandAction_ = words.expandAction;
    quitAction_ = words.quitAction;
    cores_ = words.cores;
    forceAction_ = words.forceAction;
    bar_->show(model.percent, words.cores, model.heatStop);
    if (model == model_)
        return;
    SuspectRowModel before = model_;
    model_ = model;
    if (before.key != model.key)
        jump();
    fade_.set(model.quitting.isEmpty() ? 0 : 1, fadeSeconds, isVisible() && before.key == model.key);
    before.percent = model.percent;
    before.figure = model.figure;
    before.spokenFigure = model.spokenFigure;
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

void SuspectRow::jump() {
    bar_->jump();
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
    update();
    announceChange(QAccessible::StateChanged);
}

void SuspectRow::setNarrow(bool narrow) {
    if (narrow == isNarrow_)
        return;
    isNarrow_ = narrow;
    place();
    update();
}

void SuspectRow::setFirst(bool first) {
    if (first == isFirst_)
        return;
    isFirst_ = first;
    update();
}

bool SuspectRow::isStacked() const {
    return theme().textScale() >= stackedScale;
}

int SuspectRow::plainHeight(const Theme& theme) {
    return plainTextHeight(theme) + (theme.textScale() >= stackedScale ? stackedBar : 0);
}

int SuspectRow::heightFor(int width) const {
    int height = plainHeight(theme());
    if (!isExpanded_)
        return height;
    if (!model_.explanation.isEmpty()) {
        const auto lines =
            brokenLines(model_.explanation, font(Type::note), width - textLeft - Space::panelPadding).size();
        height += static_cast<int>(static_cast<double>(lines) * lineHeight(Type::note)) + detailsGap;
    }
    return height - explanationGap + static_cast<int>(lineHeight(Type::caption)) + expandedBottom;
}

QRect SuspectRow::figureRect() const {
    const int wide = qRound(figureWidth * theme().textScale());
    return {width() - Space::panelPadding - wide, 0, wide, plainTextHeight(theme())};
}

QRect SuspectRow::barRect() const {
    const QRect figure = figureRect();
    const int height = bar_->sizeHint().height();
    // The wider button stands at the bar's end, and the bar begins where every other does.
    const int taken = model_.offersForce ? std::max(0, quitWidth() - 2 * Button::ringMargin - figure.width()) : 0;
    if (isStacked())
        return {textLeft, plainTextHeight(theme()), width() - textLeft - Space::panelPadding, height};
    const int wide = isNarrow_ ? 128 : 220;
    return {figure.left() - barGap - wide, (figure.height() - height) / 2, wide - taken, height};
}

double SuspectRow::nameWidth() const {
    const int right = isStacked() ? figureRect().left() : barRect().left();
    return std::max(0, right - barGap - textLeft);
}

int SuspectRow::quitWidth() const {
    return std::max(quit_->sizeHint().width(), figureWidth + 2 * Button::ringMargin);
}

void SuspectRow::place() {
    bar_->setGeometry(mirrored(barRect()));
    const QSize button = quit_->sizeHint();
    const int drawn = quitWidth();
    quit_->setGeometry(mirrored(QRect(width() - Space::panelPadding + Button::ringMargin - drawn,
                                      (plainTextHeight(theme()) - button.height()) / 2, drawn, button.height())));
}

void SuspectRow::resizeEvent(QResizeEvent*) {
    place();
}

void SuspectRow::themeChanged() {
    place();
}

void SuspectRow::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isMoving_)
        painter.fillRect(rect(), color(Tone::panel));
    if (isHovered())
        painter.fillRect(rect(), color(Tone::hover));
    if (bar_->geometry().contains(event->rect()))
        return;
    const double plain = plainTextHeight(theme());

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

    if (isExpanded_) {
        const double wide = width() - textLeft - Space::panelPadding;
        double y = plainHeight(theme()) - explanationGap;
        if (!model_.explanation.isEmpty()) {
            y = drawLines(painter, {textLeft, y, wide, 0}, Type::note, color(Tone::textSecondary),
                          brokenLines(model_.explanation, font(Type::note), wide)) +
                detailsGap;
        }
        drawText(painter, {textLeft, y, wide, aboutHeight}, Type::caption, color(Tone::textTertiary), model_.details);
    }
    if (!isFirst_)
        painter.fillRect(mirrored(QRect(textLeft, 0, width() - textLeft - Space::panelPadding, 1)), color(Tone::line));
    drawFocusRing(painter, QRectF(rect()).adjusted(4, 2, -4, -2), Space::buttonRadius);
}

void SuspectRow::paintFigure(QPainter& painter) {
    const double faded = fade_.value();
    if (faded < 1) {
        painter.setOpacity(1 - faded);
        drawText(painter, figureRect(), model_.heatStop ? Type::body.semibold() : Type::body.medium(),
                 color(Tone::textPrimary), model_.figure, Qt::AlignRight, Qt::ElideNone);
    }
    if (faded > 0) {
        painter.setOpacity(faded);
        drawText(painter, figureRect(), Type::caption, color(Tone::textSecondary), model_.quitting, Qt::AlignRight,
                 Qt::ElideNone);
    }
    painter.setOpacity(1);
}

Description SuspectRow::describe() {
    Description what{.role = QAccessible::ListItem,
                     .name = model_.name + QStringLiteral(", ") + model_.about,
                     .value = model_.quitting.isEmpty() ? model_.spokenFigure : model_.quitting,
                     .isExpanded = isExpanded_,
                     .isExpandable = true,
                     .actions = pressAction(expandAction_)};
    if (isExpanded_)
        what.name += QStringLiteral(". ") + model_.explanation + u' ' + model_.details;
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
