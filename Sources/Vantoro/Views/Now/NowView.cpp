#include "Views/Now/NowView.h"

#include "Views/Now/NowContent.h"
#include "Views/Suspects/QuitAlert.h"

namespace vantoro {

NowView::NowView(ViewContext& context, QWidget* parent)
    : View(context, parent), pane_(new ScrollPane(context.look, this)), content_(new NowContent(context.look)) {
    pane_->column()->addWidget(content_);
    pane_->column()->addStretch(1);
    const auto ask = [this](std::int32_t pid) { QuitAlert::ask(this->context(), *this, pid); };
    connect(content_->suspects(), &SuspectsPanel::quitRequested, this, ask);
    connect(content_->suspects(), &SuspectsPanel::rowReached, this,
            [this](QWidget* row) { pane_->ensureWidgetVisible(row, 0, Space::windowMargin); });
    connect(content_->advice(), &AdvicePanel::quitRequested, this, ask);
    connect(&hub().quits(), &Quits::changed, this, [this] {
        if (isVisible()) {
            showSuspects();
            showAdvice();
        }
    });
    connect(content_->advice(), &AdvicePanel::explainRequested, this, &NowView::explainRequested);
    shows({&SensorHub::snapshotChanged, &SensorHub::vitalsChanged, &SensorHub::verdictChanged}, [this] { showHero(); });
    shows({&SensorHub::verdictChanged, &SensorHub::suspectsChanged, &SensorHub::processesReadyChanged,
           &SensorHub::processSourceChanged, &SensorHub::unreadableProcessCountChanged},
          [this] { showSuspects(); });
    shows({&SensorHub::verdictChanged, &SensorHub::suspectsChanged}, [this] { showAdvice(); });
    shows({&SensorHub::snapshotChanged, &SensorHub::verdictChanged, &SensorHub::seriesChanged},
          [this] { showFacts(); });
}

void NowView::refresh() {
    showHero();
    showSuspects();
    showAdvice();
    showFacts();
}

void NowView::showHero() {
    content_->hero()->show(heroModel(hub(), context().settings));
    content_->orderStops();
}

void NowView::showSuspects() {
    content_->suspects()->show(suspectsModel(hub(), context().sources));
    content_->orderStops();
}

void NowView::showAdvice() {
    content_->advice()->show(adviceModel(hub()));
    content_->orderStops();
}

void NowView::showFacts() {
    content_->facts()->show(factsModel(hub()));
}

void NowView::resizeEvent(QResizeEvent* event) {
    content_->setNarrow(width() < narrowBelow);
    pane_->setGeometry(rect());
    View::resizeEvent(event);
}

} // namespace vantoro
