#include "Views/Cores/CoresView.h"

#include "Design/Panel.h"
#include "Design/ScrollPane.h"
#include "Views/Cores/CoreTiles.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QVBoxLayout>

namespace vantoro {

namespace {

constexpr double figureGap = 40;
constexpr double ticksGap = 8;
constexpr double tallTick = 31;
constexpr double shortTick = 23;
constexpr double tickWidth = 3;
constexpr double bandGap = 3;
constexpr double bandHeight = 4;
constexpr double marksGap = 4;

} // namespace

/// The spread of many temperatures: four figures, and below them one tick per sensor over a ruler of the heat bands.
class ThermalRuler : public PaintedWidget {
public:
    explicit ThermalRuler(Look& look, QWidget* parent = nullptr);

    void show(const Spread& spread);
    using QWidget::show;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double figuresHeight() const;
    void paintFigures(QPainter& painter) const;
    void paintRuler(QPainter& painter) const;

    Spread spread_;
};

ThermalRuler::ThermalRuler(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    keepDirection();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ThermalRuler::show(const Spread& spread) {
    if (spread == spread_)
        return;
    const bool sameFigures = spread.figures == spread_.figures && spread.placeholder == spread_.placeholder;
    spread_ = spread;
    if (sameFigures) {
        update(0, static_cast<int>(figuresHeight()), width(), height());
    } else {
        update();
        announceChange();
    }
}

double ThermalRuler::figuresHeight() const {
    return lineHeight(Type::caption) + lineHeight(Type::figure);
}

QSize ThermalRuler::sizeHint() const {
    const double ruler = ticksGap + tallTick + bandGap + bandHeight + marksGap + lineHeight(Type::caption);
    return {360, static_cast<int>(std::ceil(figuresHeight() + ruler))};
}

QSize ThermalRuler::minimumSizeHint() const {
    return {200, sizeHint().height()};
}

void ThermalRuler::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!spread_.placeholder.isEmpty()) {
        drawText(painter, QRectF(rect()), Type::body, color(Tone::textSecondary), spread_.placeholder);
        return;
    }
    paintFigures(painter);
    paintRuler(painter);
}

void ThermalRuler::paintFigures(QPainter& painter) const {
    double widest = 0;
    for (const Spread::Figure& figure : spread_.figures)
        widest = std::max({widest, textWidth(Type::caption, figure.label), textWidth(Type::figure, figure.value)});
    const double pitch = std::min(widest + figureGap, width() / 4.0);
    for (std::size_t i = 0; i < spread_.figures.size(); ++i) {
        const Spread::Figure& figure = spread_.figures[i];
        const QRectF label(static_cast<double>(i) * pitch, 0, pitch, lineHeight(Type::caption));
        drawText(painter, label, Type::caption, color(Tone::textTertiary), figure.label);
        drawText(painter, QRectF(label.left(), label.bottom(), pitch, lineHeight(Type::figure)), Type::figure,
                 color(Tone::textPrimary), figure.value);
    }
}

void ThermalRuler::paintRuler(QPainter& painter) const {
    const double ground = figuresHeight() + ticksGap + tallTick;
    painter.setPen(Qt::NoPen);
    for (const RulerTick& tick : spread_.ticks) {
        const double height = tick.isExtreme ? tallTick : shortTick;
        const double x = std::clamp(width() * tick.position - tickWidth / 2, 0.0, width() - tickWidth);
        painter.setBrush(theme().heatFill(tick.heatStop));
        painter.drawRoundedRect(QRectF(x, ground - height, tickWidth, height), tickWidth / 2, tickWidth / 2);
    }

    const double top = ground + bandGap;
    painter.setBrush(color(Tone::well));
    double left = 0;
    for (std::size_t i = 0; i <= spread_.marks.size(); ++i) {
        const bool isLast = i == spread_.marks.size();
        const double end = isLast ? width() : width() * spread_.marks[i].position - bandGap / 2;
        painter.drawRoundedRect(QRectF(left, top, end - left, bandHeight), 1, 1);
        left = end + bandGap;
    }
    for (const RulerMark& mark : spread_.marks) {
        const double wide = textWidth(Type::caption, mark.text);
        drawText(painter,
                 QRectF(width() * mark.position - wide / 2, top + bandHeight + marksGap, wide + 1,
                        lineHeight(Type::caption)),
                 Type::caption, color(Tone::textTertiary), mark.text, Qt::AlignLeft, Qt::ElideNone);
    }
}

Description ThermalRuler::describe() {
    return {.role = QAccessible::StaticText, .name = spread_.caption, .value = spread_.spokenValue};
}

namespace {

constexpr int clusterGap = 12;
constexpr int clusterLineHeight = 32;
constexpr int coresBottom = 20;
constexpr int spreadBottom = 13;
constexpr int captionGap = 10;
constexpr int widestCaption = 880;
constexpr int narrowBelow = 940;

} // namespace

/// How busy all cores of a kind are together, above their tiles.
class CoresView::ClusterLine : public PaintedWidget {
public:
    /// Keeps this room free above itself.
    ClusterLine(Look& look, int gap) : PaintedWidget(look), gap_(gap) {}

    void show(const QString& busy, const QString& ceiling) {
        if (busy == busy_ && ceiling == ceiling_)
            return;
        busy_ = busy;
        ceiling_ = ceiling;
        update();
        announceChange(QAccessible::NameChanged);
    }

    QSize sizeHint() const override { return {240, gap_ + qRound(clusterLineHeight * theme().textScale())}; }
    QSize minimumSizeHint() const override { return {40, sizeHint().height()}; }
    Description describe() override { return {.role = QAccessible::StaticText, .name = busy_ + u' ' + ceiling_}; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QRectF line(rect().adjusted(0, gap_, 0, 0));
        drawText(painter, line, Type::small.semibold(), color(Tone::textPrimary), busy_);
        line.setLeft(line.left() + textWidth(Type::small.semibold(), busy_ + u' '));
        drawText(painter, line, Type::small, color(Tone::textSecondary), ceiling_);
    }

private:
    int gap_;
    QString busy_;
    QString ceiling_;
};

CoresView::CoresView(ViewContext& context, QWidget* parent)
    : View(context, parent), scroll_(new ScrollPane(context.look)), cores_(new Panel(context.look)) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll_);
    scroll_->setFocusPolicy(Qt::TabFocus);
    cores_->setTitle(vantoro::tr("Cores"));
    cores_->setIcon("cpu");
    cores_->setBottomPadding(coresBottom);
    coresNote_ = newNote();
    cores_->body()->addWidget(coresNote_);
    scroll_->column()->addWidget(cores_);
    die_ = addSpreadPanel(vantoro::tr("Die temperature"), "thermometer.medium");
    gpu_ = addSpreadPanel(vantoro::tr("GPU temperature"), "cube.transparent");
    sensorsNote_ = newNote();
    auto* const noteRow = new QHBoxLayout;
    noteRow->setContentsMargins(Space::panelPadding, 0, Space::panelPadding, 0);
    noteRow->addWidget(sensorsNote_);
    scroll_->column()->addLayout(noteRow);
    scroll_->column()->addStretch();
    shows({&SensorHub::coresChanged, &SensorHub::dieSensorsChanged, &SensorHub::gpuSensorsChanged});
}

CoresView::~CoresView() = default;

CoresView::SpreadPanel CoresView::addSpreadPanel(const QString& title, const QString& icon) {
    SpreadPanel made;
    made.panel = new Panel(look());
    made.panel->setTitle(title);
    made.panel->setIcon(icon);
    made.panel->setBottomPadding(spreadBottom);
    made.ruler = new ThermalRuler(look());
    made.caption = new TextLabel(look(), Type::note, Tone::textSecondary);
    made.caption->setWraps(true);
    made.caption->setMaximumWidth(widestCaption);
    made.panel->body()->addWidget(made.ruler);
    made.panel->body()->addSpacing(captionGap);
    made.panel->body()->addWidget(made.caption);
    scroll_->column()->addWidget(made.panel);
    return made;
}

void CoresView::showEvent(QShowEvent* event) {
    context().actions.setCoresPaneVisible(true);
    // The single sensors' figures come with this publishing, not with the next tick.
    if (hub().isReady())
        context().actions.publish(true);
    View::showEvent(event);
}

void CoresView::hideEvent(QHideEvent* event) {
    context().actions.setCoresPaneVisible(false);
    View::hideEvent(event);
}

void CoresView::resizeEvent(QResizeEvent* event) {
    View::resizeEvent(event);
    placeTiles();
}

void CoresView::placeTiles() {
    const int margins = 2 * Space::windowMargin + 2 * Space::panelPadding;
    const int columns =
        width() < narrowBelow ? narrowColumnCount(model_.coreCount, width() - margins) : columnCount(model_.coreCount);
    for (const ClusterWidgets& widgets : clusters_)
        widgets.grid->setColumns(columns);
}

void CoresView::showClusters(const CoresModel& model) {
    // Digits that change several times a second are hard enough to read: the meters step with them.
    const bool steps = context().settings.value(Setting::sampleInterval) < 1;
    const std::optional<Animation> animation = steps ? std::nullopt : look().update();
    while (clusters_.size() > model.clusters.size()) {
        delete clusters_.back().line;
        delete clusters_.back().grid;
        clusters_.pop_back();
    }
    while (clusters_.size() < model.clusters.size()) {
        auto* const line = new ClusterLine(look(), clusters_.empty() ? 0 : clusterGap);
        auto* const grid = new CoreGrid(look());
        cores_->body()->addWidget(line);
        cores_->body()->addWidget(grid);
        clusters_.push_back({.line = line, .grid = grid});
    }
    for (std::size_t i = 0; i < clusters_.size(); ++i) {
        const CoreCluster& cluster = model.clusters[i];
        clusters_[i].line->show(cluster.busyText, cluster.ceilingText);
        clusters_[i].grid->show(cluster.cores, animation);
    }
}

void CoresView::showSpread(const SpreadPanel& widgets, const std::optional<Spread>& spread) {
    widgets.panel->setVisible(spread.has_value());
    if (!spread)
        return;
    widgets.panel->setSubtitle(spread->subtitle);
    widgets.ruler->show(*spread);
    widgets.caption->setText(spread->caption);
}

void CoresView::showNote(TextLabel& label, const QString& note) {
    label.setText(note);
    label.setVisible(!note.isEmpty());
}

TextLabel* CoresView::newNote() {
    auto* const note = new TextLabel(look(), Type::body, Tone::textSecondary); // owned by what it is laid out in
    note->setWraps(true);
    note->hide();
    return note;
}

void CoresView::refresh() {
    CoresModel model = coresModel(hub());
    if (model == model_)
        return;
    const bool otherCount = model.coreCount != model_.coreCount;
    cores_->setSubtitle(model.subtitle);
    showClusters(model);
    showNote(*coresNote_, model.coresNote);
    showSpread(die_, model.die);
    showSpread(gpu_, model.gpu);
    showNote(*sensorsNote_, model.sensorsNote);
    model_ = std::move(model);
    if (otherCount)
        placeTiles();
}

} // namespace vantoro
