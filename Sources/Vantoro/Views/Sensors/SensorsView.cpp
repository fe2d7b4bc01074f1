#include "Views/Sensors/SensorsView.h"

#include "Design/Gauges/Gauge.h"
#include "Design/Panel.h"
#include "Design/ScrollPane.h"
#include "Views/Sensors/SensorBars.h"
#include "Views/Sensors/SensorRow.h"
#include "Views/Shared/StepMeters.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <QClipboard>
#include <QGuiApplication>
#include <QPainter>
#include <QVBoxLayout>
#include <utility>

namespace vantoro {

namespace {

constexpr int machineLineHeight = 56;
constexpr int temperatureHeight = 48;
constexpr int powerHeight = 52;
constexpr int fansBottom = 12;
constexpr int powerBottom = 6;
constexpr int processorBottom = 20;
constexpr int memoryBottom = 22;
constexpr int complaintGap = 16;
constexpr int narrowBelow = 940;
/// The machine line stands where the texts of the panels do.
constexpr int textInset = Space::heroInset - Space::windowMargin;

} // namespace

/// Which machine this is, what was found on it, and what the figures come from.
class SensorsView::MachineLine : public PaintedWidget {
public:
    explicit MachineLine(Look& look) : PaintedWidget(look) {
        // What room is left belongs below the panels.
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

    void show(const QString& name, const QString& summary, const QString& sources) {
        if (name == name_ && summary == summary_ && sources == sources_)
            return;
        name_ = name;
        summary_ = summary;
        sources_ = sources;
        update();
        announceChange(QAccessible::NameChanged);
    }

    QSize sizeHint() const override { return {480, qRound(machineLineHeight * theme().textScale())}; }
    QSize minimumSizeHint() const override { return {200, sizeHint().height()}; }
    Description describe() override {
        return {.role = QAccessible::StaticText, .name = QStringList{name_, summary_, sources_}.join(", ")};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        constexpr double gap = 12;
        QPainter painter(this);
        QRectF line = QRectF(rect()).adjusted(textInset, 0, -textInset, 0);
        drawText(painter, line, Type::panelTitle, color(Tone::textPrimary), name_);
        line.setLeft(line.left() + textWidth(Type::panelTitle, name_) + gap);
        if (line.width() <= 0)
            return;
        drawText(painter, line, Type::body, color(Tone::textSecondary), summary_);
        line.setLeft(line.left() + textWidth(Type::body, summary_) + gap);
        if (line.width() > 0)
            drawText(painter, line, Type::small, color(Tone::textSecondary), sources_, Qt::AlignRight);
    }

private:
    QString name_;
    QString summary_;
    QString sources_;
};

/// A fan's name, its speed, and below them its gauge.
class SensorsView::FanRow : public PaintedWidget {
public:
    FanRow(Look& look, bool isFirst) : PaintedWidget(look), isFirst_(isFirst), gauge_(new LinearGauge(look, this)) {
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

    void show(const FanRowModel& fan, const std::optional<Animation>& animation) {
        if (fan == fan_)
            return;
        fan_ = fan;
        gauge_->show(fan, animation);
        gauge_->setVisible(fan.showsGauge);
        updateGeometry();
        setToolTip(fan.range.isEmpty() ? QString() : vantoro::tr("lowest and highest since launch: %1").arg(fan.range));
        update(0, 0, width(), fan.showsGauge ? gauge_->y() : height());
        announceChange();
    }

    QSize sizeHint() const override {
        return {456, gaugeTop() + bottomGap + (fan_.showsGauge ? gauge_->sizeHint().height() : 0)};
    }
    QSize minimumSizeHint() const override { return {240, sizeHint().height()}; }
    Description describe() override {
        if (!fan_.showsGauge)
            return {.role = QAccessible::StaticText, .name = fan_.label, .value = fan_.spokenValue};
        return {
            .role = QAccessible::ProgressBar, .name = fan_.label, .value = fan_.spokenValue, .number = fan_.position};
    }

protected:
    void resizeEvent(QResizeEvent*) override { place(); }
    void themeChanged() override { place(); }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        if (!isFirst_)
            painter.fillRect(QRect(0, 0, width(), 1), color(Tone::line));
        constexpr double gap = 8;
        constexpr TextStyle speed = Type::lead.semibold();
        QRectF line(0, textTop, width(), lineHeight(Type::body));
        const FigureLine figure{fan_.speed, fan_.unit, speed, Type::small};
        if (fan_.unit.isEmpty())
            drawText(painter, line, speed, color(Tone::textTertiary), fan_.speed, Qt::AlignRight);
        else
            drawFigureLine(painter, mirrored(line), figure, theme(), mirrored(Qt::AlignRight));
        line.setRight(line.right() - figureLineWidth(figure, theme()) - gap);
        drawText(painter, line, Type::body, color(Tone::textPrimary), fan_.label);
        line.setLeft(line.left() + textWidth(Type::body, fan_.label) + gap);
        if (line.width() > 0)
            drawText(painter, line, Type::caption, color(Tone::textTertiary), fan_.range);
    }

private:
    static constexpr int textTop = 10;
    static constexpr int bottomGap = 11;

    int gaugeTop() const { return textTop + static_cast<int>(lineHeight(Type::body)) + 1; }
    void place() { gauge_->setGeometry(0, gaugeTop(), width(), gauge_->sizeHint().height()); }

    bool isFirst_;
    LinearGauge* gauge_; // owned by Qt as a child
    FanRowModel fan_;
};

/// What the system says of the heat.
class SensorsView::PressureRow : public PaintedWidget {
public:
    explicit PressureRow(Look& look)
        : PaintedWidget(look), meter_(new FourStepMeter(look, FourStepMeter::Names::all, this)) {
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        meter_->setSpokenName(vantoro::tr("Thermal pressure"));
    }

    void show(ThermalPressure pressure) { meter_->show(pressure); }

    QSize sizeHint() const override { return {456, meterTop + meter_->sizeHint().height() + bottomGap}; }
    QSize minimumSizeHint() const override { return {300, sizeHint().height()}; }
    Description describe() override { return {.isDecoration = true}; }

protected:
    void resizeEvent(QResizeEvent*) override { place(); }
    void themeChanged() override { place(); }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const double side = SensorRow::sideMargin;
        painter.fillRect(QRectF(side, 0, width() - 2 * side, 1), color(Tone::line));
        const double line = lineHeight(Type::body);
        drawText(painter, QRectF(side, meterTop + 3 - line / 2, width() - 2 * side - meter_->width(), line), Type::body,
                 color(Tone::textPrimary), vantoro::tr("Thermal pressure"));
    }

private:
    static constexpr int meterTop = 26;
    static constexpr int bottomGap = 20;

    void place() {
        const QSize size = meter_->sizeHint();
        const int wide = std::min(qRound(size.width() * theme().textScale()), width() * 3 / 5);
        meter_->setGeometry(mirrored(QRect(width() - SensorRow::sideMargin - wide, meterTop, wide, size.height())));
    }

    FourStepMeter* meter_; // owned by Qt as a child
};

SensorsView::SensorsView(ViewContext& context, QWidget* parent)
    : View(context, parent), scroll_(new ScrollPane(context.look)) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll_);
    build();
    shows({&SensorHub::snapshotChanged, &SensorHub::vitalsChanged, &SensorHub::sensorsAvailableChanged,
           &SensorHub::processSourceChanged, &SensorHub::dieSensorsChanged, &SensorHub::gpuSensorsChanged});
}

SensorsView::~SensorsView() = default;

Panel* SensorsView::addPanel(QVBoxLayout* column, const QString& title, const QString& icon) {
    auto* const panel = new Panel(look());
    panel->setTitle(title);
    panel->setIcon(icon);
    column->addWidget(panel);
    return panel;
}

void SensorsView::build() {
    auto* const all = new QVBoxLayout;
    all->setSpacing(0);
    machine_ = new MachineLine(look());
    complaint_ = new TextLabel(look(), Type::body, Tone::textSecondary);
    complaint_->setWraps(true);
    columns_ = new QBoxLayout(QBoxLayout::LeftToRight);
    columns_->setSpacing(Space::panelGap);
    QVBoxLayout* const left = left_ = new QVBoxLayout;
    QVBoxLayout* const right = right_ = new QVBoxLayout;
    for (QVBoxLayout* column : {left, right}) {
        column->setSpacing(Space::panelGap);
        columns_->addLayout(column, 1);
    }
    fans_ = addPanel(left, vantoro::tr("Fans"), "fan.fill");
    fans_->setBottomPadding(fansBottom);
    buildTemperatures(left);
    left->addStretch();
    power_ = addRows(right, vantoro::tr("Power"), "bolt.fill", SensorsModel::powerRows, powerRows_);
    processorPanel_ = addPanel(right, vantoro::tr("Processor"), "cpu");
    processor_ = new StackedBar(look());
    processor_->setSpokenName(vantoro::tr("Processor"));
    memoryPanel_ = addPanel(right, vantoro::tr("Memory"), "memorychip");
    memory_ = new StackedBar(look());
    memory_->setSpokenName(vantoro::tr("Memory"));
    processorPanel_->setBottomPadding(processorBottom);
    processorPanel_->body()->addWidget(processor_);
    memoryPanel_->setBottomPadding(memoryBottom);
    memoryPanel_->body()->addWidget(memory_);
    waiting_ = addRows(right, vantoro::tr("Waiting"), "hourglass", SensorsModel::waitingRows, waitingRows_);
    waiting_->setSubtitle(vantoro::tr("share of the time"));
    right->addStretch();
    copy_ = new Button(look(), Button::Kind::quiet, vantoro::tr("Copy all"));
    copied_.emplace(look(), *copy_);
    connect(copy_, &Button::clicked, this, &SensorsView::copyAll);
    auto* const end = new QHBoxLayout;
    end->addStretch();
    end->addWidget(copy_);
    all->addWidget(machine_);
    complaintRow_ = new QHBoxLayout;
    complaintRow_->addWidget(complaint_);
    all->addLayout(complaintRow_);
    all->addLayout(columns_);
    all->addSpacing(Space::panelGap - Button::ringMargin);
    all->addLayout(end);
    scroll_->column()->addLayout(all);
    scroll_->column()->addStretch();
}

void SensorsView::buildTemperatures(QVBoxLayout* column) {
    Panel* const panel = temperatures_ = addPanel(column, vantoro::tr("Temperatures"), "thermometer.medium");
    panel->setSidePadding(Space::panelPadding - SensorRow::sideMargin);
    for (std::size_t i = 0; i < temperatureFigures.size(); ++i) {
        temperatureRows_.push_back(new SensorRow(look(), temperatureHeight, i == 0));
        panel->body()->addWidget(temperatureRows_.back());
        connect(temperatureRows_.back(), &SensorRow::unfoldAsked, this,
                [this, i](bool unfolded) { unfold(i, unfolded); });
    }
    pressure_ = new PressureRow(look());
    panel->body()->addWidget(pressure_);
}

Panel* SensorsView::addRows(QVBoxLayout* column, const QString& title, const QString& icon, std::size_t count,
                            std::vector<SensorRow*>& rows) {
    Panel* const panel = addPanel(column, title, icon);
    panel->setSidePadding(Space::panelPadding - SensorRow::sideMargin);
    panel->setBottomPadding(powerBottom);
    for (std::size_t i = 0; i < count; ++i) {
        rows.push_back(new SensorRow(look(), powerHeight, i == 0));
        panel->body()->addWidget(rows.back());
    }
    return panel;
}

void SensorsView::showRows(Panel& panel, const std::vector<SensorRow*>& rows, const std::vector<SensorRowModel>& models,
                           bool hasMore) {
    bool isFirst = true;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i]->setVisible(models[i].isShown);
        if (!models[i].isShown)
            continue;
        rows[i]->show(models[i]);
        rows[i]->setFirst(std::exchange(isFirst, false));
    }
    panel.setVisible(!isFirst || hasMore);
}

bool SensorsView::isAnyUnfolded() const {
    return std::ranges::find(unfolded_, true) != unfolded_.end();
}

void SensorsView::readSensorsIfSeen(bool isSeen) {
    context().actions.setSensorListVisible(isSeen && isAnyUnfolded());
}

void SensorsView::unfold(std::size_t row, bool unfolded) {
    unfolded_.at(row) = unfolded;
    readSensorsIfSeen(isVisible());
    // What is unfolded has its figures at once.
    if (unfolded && hub().isReady())
        context().actions.publish(true);
    refresh();
}

void SensorsView::copyAll() {
    QGuiApplication::clipboard()->setText(model_.plainText());
    copied_->say(vantoro::tr("Copied"));
}

void SensorsView::showEvent(QShowEvent* event) {
    readSensorsIfSeen(true);
    if (isAnyUnfolded() && hub().isReady())
        context().actions.publish(true);
    View::showEvent(event);
}

void SensorsView::hideEvent(QHideEvent* event) {
    readSensorsIfSeen(false);
    copied_->end();
    View::hideEvent(event);
}

void SensorsView::resizeEvent(QResizeEvent* event) {
    View::resizeEvent(event);
    const QBoxLayout::Direction direction = width() < narrowBelow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight;
    if (columns_->direction() != direction)
        columns_->setDirection(direction);
}

void SensorsView::showFans(const SensorsModel& model) {
    fans_->setVisible(model.fans.has_value());
    fans_->setCaption(model.fansNote);
    if (!model.fans)
        return;
    while (fanRows_.size() > model.fans->size()) {
        delete fanRows_.back();
        fanRows_.pop_back();
    }
    while (fanRows_.size() < model.fans->size()) {
        fanRows_.push_back(new FanRow(look(), fanRows_.empty()));
        fans_->body()->addWidget(fanRows_.back());
    }
    for (std::size_t i = 0; i < fanRows_.size(); ++i)
        fanRows_[i]->show((*model.fans)[i], look().update());
}

/// Where the left column has nothing of its own, it takes what comes next.
void SensorsView::balanceColumns(const SensorsModel& model) {
    const bool isLeftEmpty = !model.fans && !model.pressure && !SensorsModel::anyShown(model.temperatures);
    if (isLeftEmpty == (left_->indexOf(processorPanel_) >= 0))
        return;
    if (isLeftEmpty)
        left_->insertWidget(0, processorPanel_);
    else
        right_->insertWidget(right_->indexOf(memoryPanel_), processorPanel_);
}

void SensorsView::refresh() {
    SensorsModel model = sensorsModel(hub(), context().sources, unfolded_);
    if (model == model_)
        return;
    machine_->show(model.machineName, model.summary, model.dataSources);
    complaint_->setText(model.complaint);
    complaint_->setVisible(!model.complaint.isEmpty());
    complaintRow_->setContentsMargins(textInset, 0, textInset, model.complaint.isEmpty() ? 0 : complaintGap);
    showFans(model);
    balanceColumns(model);
    showRows(*temperatures_, temperatureRows_, model.temperatures, model.pressure.has_value());
    pressure_->setVisible(model.pressure.has_value());
    if (model.pressure)
        pressure_->show(*model.pressure);
    showRows(*power_, powerRows_, model.power, false);
    showRows(*waiting_, waitingRows_, model.waiting, false);
    processorPanel_->setFigure(model.processor.figure);
    processor_->show(model.processor, look().update());
    memoryPanel_->setFigure(model.memory.figure);
    memory_->show(model.memory, look().update());
    model_ = std::move(model);
}

} // namespace vantoro
