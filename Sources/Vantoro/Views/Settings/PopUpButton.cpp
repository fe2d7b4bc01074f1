#include "Views/Settings/PopUpButton.h"

#include "Design/Panel.h"

#include <algorithm>
#include <cmath>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>

namespace vantoro {

namespace {
constexpr int drawnHeight = 26;
constexpr int leftPadding = 10;
constexpr int chevronSize = 12;
constexpr int chevronGap = 10;
constexpr int rightPadding = 6;

// Of the list.
constexpr int inset = 5;
constexpr int rowPoints = 26;
constexpr int tickWidth = 26;
constexpr int sidePadding = 12;
constexpr int gapToAnchor = 4;
} // namespace

PopUpButton::PopUpButton(Look& look, const QStringList& choices, QWidget* parent)
    : Pressable(look, parent), choices_(choices) {
    setFocusPolicy(Qt::StrongFocus);
    setPressedAtOnce();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PopUpButton::setCurrent(int index) {
    if (index == current_ || index < 0 || index >= choices_.size())
        return;
    current_ = index;
    update();
    announceChange();
}

void PopUpButton::press() {
    auto* const list = new ChoiceList(look(), choices_, current_, this); // deletes itself when it closes
    connect(list, &ChoiceList::chosen, this, [this](int index) {
        if (index == current_)
            return;
        setCurrent(index);
        emit chosen(index);
    });
    list->openAt(*this, drawnRect());
}

bool PopUpButton::isPressKey(int key) const {
    return key == Qt::Key_Up || key == Qt::Key_Down || Pressable::isPressKey(key);
}

QRect PopUpButton::drawnRect() const {
    return rect().adjusted(ringMargin, ringMargin, -ringMargin, -ringMargin);
}

QSize PopUpButton::sizeHint() const {
    double widest = 0;
    for (const QString& choice : choices_)
        widest = std::max(widest, textWidth(Type::body, choice));
    return {static_cast<int>(std::ceil(widest)) + leftPadding + chevronGap + chevronSize + rightPadding +
                2 * ringMargin,
            qRound(drawnHeight * theme().textScale()) + 2 * ringMargin};
}

Description PopUpButton::describe() {
    return {.role = QAccessible::ComboBox,
            .name = spokenName(),
            .value = choices_[current_],
            .actions = pressAction(QAccessibleActionInterface::showMenuAction())};
}

void PopUpButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF drawn = drawnRect();
    constexpr double radius = Space::buttonRadius - 2;
    painter.setPen(QPen(color(Tone::buttonLine), 1));
    painter.setBrush(color(isHovered() ? Tone::buttonHover : Tone::button));
    painter.drawRoundedRect(drawn.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    const QRectF chevron(drawn.right() - rightPadding - chevronSize, drawn.top(), chevronSize, drawn.height());
    const QRectF text(drawn.left() + leftPadding, drawn.top(),
                      chevron.left() - chevronGap - drawn.left() - leftPadding + 1, drawn.height());
    drawIcon(painter, chevron, "chevron.up.down", chevronSize, color(Tone::textSecondary));
    drawText(painter, text, Type::body, color(Tone::textPrimary), choices_[current_]);
    drawFocusRing(painter, QRectF(rect()), radius + ringMargin - 1);
}

ChoiceList::ChoiceList(Look& look, const QStringList& choices, int current, QWidget* parent)
    : PaintedWidget(look, parent), choices_(choices), current_(current), highlighted_(std::max(0, current)) {
    setWindowFlags(Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_DeleteOnClose);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    for (int i = 0; i < choices_.size(); ++i)
        rows_.push_back(new SpokenPart(look, this, [this, i] {
            return Description{.role = QAccessible::ListItem,
                               .name = choices_[i],
                               .isSelected = highlighted_ == i,
                               .isSelectable = true,
                               .actions = {{QAccessibleActionInterface::pressAction(), [this, i] { choose(i); }}}};
        }));
}

void ChoiceList::openAt(const QWidget& anchor, const QRect& drawn) {
    const QSize size = sizeHint().expandedTo({drawn.width(), 0});
    const QPoint below = anchor.mapToGlobal(drawn.bottomLeft() + QPoint(0, gapToAnchor + 1));
    const QPoint above = anchor.mapToGlobal(drawn.topLeft() - QPoint(0, gapToAnchor + size.height()));
    QRect placed(below, size);
    if (const QScreen* const screen = anchor.screen()) {
        const QRect available = screen->availableGeometry();
        if (placed.bottom() > available.bottom() && above.y() >= available.top())
            placed.moveTop(above.y());
        placed.moveLeft(std::clamp(placed.left(), available.left(),
                                   std::max(available.left(), available.right() - placed.width())));
    }
    setGeometry(placed);
    show();
    setFocus(Qt::PopupFocusReason);
    rows_[static_cast<std::size_t>(highlighted_)]->announceChange(QAccessible::Focus);
}

double ChoiceList::rowHeight() const {
    return std::round(rowPoints * theme().textScale());
}

QRectF ChoiceList::rowRect(int index) const {
    return {double(inset), inset + index * rowHeight(), width() - 2.0 * inset, rowHeight()};
}

int ChoiceList::rowAt(const QPointF& point) const {
    for (int i = 0; i < choices_.size(); ++i)
        if (rowRect(i).contains(point))
            return i;
    return -1;
}

QSize ChoiceList::sizeHint() const {
    double widest = 0;
    for (const QString& choice : choices_)
        widest = std::max(widest, textWidth(Type::body, choice));
    return {static_cast<int>(std::ceil(widest)) + 2 * inset + tickWidth + sidePadding,
            static_cast<int>(rowHeight() * static_cast<double>(choices_.size())) + 2 * inset};
}

Description ChoiceList::describe() {
    return {.role = QAccessible::List};
}

void ChoiceList::highlight(int index) {
    index = std::clamp(index, 0, static_cast<int>(choices_.size()) - 1);
    if (index == highlighted_)
        return;
    highlighted_ = index;
    update();
    rows_[static_cast<std::size_t>(index)]->announceChange(QAccessible::Focus);
}

void ChoiceList::choose(int index) {
    emit chosen(index);
    close();
}

void ChoiceList::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color(Tone::outline), 1));
    painter.setBrush(color(Tone::raised));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Space::buttonRadius, Space::buttonRadius);
    for (int i = 0; i < choices_.size(); ++i) {
        const QRectF row = rowRect(i);
        const bool isHighlighted = i == highlighted_;
        if (isHighlighted) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(color(Tone::defaultButton));
            painter.drawRoundedRect(row, Space::buttonRadius - 3, Space::buttonRadius - 3);
        }
        const QColor ink = color(isHighlighted ? Tone::onAccent : Tone::textPrimary);
        if (i == current_) {
            const double left = mirrored(QRectF(row.left(), row.top(), tickWidth, row.height())).left();
            const QPointF middle(left + tickWidth / 2.0 - 1, row.center().y());
            painter.setPen(QPen(ink, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.drawPolyline(
                QPolygonF({middle + QPointF(-4, 0.5), middle + QPointF(-1, 3.5), middle + QPointF(4.5, -3.5)}));
        }
        drawText(painter, row.adjusted(tickWidth, 0, -(sidePadding - inset), 0), Type::body, ink, choices_[i]);
    }
}

void ChoiceList::mouseMoveEvent(QMouseEvent* event) {
    if (const int index = rowAt(event->position()); index >= 0)
        highlight(index);
}

void ChoiceList::mouseReleaseEvent(QMouseEvent* event) {
    // A press outside has closed the list already: Qt sees to it for every pop-up window.
    if (const int index = rowAt(event->position()); index >= 0)
        choose(index);
}

void ChoiceList::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
        highlight(highlighted_ - 1);
        break;
    case Qt::Key_Down:
        highlight(highlighted_ + 1);
        break;
    case Qt::Key_Home:
        highlight(0);
        break;
    case Qt::Key_End:
        highlight(static_cast<int>(choices_.size()) - 1);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        choose(highlighted_);
        break;
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        close();
        break;
    default:
        break;
    }
}

void ChoiceList::resizeEvent(QResizeEvent*) {
    for (std::size_t i = 0; i < rows_.size(); ++i)
        rows_[i]->setGeometry(rowRect(static_cast<int>(i)).toAlignedRect());
}

} // namespace vantoro
