#include "Views/NowView.h"

#include "Views/NowContent.h"
#include "Views/QuitAlert.h"

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
        if (isVisible())
            refreshPanels();
    });
    connect(content_->advice(), &AdvicePanel::explainRequested, this, &NowView::explainRequested);
}

void NowView::refresh() {
    content_->hero()->show(heroModel(hub(), context().settings));
    refreshPanels();
    content_->facts()->show(factsModel(hub()));
    content_->orderStops();
}

void NowView::refreshPanels() {
    content_->suspects()->show(suspectsModel(hub(), context().sources));
    content_->advice()->show(adviceModel(hub()));
}

void NowView::resizeEvent(QResizeEvent* event) {
    content_->setNarrow(width() < narrowBelow);
    pane_->setGeometry(rect());
    View::resizeEvent(event);
}

} // namespace vantoro
