#include "Views/Now/Hero.h"

#include "Design/Gauges/FanRotor.h"
#include "Design/Gauges/Gauge.h"
#include "Design/Gauges/ThermalDial.h"
#include "Design/Panel.h"
#include "Design/TextLabel.h"
#include "Views/Now/FanList.h"
#include "Views/Shared/Eyebrow.h"

#include <algorithm>
#include <cmath>
#include <QEvent>
#include <QPainter>
#include <utility>

namespace vantoro {

namespace {

constexpr int dialSize = 196;
constexpr int regularSize = 148;
constexpr int narrowSize = 120;
constexpr int smallSize = 64;
constexpr int regularGap = 24;
constexpr int narrowGap = 16;
constexpr int smallGap = 8;
constexpr double peakLineHeight = 22;
constexpr int dialGap = 40;

static_assert(Dials::ringMargin == FanRotor::ringMargin && Dials::ringMargin == ThermalDial::ringMargin);

} // namespace

Dials::Dials(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

int Dials::diameter(bool narrow) const {
    return model_.showsSmallRotors() ? smallSize : narrow ? narrowSize : regularSize;
}

int Dials::gap(bool narrow) const {
    return model_.showsSmallRotors() ? smallGap : narrow ? narrowGap : regularGap;
}

Dials::Grid Dials::grid(bool narrow) const {
    const int count = std::max(1, static_cast<int>(model_.rotors.size()));
    if (!model_.showsSmallRotors())
        return {.columns = count};
    // As wide as two large rotors would be, the rows about equally full.
    const int room = narrow ? 2 * narrowSize + narrowGap : 2 * regularSize + regularGap;
    const int most = (room + smallGap) / (smallSize + smallGap);
    const int rows = (count + most - 1) / most;
    return {.columns = (count + rows - 1) / rows, .rows = rows};
}

QSize Dials::rotorSize(bool narrow) const {
    QSize largest(diameter(narrow), diameter(narrow));
    for (const FanRotor* rotor : rotors_)
        largest = largest.expandedTo(rotor->sizeAt(diameter(narrow)) - QSize(2 * ringMargin, 2 * ringMargin));
    return largest;
}

void Dials::show(const DialsModel& model) {
    if (model == model_)
        return;
    const bool isOther = model.dial.has_value() != model_.dial.has_value() ||
                         model.fans.has_value() != model_.fans.has_value() ||
                         model.rotors.size() != model_.rotors.size() || (rotors_.empty() && dial_ == nullptr);
    const bool peakChanged = model.peakFigure != model_.peakFigure;
    const QSize before = sizeHint();
    model_ = model;
    if (isOther)
        rebuild();
    for (std::size_t i = 0; i < rotors_.size(); ++i)
        rotors_[i]->show(model.rotors[i]);
    if (dial_ != nullptr && model.dial)
        dial_->show(*model.dial);
    if (fans_ != nullptr && model.fans)
        fans_->show(*model.fans);
    if (sizeHint() != before)
        updateGeometry();
    if (isOther)
        place();
    if (peakChanged)
        update();
}

void Dials::setNarrow(bool narrow) {
    if (narrow == narrow_)
        return;
    narrow_ = narrow;
    for (FanRotor* rotor : rotors_)
        rotor->setDiameter(diameter(narrow_));
    updateGeometry();
    place();
}

void Dials::setTurning(bool allowed) {
    turning_ = allowed;
    for (FanRotor* rotor : rotors_)
        rotor->setTurning(allowed);
}

void Dials::rebuild() {
    for (FanRotor* rotor : rotors_)
        delete rotor;
    rotors_.clear();
    delete std::exchange(dial_, nullptr);
    delete std::exchange(fans_, nullptr);
    if (model_.dial) {
        dial_ = new ThermalDial(look(), dialSize, Tone::window, this);
        dial_->show();
        if (model_.fans) {
            fans_ = new FanList(look(), this);
            connect(fans_, &FanList::moreRequested, this, &Dials::sensorsRequested);
        }
        return;
    }
    const auto captions = model_.showsSmallRotors() ? FanRotor::Captions::label : FanRotor::Captions::full;
    for (std::size_t i = 0; i < model_.rotors.size(); ++i) {
        rotors_.push_back(new FanRotor(look(), diameter(narrow_), captions, Tone::window, this));
        rotors_.back()->setTurning(turning_);
        rotors_.back()->show();
    }
}

QSize Dials::sizeWhen(bool narrow) const {
    const QSize margins(2 * ringMargin, 2 * ringMargin);
    if (model_.dial) {
        const QSize list = fans_ != nullptr && !narrow ? fans_->sizeHint() + QSize(dialGap, 0) : QSize();
        return QSize(dialSize + std::max(0, list.width()), std::max(dialSize, list.height())) + margins;
    }
    const Grid laid = grid(narrow);
    const QSize one = rotorSize(narrow);
    int height = laid.rows * one.height() + (laid.rows - 1) * smallGap;
    if (model_.showsSmallRotors())
        height += smallGap + static_cast<int>(std::ceil(peakLineHeight * theme().textScale()));
    return QSize(laid.columns * one.width() + (laid.columns - 1) * gap(narrow), height) + margins;
}

Description Dials::describe() {
    Description what;
    if (model_.showsSmallRotors()) {
        what.role = QAccessible::StaticText;
        what.name = model_.peakFigure + u' ' + model_.peakUnit;
    }
    return what;
}

void Dials::place() {
    if (dial_ != nullptr) {
        const auto placeAt = [this](QWidget& part, int left) {
            const QSize size = part.sizeHint();
            part.setGeometry(mirrored(QRect(QPoint(left, (height() - size.height()) / 2), size)));
        };
        placeAt(*dial_, width() - dial_->sizeHint().width());
        if (fans_ != nullptr) {
            placeAt(*fans_, ringMargin);
            fans_->setVisible(!narrow_);
        }
        return;
    }
    const Grid laid = grid(narrow_);
    const QSize one = rotorSize(narrow_);
    const int count = static_cast<int>(rotors_.size());
    for (int i = 0; i < count; ++i) {
        const int row = i / laid.columns;
        const int inRow = std::min(laid.columns, count - row * laid.columns);
        const int rowWidth = inRow * one.width() + (inRow - 1) * gap(narrow_);
        const int left = (width() - 2 * ringMargin - rowWidth) / 2 + (i % laid.columns) * (one.width() + gap(narrow_));
        rotors_[static_cast<std::size_t>(i)]->setGeometry(
            QRect(QPoint(left, row * (one.height() + smallGap)), one + QSize(2 * ringMargin, 2 * ringMargin)));
    }
}

void Dials::paintEvent(QPaintEvent*) {
    if (!model_.showsSmallRotors())
        return;
    QPainter painter(this);
    const double height = peakLineHeight * theme().textScale();
    drawFigureLine(painter, QRectF(0, this->height() - ringMargin - height, width(), height),
                   {model_.peakFigure, model_.peakUnit}, theme(), Qt::AlignHCenter);
}

void Dials::resizeEvent(QResizeEvent* event) {
    place();
    PaintedWidget::resizeEvent(event);
}

void Dials::themeChanged() {
    place();
}

namespace {

constexpr int inset = Space::heroInset - Space::windowMargin;
constexpr int headlineGap = 12;
constexpr int detailGap = 14;
constexpr int fanLineGap = 10;
/// Letters of the largest type reach below their last line.
constexpr int headlineOverhang = 6;
constexpr int widestDetail = 640;
/// Beside a list of fans.
constexpr int widestText = 508;
/// Below this width of the window's content the rotors are smaller.
constexpr int narrowBelow = 940 - 2 * Space::windowMargin;

// The hero's middle and its height while its text is short; then what is kept above and below the text.
constexpr int leastMiddle = 118;
constexpr int leastHeight = 228;
constexpr int roomAbove = 14;
constexpr int roomBelow = 16;

/// Says it without interrupting.
void announce(QWidget& widget, const QString& text) {
    if (!QAccessible::isActive())
        return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(&widget, text);
#else
    Q_UNUSED(text)
    QAccessibleEvent event(&widget, QAccessible::Alert);
#endif
    QAccessible::updateAccessibility(&event);
}

} // namespace

Hero::Hero(Look& look, QWidget* parent)
    : PaintedWidget(look, parent)
    , eyebrow_(new Eyebrow(look, Eyebrow::Size::regular, this))
    , headline_(new BalancedLabel(look, {{Type::display40, 2}, {Type::display32, 2}, {Type::display26, 3}},
                                  Tone::textPrimary, this))
    , detail_(new BalancedLabel(look, {{Type::lead, 0}}, Tone::textSecondary, this))
    , fanLine_(new TextLabel(look, Type::small, Tone::textSecondary, this))
    , dials_(new Dials(look, this)) {
    headline_->setHeading(true);
    connect(dials_, &Dials::sensorsRequested, this, &Hero::sensorsRequested);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void Hero::show(const HeroModel& model) {
    if (announcer_.isDue(model.headline, look().clock.now()))
        announce(*headline_, model.headline);
    const bool isSame = model == model_;
    const bool textsChanged = model.headline != model_.headline || model.detail != model_.detail ||
                              model.fanLine.isEmpty() != model_.fanLine.isEmpty();
    const QSize dialsBefore = dials_->sizeHint();
    if (!isSame) {
        model_ = model;
        eyebrow_->show(model.eyebrow);
        headline_->setText(model.headline);
        detail_->setText(model.detail);
        fanLine_->setText(model.fanLine);
        dials_->setTurning(model.rotorsTurn);
        dials_->show(model.dials);
    }
    const bool isOtherRoom = noteTextHeight();
    if (!textsChanged && dials_->sizeHint() == dialsBefore && !isOtherRoom)
        return;
    if (measure(width()).height != height())
        updateGeometry();
    place();
}

bool Hero::noteTextHeight() {
    constexpr double kept = 60;
    const double now = look().clock.now();
    if (std::exchange(roomWidth_, width()) != width())
        seen_.clear();
    const int before = std::exchange(textRoom_, 0);
    const int height = measure(width()).textHeight;
    std::erase_if(seen_, [&](const Seen& one) { return one.until <= now || one.textHeight <= height; });
    seen_.push_back({height, now + kept});
    for (const Seen& one : seen_)
        textRoom_ = std::max(textRoom_, one.textHeight);
    return textRoom_ != before;
}

// Rotors do not grow with the type, a list does.
bool Hero::isNarrow(int width) const {
    return width < narrowBelow * (model_.dials.fans ? std::max(1.0, theme().textScale()) : 1.0);
}

Hero::Measures Hero::measure(int width) const {
    Measures measures;
    const QSize dials = dials_->sizeWhen(isNarrow(width)) - QSize(2 * Dials::ringMargin, 2 * Dials::ringMargin);
    const bool listsFans = model_.dials.fans && !isNarrow(width);
    measures.textWidth = std::max(80, width - 2 * inset - dials.width() - dialGap);
    if (listsFans)
        measures.textWidth = std::min(widestText, measures.textWidth);
    measures.headlineHeight = headline_->heightForWidth(measures.textWidth);
    measures.textHeight = eyebrow_->sizeHint().height() + headlineGap + measures.headlineHeight;
    if (!model_.detail.isEmpty()) {
        measures.detailHeight = detail_->heightForWidth(std::min(widestDetail, measures.textWidth));
        measures.textHeight += detailGap + measures.detailHeight;
    }
    if (!model_.fanLine.isEmpty() && !listsFans) {
        measures.fanLineHeight = fanLine_->sizeHint().height();
        measures.textHeight += fanLineGap + measures.fanLineHeight;
    }
    if (width == roomWidth_)
        measures.textHeight = std::max(measures.textHeight, textRoom_);
    const int content = std::max(measures.textHeight, dials.height());
    measures.middle = std::max(leastMiddle, roomAbove + content / 2);
    const bool isShort = content + 2 * roomAbove <= leastHeight;
    measures.height = isShort ? leastHeight : measures.middle + (content + 1) / 2 + roomBelow;
    return measures;
}

int Hero::heightForWidth(int width) const {
    return measure(width).height;
}

QSize Hero::sizeHint() const {
    constexpr int usual = 992;
    const int shown = width() > 0 && testAttribute(Qt::WA_WState_Created) ? width() : usual;
    return {shown, measure(shown).height};
}

QSize Hero::minimumSizeHint() const {
    return {400, leastHeight};
}

void Hero::place() {
    dials_->setNarrow(isNarrow(width()));
    const Measures measures = measure(width());
    const int top = measures.middle - measures.textHeight / 2;
    int y = top;
    const int eyebrowHeight = eyebrow_->sizeHint().height();
    eyebrow_->setGeometry(mirrored(QRect(inset, y, measures.textWidth, eyebrowHeight)));
    y += eyebrowHeight + headlineGap;
    headline_->setGeometry(mirrored(QRect(inset, y, measures.textWidth, measures.headlineHeight + headlineOverhang)));
    y += measures.headlineHeight + detailGap;
    detail_->setVisible(!model_.detail.isEmpty());
    detail_->setGeometry(mirrored(QRect(inset, y, std::min(widestDetail, measures.textWidth), measures.detailHeight)));
    y += model_.detail.isEmpty() ? fanLineGap - detailGap : measures.detailHeight + fanLineGap;
    fanLine_->setVisible(measures.fanLineHeight > 0);
    fanLine_->setGeometry(mirrored(QRect(inset, y, measures.textWidth, measures.fanLineHeight)));
    const QSize dials = dials_->sizeHint();
    const QPoint corner(width() - inset + Dials::ringMargin - dials.width(), measures.middle - dials.height() / 2);
    dials_->setGeometry(mirrored(QRect(corner, dials)));
}

void Hero::resizeEvent(QResizeEvent* event) {
    if (width() != roomWidth_)
        noteTextHeight();
    place();
    PaintedWidget::resizeEvent(event);
}

void Hero::themeChanged() {
    // Heights in another type; the next refresh notes them anew.
    roomWidth_ = -1;
}

bool Hero::event(QEvent* event) {
    // A part asks for another size: after a change of the theme, say.
    if (event->type() == QEvent::LayoutRequest) {
        if (measure(width()).height != height())
            updateGeometry();
        place();
    }
    return PaintedWidget::event(event);
}

} // namespace vantoro
