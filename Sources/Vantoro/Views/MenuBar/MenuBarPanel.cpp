#include "Views/MenuBar/MenuBarPanel.h"

#include "Design/Controls/Button.h"
#include "Design/Gauges/FanRotor.h"
#include "Design/Gauges/Gauge.h"
#include "Design/Gauges/SmallGauges.h"
#include "Design/Gauges/ThermalDial.h"
#include "Design/Panel.h"
#include "Design/TextLabel.h"
#include "Model/Updates/Updates.h"
#include "Views/Shared/Eyebrow.h"
#include "Views/Shared/ScreenRoom.h"
#include "Views/Shared/Words.h"
#include "Views/Updates/UpdateParts.h"

#include <algorithm>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <utility>

namespace vantoro {

namespace {

constexpr int radius = Space::panelRadius;
constexpr int padding = 16;
constexpr int dialSize = 68;
constexpr int dialGap = 14;
constexpr int rowHeight = 28;
constexpr int barWidth = 96;
constexpr int barHeight = 6;
constexpr int figureColumn = 54;
constexpr int barGap = 12;
constexpr int barIcon = 12;
constexpr int barIconGap = 6;
constexpr int buttonHeight = 30;
constexpr int iconButtonWidth = 34;

// Above and below the lines between the parts.
constexpr int aboveLine = 14;
constexpr int figuresPadding = 10;
constexpr int suspectsPadding = 8;
constexpr int buttonsPadding = 12;

constexpr TextStyle figureStyle{15, 20, QFont::DemiBold};

} // namespace

/// The three figures side by side.
class MenuBarPanel::Figures : public PaintedWidget {
public:
    Figures(Look& look, QWidget* parent) : PaintedWidget(look, parent) {}

    void show(const std::vector<MenuBarPanelModel::Figure>& figures) {
        if (figures == figures_)
            return;
        figures_ = figures;
        update();
        announceChange(QAccessible::NameChanged);
    }
    using PaintedWidget::show;

    int neededHeight() const { return static_cast<int>(lineHeight(Type::caption) + lineHeight(figureStyle)); }

    Description describe() override {
        QStringList spoken;
        for (const MenuBarPanelModel::Figure& one : figures_)
            spoken += QStringList{one.caption, one.figure, one.unit}.join(u' ').trimmed();
        return {.role = QAccessible::StaticText, .name = spoken.join(QStringLiteral(", "))};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const double column =
            static_cast<double>(width()) / static_cast<double>(std::max<std::size_t>(1, figures_.size()));
        double left = 0;
        for (const MenuBarPanelModel::Figure& one : figures_) {
            constexpr int inset = 12;
            const double indent = left > 0 ? inset : 0;
            if (left > 0)
                painter.fillRect(mirrored(QRectF(left - 0.5, 0, 1, height())), color(Tone::line));
            const QRectF caption(left + indent, 0, column - indent - 4, lineHeight(Type::caption));
            drawText(painter, caption, Type::caption, color(Tone::textTertiary), one.caption);
            const QRectF figure(caption.left(), caption.bottom(), caption.width(), lineHeight(figureStyle));
            drawFigureLine(painter, mirrored(figure), {one.figure, one.unit, figureStyle, Type::small}, theme(),
                           mirrored(Qt::AlignLeft));
            left += column;
        }
    }

private:
    std::vector<MenuBarPanelModel::Figure> figures_;
};

/// One application: name, bar, figure; of one that is named for its graphics work they are of that, beside an icon.
class MenuBarPanel::SuspectLine : public PaintedWidget {
public:
    SuspectLine(Look& look, QWidget* parent) : PaintedWidget(look, parent), bar_(new CoreBar(look, this)) {
        bar_->setBarHeight(barHeight);
    }

    void show(const SuspectRowModel& row, int cores) {
        const bool isOther = row.key != row_.key || row.isNamedForGraphics != row_.isNamedForGraphics;
        const bool textChanged =
            isOther || row.name != row_.name || figureOf(row) != figureOf(row_) || row.heatStop != row_.heatStop;
        row_ = row;
        if (row.isNamedForGraphics)
            bar_->show(row.graphicsPercent.value_or(0), 1, row.heatStop);
        else
            bar_->show(row.percent, cores, row.heatStop);
        if (isOther)
            bar_->jump();
        if (!textChanged)
            return;
        explainCut();
        update();
        announceChange(QAccessible::NameChanged);
    }
    using PaintedWidget::show;

    Description describe() override {
        return {.role = QAccessible::ListItem, .name = row_.name, .value = row_.spokenFigure};
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        const int left = width() - figureWidth() - barWidth;
        bar_->setGeometry(mirrored(QRect(left, (height() - barHeight) / 2, barWidth, barHeight)));
        explainCut();
        PaintedWidget::resizeEvent(event);
    }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        drawText(painter, QRectF(0, 0, nameWidth(), height()), nameStyle(), color(Tone::textPrimary), row_.name);
        drawText(painter, QRectF(width() - figureWidth(), 0, figureWidth(), height()), nameStyle(),
                 color(Tone::textPrimary), figureOf(row_), Qt::AlignRight, Qt::ElideNone);
        if (row_.isNamedForGraphics)
            drawIcon(painter, QRectF(nameWidth() + barGap, 0, barIcon, height()), "cube.transparent", barIcon,
                     color(Tone::textTertiary));
    }

private:
    static const QString& figureOf(const SuspectRowModel& row) {
        return row.isNamedForGraphics ? row.graphicsFigure : row.figure;
    }
    TextStyle nameStyle() const { return row_.heatStop ? Type::body.semibold() : Type::body; }
    void explainCut() { setToolTip(textWidth(nameStyle(), row_.name) > nameWidth() ? row_.name : QString()); }
    int figureWidth() const { return qRound(figureColumn * theme().textScale()); }
    double nameWidth() const {
        const int icon = row_.isNamedForGraphics ? barIcon + barIconGap : 0;
        return width() - figureWidth() - barWidth - icon - barGap;
    }

    SuspectRowModel row_;
    CoreBar* bar_; // owned by Qt as a child
};

MenuBarPanel::MenuBarPanel(ViewContext& context, QWidget* parent)
    : View(context, parent)
    , eyebrow_(new Eyebrow(look(), Eyebrow::Size::small, this))
    , title_(new BalancedLabel(look(), {{Type::panelTitle, 2}, {Type::body.semibold(), 3}}, Tone::textPrimary, this))
    , cause_(new BalancedLabel(look(), {{Type::small, 3}}, Tone::textSecondary, this))
    , rotor_(new FanRotor(look(), dialSize, FanRotor::Captions::none, Tone::panel, this))
    , dial_(new ThermalDial(look(), dialSize, Tone::panel, this))
    , figures_(new Figures(look(), this))
    , noSuspects_(new BalancedLabel(look(), {{Type::body, 3}}, Tone::textSecondary, this))
    , update_(new UpdateRow(look(), this))
    , open_(new Button(look(), Button::Kind::bordered, vantoro::tr("Open Vantoro"), this))
    , settings_(new Button(look(), Button::Kind::bordered, QString(), this))
    , quit_(new Button(look(), Button::Kind::bordered, QString(), this)) {
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedWidth(sizeHint().width());
    connect(new ScreenWatch(this), &ScreenWatch::changed, this, [this] {
        if (isVisible())
            moveIntoPlace();
    });
    setFocusPolicy(Qt::StrongFocus);
    title_->setHeading(true);
    shows({&SensorHub::snapshotChanged, &SensorHub::vitalsChanged, &SensorHub::verdictChanged,
           &SensorHub::suspectsChanged, &SensorHub::processesReadyChanged});
    settings_->setIcon(QStringLiteral("gearshape"));
    settings_->setSpokenName(vantoro::tr("Settings"));
    quit_->setIcon(QStringLiteral("power"));
    quit_->setSpokenName(vantoro::tr("Quit Vantoro"));
    for (Button* const button : {open_, settings_, quit_})
        button->setDrawnHeight(buttonHeight);
    const auto closeAnd = [this](void (MenuBarPanel::*signal)()) {
        return [this, signal] {
            hide();
            emit(this->*signal)();
        };
    };
    connect(open_, &Button::clicked, this, closeAnd(&MenuBarPanel::openRequested));
    connect(settings_, &Button::clicked, this, closeAnd(&MenuBarPanel::settingsRequested));
    connect(quit_, &Button::clicked, this, closeAnd(&MenuBarPanel::quitRequested));
    if (Updates* const updates = context.updates) {
        const auto refreshRow = [this, updates] { update_->show(updateRow(updateState(*updates))); };
        connect(updates, &Updates::changed, this, refreshRow);
        connect(update_, &UpdateRow::pressed, this,
                [updates](UpdateCommand command) { perform(command, *updates, UpdateOrigin::menuBar); });
        refreshRow();
    }
}

MenuBarPanel::~MenuBarPanel() = default;

void MenuBarPanel::toggle(const QRect& item, const std::optional<QPoint>& pointer) {
    // The click on the item took the keyboard away, and with that the panel has just closed itself.
    constexpr double sameClick = 0.3;
    const bool closedByThisClick = hiddenAt_ >= 0 && look().clock.now() - hiddenAt_ < sameClick;
    if (isVisible()) {
        hide();
        return;
    }
    if (closedByThisClick)
        return;
    item_ = item;
    pointer_ = pointer.value_or(QCursor::pos());
    refresh();
    moveIntoPlace();
    show();
    raise();
    activateWindow();
    open_->setFocus(Qt::PopupFocusReason);
}

void MenuBarPanel::refresh() {
    context().actions.seePrograms();
    showModel(menuBarPanelModel(hub(), context().settings));
}

void MenuBarPanel::showModel(const MenuBarPanelModel& model) {
    if (model == model_ && laidOutHeight_ > 0)
        return;
    const bool isOtherCount = model.suspects.size() != model_.suspects.size();
    model_ = model;
    eyebrow_->show(model.eyebrow);
    title_->setText(model.title);
    cause_->setText(model.cause);
    if (model.rotor)
        rotor_->show(*model.rotor);
    rotor_->setTurning(model.rotorTurns);
    if (model.dial)
        dial_->show(*model.dial);
    figures_->show(model.figures);
    noSuspects_->setText(model.noSuspects);
    while (suspects_.size() < model.suspects.size())
        suspects_.push_back(new SuspectLine(look(), this));
    for (std::size_t i = 0; i < model.suspects.size(); ++i)
        suspects_[i]->show(model.suspects[i], model.cores);
    const int before = std::exchange(laidOutHeight_, layOut());
    if (laidOutHeight_ != before || isOtherCount)
        moveIntoPlace();
}

int MenuBarPanel::layOutHead(int y) {
    const int left = leadingShadow() + padding;
    const int textLeft = left + dialSize + dialGap;
    const int textWidth = leadingShadow() + cardWidth() - padding - textLeft;
    const int eyebrowHeight = eyebrow_->sizeHint().height();
    const int titleHeight = title_->heightForWidth(textWidth);
    const int causeHeight = model_.cause.isEmpty() ? 0 : cause_->heightForWidth(textWidth);
    constexpr int titleGap = 4;
    constexpr int causeGap = 3;
    const int textHeight = eyebrowHeight + titleGap + titleHeight + (causeHeight > 0 ? causeGap + causeHeight : 0);
    const int height = std::max(dialSize, textHeight);
    int top = y + (height - textHeight) / 2;
    eyebrow_->setGeometry(mirrored(QRect(textLeft, top, textWidth, eyebrowHeight)));
    top += eyebrowHeight + titleGap;
    title_->setGeometry(mirrored(QRect(textLeft, top, textWidth, titleHeight)));
    cause_->setVisible(causeHeight > 0);
    cause_->setGeometry(mirrored(QRect(textLeft, top + titleHeight + causeGap, textWidth, causeHeight)));
    const int dialTop = y + (height - dialSize) / 2;
    rotor_->setVisible(model_.rotor.has_value());
    const QPoint rotor(left - FanRotor::ringMargin, dialTop - FanRotor::ringMargin);
    rotor_->setGeometry(mirrored(QRect(rotor, rotor_->sizeHint())));
    dial_->setVisible(model_.dial.has_value());
    const QPoint dial(left - ThermalDial::ringMargin, dialTop - ThermalDial::ringMargin);
    dial_->setGeometry(mirrored(QRect(dial, dial_->sizeHint())));
    return y + height;
}

int MenuBarPanel::layOut() {
    const std::vector<int> before = std::exchange(separators_, {});
    const int left = leadingShadow() + padding;
    const int contentWidth = cardWidth() - 2 * padding;
    int y = layOutHead(shadow_.top() + padding) + aboveLine;
    const auto separate = [&](int paddingBelow) {
        separators_.push_back(y);
        y += 1 + paddingBelow;
    };
    separate(figuresPadding);
    figures_->setGeometry(mirrored(QRect(left, y, contentWidth, figures_->neededHeight())));
    y += figures_->neededHeight() + figuresPadding + 3;
    separate(suspectsPadding);
    const int line = qRound(rowHeight * theme().textScale());
    const std::size_t shown = std::min(mostSuspects_, model_.suspects.size());
    for (std::size_t i = 0; i < suspects_.size(); ++i) {
        suspects_[i]->setVisible(i < shown);
        if (i >= shown)
            continue;
        suspects_[i]->setGeometry(mirrored(QRect(left, y, contentWidth, line)));
        y += line;
    }
    noSuspects_->setVisible(model_.suspects.empty());
    if (model_.suspects.empty()) {
        const int height = noSuspects_->heightForWidth(contentWidth);
        noSuspects_->setGeometry(mirrored(QRect(left, y + 4, contentWidth, height)));
        y += height + 8;
    }
    y += suspectsPadding;
    constexpr int ring = Button::ringMargin;
    if (!update_->isHidden()) {
        separate(0);
        const int height = update_->heightForWidth(contentWidth + 2 * ring);
        update_->setGeometry(mirrored(QRect(left - ring, y, contentWidth + 2 * ring, height)));
        y += height;
    }
    separate(buttonsPadding);
    constexpr int gap = 8;
    const int height = open_->sizeHint().height();
    const int iconWidth = iconButtonWidth + 2 * ring;
    const int right = leadingShadow() + cardWidth() - padding + ring;
    const int top = y - ring;
    const int settings = right - 2 * iconWidth - gap + 2 * ring;
    quit_->setGeometry(mirrored(QRect(right - iconWidth, top, iconWidth, height)));
    settings_->setGeometry(mirrored(QRect(settings, top, iconWidth, height)));
    open_->setGeometry(mirrored(QRect(left - ring, top, settings + ring - gap - left + 2 * ring, height)));
    y += height - 2 * ring + padding;
    if (separators_ != before)
        update();
    return y - shadow_.top();
}

Description MenuBarPanel::describe() {
    return {.role = QAccessible::Dialog, .name = QStringLiteral("Vantoro"), .value = model_.title};
}

void MenuBarPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card(cardRect());
    constexpr int rings = 12;
    constexpr int drop = 12;
    QColor shadow = color(Tone::shadow);
    shadow.setAlphaF(shadow.alphaF() / (rings * 1.6F));
    painter.setPen(Qt::NoPen);
    painter.setBrush(shadow);
    for (int ring = rings; ring > 0; --ring) {
        const double spread = ring * (shadowMargin - drop) / static_cast<double>(rings);
        painter.drawRoundedRect(card.adjusted(-spread, -spread + drop, spread, spread + drop), radius + spread,
                                radius + spread);
    }
    painter.setPen(QPen(color(Tone::panel), 1));
    painter.setBrush(color(Tone::panel));
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setPen(QPen(color(Tone::outline), 1));
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    for (const int y : separators_)
        painter.fillRect(QRectF(card.left() + padding, y, cardWidth() - 2 * padding, 1), color(Tone::line));
}

void MenuBarPanel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        hide();
    else
        View::keyPressEvent(event);
}

void MenuBarPanel::mousePressEvent(QMouseEvent* event) {
    // What looks like the desktop beside the card belongs to the shadow.
    if (!cardRect().contains(event->position().toPoint()))
        hide();
}

void MenuBarPanel::showEvent(QShowEvent* event) {
    View::showEvent(event);
    moveIntoPlace();
}

void MenuBarPanel::hideEvent(QHideEvent* event) {
    hiddenAt_ = look().clock.now();
    View::hideEvent(event);
}

bool MenuBarPanel::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate && isVisible())
        hide();
    else if (event->type() == QEvent::LayoutRequest)
        moveIntoPlace();
    return View::event(event);
}

} // namespace vantoro
