#include "Views/Cores/CoresView.h"

#include "Design/Panel.h"
#include "Design/ScrollPane.h"
#include "Views/Cores/CoreTile.h"
#include "Views/Cores/ThermalRuler.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>

namespace vantoro {

namespace {

constexpr int tileGap = 8;
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

    void set(const QString& busy, const QString& ceiling) {
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

/// The tiles of one kind, in columns of equal width; a tile stays with its core.
class CoresView::TileGrid : public QWidget {
public:
    explicit TileGrid(Look& look) : look_(look) {
        QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
        connect(&look.theme, &Theme::changed, this, [this] { relayout(); });
    }

    void set(const std::vector<CoreFigures>& cores, const std::optional<Animation>& animation) {
        const bool changes = cores.size() != tiles_.size();
        while (tiles_.size() > cores.size()) {
            delete tiles_.back();
            tiles_.pop_back();
        }
        while (tiles_.size() < cores.size()) {
            tiles_.push_back(new CoreTile(look_, this));
            tiles_.back()->QWidget::show();
        }
        for (std::size_t i = 0; i < cores.size(); ++i)
            tiles_[i]->show(cores[i], animation);
        if (changes)
            relayout();
    }

    void setColumns(int columns) {
        if (columns == columns_)
            return;
        columns_ = columns;
        relayout();
    }

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int) const override { return sizeHint().height(); }
    QSize sizeHint() const override {
        const int rows = (static_cast<int>(tiles_.size()) + columns_ - 1) / columns_;
        return {600, std::max(0, rows * (CoreTile::heightFor(look_.theme) + tileGap) - tileGap)};
    }
    QSize minimumSizeHint() const override { return {columns_ * (40 + tileGap), sizeHint().height()}; }

protected:
    void resizeEvent(QResizeEvent*) override { place(); }

private:
    void relayout() {
        updateGeometry();
        place();
    }

    void place() {
        const double width = (this->width() + tileGap) / static_cast<double>(columns_);
        const int height = CoreTile::heightFor(look_.theme);
        for (std::size_t i = 0; i < tiles_.size(); ++i) {
            const int column = static_cast<int>(i) % columns_;
            const int left = qRound(column * width);
            const int right = qRound((column + 1) * width) - tileGap;
            const QRect tile(left, static_cast<int>(i) / columns_ * (height + tileGap), right - left, height);
            tiles_[i]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), tile));
        }
    }

    Look& look_;
    std::vector<CoreTile*> tiles_; // owned by Qt as children
    int columns_ = 1;
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
        auto* const grid = new TileGrid(look());
        cores_->body()->addWidget(line);
        cores_->body()->addWidget(grid);
        clusters_.push_back({.line = line, .grid = grid});
    }
    for (std::size_t i = 0; i < clusters_.size(); ++i) {
        const CoreCluster& cluster = model.clusters[i];
        clusters_[i].line->set(cluster.busyText, cluster.ceilingText);
        clusters_[i].grid->set(cluster.cores, animation);
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
