#include "Views/Now/NowView.h"

#include "Views/Suspects/QuitAlert.h"

#include <algorithm>
#include <initializer_list>
#include <QDir>
#include <QEvent>
#include <QStyle>

namespace vantoro {

namespace {
constexpr int belowHero = Space::panelGap;
constexpr int adviceShare = 360;
constexpr int shares = 616 + adviceShare;
constexpr int leastAdvice = 284;
} // namespace

NowContent::NowContent(Look& look, QWidget* parent)
    : QWidget(parent)
    , hero_(new Hero(look, this))
    , suspects_(new SuspectsPanel(look, this))
    , advice_(new AdvicePanel(look, this))
    , facts_(new FactsPanel(look, this)) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(suspects_, &SuspectsPanel::heightChanged, this, &NowContent::placeAnew);
    connect(advice_, &AdvicePanel::heightChanged, this, &NowContent::placeAnew);
    connect(facts_, &FactsPanel::heightChanged, this, &NowContent::placeAnew);
    connect(&look.theme, &Theme::changed, this, &NowContent::placeAnew);
}

void NowContent::setNarrow(bool narrow) {
    suspects_->setNarrow(narrow);
    facts_->setNarrow(narrow);
}

void NowContent::orderStops() {
    const qsizetype count = findChildren<QWidget*>().size();
    if (count == ordered_)
        return;
    ordered_ = count;
    QWidget* before = nullptr;
    const auto append = [&before](QWidget* stop) {
        if (before != nullptr)
            setTabOrder(before, stop);
        before = stop;
    };
    for (QWidget* const part : std::initializer_list<QWidget*>{hero_, suspects_, advice_, facts_}) {
        if (part->focusPolicy() != Qt::NoFocus)
            append(part);
        QList<QWidget*> stops;
        for (QWidget* const inner : part->findChildren<QWidget*>())
            if (inner->focusPolicy() != Qt::NoFocus)
                stops.append(inner);
        std::stable_sort(stops.begin(), stops.end(), [part](const QWidget* a, const QWidget* b) {
            const QPoint one = a->mapTo(part, QPoint());
            const QPoint other = b->mapTo(part, QPoint());
            return one.y() != other.y() ? one.y() < other.y()
                                        : (part->isRightToLeft() ? one.x() > other.x() : one.x() < other.x());
        });
        for (QWidget* const stop : stops)
            append(stop);
    }
}

NowContent::Frame NowContent::frame(int width) const {
    Frame frame;
    frame.hero = QRect(0, 0, width, hero_->heightForWidth(width));
    const int top = frame.hero.height() + belowHero;
    const int shared = width - Space::panelGap;
    const int advice = std::max(leastAdvice, qRound(static_cast<double>(shared) * adviceShare / shares));
    const int suspects = shared - advice;
    const int height = std::max(suspects_->heightFor(suspects), advice_->heightFor(advice));
    frame.suspects = QRect(0, top, suspects, height);
    frame.advice = QRect(suspects + Space::panelGap, top, advice, height);
    frame.facts = QRect(0, top + height + Space::panelGap, width, facts_->heightFor(width));
    return frame;
}

int NowContent::heightForWidth(int width) const {
    const QRect last = frame(width).facts;
    return last.y() + last.height();
}

void NowContent::place() {
    const Frame frame = this->frame(width());
    hero_->setGeometry(frame.hero);
    suspects_->setGeometry(QStyle::visualRect(layoutDirection(), rect(), frame.suspects));
    advice_->setGeometry(QStyle::visualRect(layoutDirection(), rect(), frame.advice));
    facts_->setGeometry(frame.facts);
}

void NowContent::placeAnew() {
    place();
    updateGeometry();
}

bool NowContent::event(QEvent* event) {
    // A part of it asks for another height.
    if (event->type() == QEvent::LayoutRequest)
        placeAnew();
    return QWidget::event(event);
}

void NowContent::resizeEvent(QResizeEvent*) {
    place();
}

NowView::NowView(ViewContext& context, QWidget* parent)
    : View(context, parent), pane_(new ScrollPane(context.look, this)), content_(new NowContent(context.look)) {
    pane_->column()->addWidget(content_);
    pane_->column()->addStretch(1);
    connect(content_->hero(), &Hero::sensorsRequested, this, &NowView::sensorsRequested);
    const auto ask = [this](std::int32_t pid) { QuitAlert::ask(this->context(), *this, pid); };
    connect(content_->suspects(), &SuspectsPanel::quitRequested, this, ask);
    connect(content_->suspects(), &SuspectsPanel::unfolded, this, [this](const QString& key) {
        unfolded_ = {.key = key, .folder = jobFolder(hub(), key, QDir::homePath())};
        showSuspects();
    });
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
    context().actions.seePrograms();
    if (unfolded_.key != content_->suspects()->unfoldedKey())
        unfolded_ = {}; // its program has left the list
    content_->suspects()->show(suspectsModel(hub(), context().sources, unfolded_));
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
