#include "Views/Timeline/RewindPanel.h"

#include "Design/Panel.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QPaintEvent>

namespace vantoro {

namespace {

constexpr double readingHeight = 26;
constexpr double processHeight = 24;
constexpr double lineBelowReadings = 12;
constexpr double headingBelowLine = 8;
constexpr double rawNameGap = 6;
constexpr double figureGap = 8;
constexpr int leastProcesses = 4;

/// Cuts a piece off the row's leading side, or off its trailing side.
QRectF cutLeading(QRectF& row, double width) {
    QRectF piece = row;
    piece.setRight(row.left() + width);
    row.setLeft(piece.right());
    return piece;
}

QRectF cutTrailing(QRectF& row, double width) {
    QRectF piece = row;
    piece.setLeft(row.right() - width);
    row.setRight(piece.left());
    return piece;
}

} // namespace

RewindPanel::RewindPanel(Look& look, QWidget* parent)
    : PaintedWidget(look, parent), unpin_(new Button(look, Button::Kind::bordered, vantoro::tr("Unpin"), this)) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    unpin_->setDrawnHeight(24);
    unpin_->hide();
    connect(unpin_, &Button::clicked, this, &RewindPanel::unpinAsked);
}

void RewindPanel::placeUnpin() {
    constexpr int drawnWidth = 56;
    const QSize hint = unpin_->sizeHint();
    const int wide = std::max(hint.width(), drawnWidth + 2 * Button::ringMargin);
    const QRectF title = titleRect();
    const QRect place(qRound(title.right()) + Button::ringMargin - wide, qRound(title.center().y()) - hint.height() / 2,
                      wide, hint.height());
    unpin_->setGeometry(mirrored(place));
}

void RewindPanel::resizeEvent(QResizeEvent*) {
    placeUnpin();
}

void RewindPanel::themeChanged() {
    placeUnpin();
}

QRectF RewindPanel::titleRect() const {
    return {Space::panelPadding, 0, double(width() - 2 * Space::panelPadding), scaled(Panel::titleHeight)};
}

QRectF RewindPanel::readingRect(std::size_t row) const {
    const QRectF title = titleRect();
    const double height = scaled(readingHeight);
    return {title.left(), title.bottom() + static_cast<double>(row) * height, title.width(), height};
}

double RewindPanel::belowReadings() const {
    return readingRect(model_.readings.size()).top() + lineBelowReadings;
}

QRectF RewindPanel::processRect(std::size_t row) const {
    const QRectF title = titleRect();
    const double height = scaled(processHeight);
    // The row before the first is the heading.
    const double top = belowReadings() + headingBelowLine + static_cast<double>(row + 1) * height;
    return {title.left(), top, title.width(), height};
}

std::size_t RewindPanel::namedProcesses() const {
    const double room = height() - Space::panelPadding + 12 - processRect(0).top();
    const auto fitting = static_cast<std::size_t>(std::max(0.0, std::floor(room / scaled(processHeight))));
    const std::size_t count = model_.processes.size();
    return count <= fitting ? count : std::max<std::size_t>(fitting, 1) - 1;
}

QSize RewindPanel::minimumSizeHint() const {
    constexpr int readings = 6;
    const double height = scaled(Panel::titleHeight) + readings * scaled(readingHeight) + lineBelowReadings +
                          headingBelowLine + (1 + leastProcesses) * scaled(processHeight) + Space::panelPadding;
    return {200, static_cast<int>(std::ceil(height))};
}

void RewindPanel::show(const RewindModel& model) {
    if (model == model_)
        return;
    const RewindModel before = std::exchange(model_, model);
    unpin_->setVisible(model.isPinned);
    if (before.readings.size() != model.readings.size() || before.notice != model.notice ||
        before.processes.size() != model.processes.size()) {
        update();
        return;
    }
    if (before.title != model.title)
        update(titleRect().toAlignedRect());
    for (std::size_t i = 0; i < model.readings.size(); ++i)
        if (before.readings[i] != model.readings[i])
            update(readingRect(i).toAlignedRect());
    for (std::size_t i = 0; i < model.processes.size(); ++i)
        if (before.processes[i] != model.processes[i])
            update(processRect(i).toAlignedRect());
}

Description RewindPanel::describe() {
    QStringList said;
    for (const RewindModel::Reading& reading : model_.readings)
        said.append(vantoro::tr("%1 %2").arg(reading.label, reading.value));
    for (const RewindModel::Process& process : model_.processes)
        said.append(vantoro::tr("%1 %2").arg(process.name, process.share));
    if (!model_.notice.isEmpty())
        said.append(model_.notice);
    return {.role = QAccessible::Grouping, .name = model_.title, .value = said.join(QStringLiteral(", "))};
}

void RewindPanel::paintHint(QPainter& painter) const {
    constexpr double side = 40;
    constexpr int icon = 28;
    constexpr double gap = 10;
    const double wide = width() - 2 * side;
    const QStringList lines = brokenLines(model_.notice, font(Type::report), wide);
    const double high = icon + gap + static_cast<double>(lines.size()) * lineHeight(Type::report);
    const double top = std::max(titleRect().bottom(), (height() - titleRect().height() - high) / 2);
    drawIcon(painter, QRectF(side, std::round(top), wide, icon), "hand.point.up.left", icon, color(Tone::textTertiary));
    drawLines(painter, QRectF(side, top + icon + gap, wide, 0), Type::report, color(Tone::textSecondary), lines,
              Qt::AlignHCenter, Qt::ElideNone);
}

void RewindPanel::paintReadings(QPainter& painter, const QRegion& dirty) const {
    for (std::size_t i = 0; i < model_.readings.size(); ++i) {
        const RewindModel::Reading& reading = model_.readings[i];
        QRectF row = readingRect(i);
        if (!dirty.intersects(row.toAlignedRect()))
            continue;
        const double wide = textWidth(Type::sectionTitle, reading.value) + 1;
        drawText(painter, cutTrailing(row, wide), Type::sectionTitle, color(Tone::textPrimary), reading.value,
                 Qt::AlignRight, Qt::ElideNone);
        cutTrailing(row, figureGap);
        drawText(painter, row, Type::body, color(Tone::textSecondary), reading.label, Qt::AlignLeft);
    }
    const QRectF title = titleRect();
    painter.fillRect(QRectF(title.left(), std::round(belowReadings()), title.width(), 1), color(Tone::line));
}

void RewindPanel::paintProcess(QPainter& painter, const QRectF& row, const RewindModel::Process& process) const {
    constexpr TextStyle figure = Type::small.medium();
    QRectF rest = row;
    const double wide = textWidth(figure, process.share) + 1;
    drawText(painter, cutTrailing(rest, wide), figure, color(Tone::textPrimary), process.share, Qt::AlignRight,
             Qt::ElideNone);
    cutTrailing(rest, figureGap);
    const double named = std::min(textWidth(Type::small, process.name), rest.width());
    drawText(painter, cutLeading(rest, named), Type::small, color(Tone::textPrimary), process.name, Qt::AlignLeft);
    cutLeading(rest, std::min(rawNameGap, rest.width()));
    constexpr double narrowest = 20; // less would hold no letter beside the ellipsis
    if (!process.rawName.isEmpty() && rest.width() >= narrowest)
        drawText(painter, rest, Type::small, color(Tone::textTertiary), process.rawName, Qt::AlignLeft);
}

void RewindPanel::paintProcesses(QPainter& painter, const QRegion& dirty) const {
    if (model_.processes.empty()) {
        const QRectF title = titleRect();
        const QRectF from(title.left(), belowReadings() + lineBelowReadings, title.width(), 0);
        drawLines(painter, from, Type::report, color(Tone::textSecondary),
                  brokenLines(model_.notice, font(Type::report), from.width()), Qt::AlignLeft, Qt::ElideNone);
        return;
    }
    const QRectF first = processRect(0);
    const QRectF heading = first.translated(0, -first.height());
    drawText(painter, heading, Type::caption, color(Tone::textTertiary), vantoro::tr("Processes"), Qt::AlignLeft);
    drawText(painter, heading, Type::caption, color(Tone::textTertiary), vantoro::tr("CPU"), Qt::AlignRight);
    const std::size_t named = namedProcesses();
    for (std::size_t i = 0; i < named; ++i)
        if (const QRectF row = processRect(i); dirty.intersects(row.toAlignedRect()))
            paintProcess(painter, row, model_.processes[i]);
    if (const std::size_t unnamed = model_.processes.size() - named; unnamed > 0)
        drawText(painter, processRect(named), Type::caption, color(Tone::textTertiary),
                 vantoro::tr("%1 more").arg(unnamed), Qt::AlignLeft);
}

void RewindPanel::paintEvent(QPaintEvent* event) {
    constexpr int icon = 16;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(Tone::panel));
    painter.drawRoundedRect(rect(), Space::panelRadius, Space::panelRadius);
    QRectF title = titleRect();
    drawIcon(painter, cutLeading(title, icon), "clock.rewind", icon, color(Tone::textSecondary));
    cutLeading(title, 8);
    if (model_.isPinned)
        cutTrailing(title, unpin_->width());
    drawText(painter, title, Type::sectionTitle, color(Tone::textPrimary), model_.title, Qt::AlignLeft);
    if (!model_.isAtMoment()) {
        paintHint(painter);
        return;
    }
    paintReadings(painter, event->region());
    paintProcesses(painter, event->region());
}

} // namespace vantoro
