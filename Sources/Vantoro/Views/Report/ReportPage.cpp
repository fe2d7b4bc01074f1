#include "Views/Report/ReportPage.h"

#include <algorithm>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>

namespace vantoro {

/// Speaks for one paragraph or row; what is seen is painted by the page.
class ReportPage::Voice : public PaintedWidget {
public:
    Voice(Look& look, ReportPage& page, Description what) : PaintedWidget(look, &page), what_(std::move(what)) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

    Description describe() override { return what_; }

private:
    Description what_;
};

ReportPage::ReportPage(Look& look, ReportModel model, QWidget* parent)
    : PaintedWidget(look, parent)
    , model_(std::move(model))
    , pips_(new LevelPips(look, LevelPips::Height::small, this)) {
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::IBeamCursor);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    pips_->show(model_.level, model_.heatStop);
    for (Description& what : spokenParts(model_))
        voices_.push_back(new Voice(look, *this, std::move(what)));
}

ReportPage::~ReportPage() = default;

void ReportPage::setOneColumn(bool one) {
    if (one == isOneColumn_)
        return;
    isOneColumn_ = one;
    arrangeAnew();
}

const ReportArrangement& ReportPage::arranged(int width) const {
    if (arrangement_ == nullptr || arrangement_->width != width)
        arrangement_ =
            std::make_unique<ReportArrangement>(arrangeReport(model_, theme(), width, isOneColumn_, layoutDirection()));
    return *arrangement_;
}

int ReportPage::heightFor(int width, bool oneColumn) const {
    const auto [found, isNew] = heights_.try_emplace({width, oneColumn}, 0);
    if (isNew)
        found->second = static_cast<int>(arrangeReport(model_, theme(), width, oneColumn).height);
    return found->second;
}

QSize ReportPage::sizeHint() const {
    constexpr int usual = 844;
    return {usual, heightForWidth(width() > reportGutter ? width() : usual)};
}

Description ReportPage::describe() {
    return {.role = QAccessible::Document, .name = model_.headline};
}

void ReportPage::paintEvent(QPaintEvent* event) {
    const ReportArrangement& page = arranged(width());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const QRectF& line : page.lines)
        painter.fillRect(line, color(Tone::line));
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme().heatFill(model_.heatStop));
    for (const QRectF& bar : page.bars)
        painter.drawRoundedRect(bar, bar.width() / 2, bar.width() / 2);
    for (const ReportArrangement::Icon& icon : page.icons)
        look().icons.draw(painter, icon.place, icon.name, qRound(icon.place.width()), color(Tone::textSecondary));

    QColor marked = color(Tone::accent);
    marked.setAlphaF(0.4F);
    const auto [first, last] = std::minmax(anchor_, caret_);
    for (std::size_t i = 0; i < page.runs.size(); ++i) {
        const TextRun& run = page.runs[i];
        if (!event->rect().intersects(QRectF(run.origin, run.size).toAlignedRect()))
            continue;
        QList<QTextLayout::FormatRange> selections;
        if (first < last && i >= first.run && i <= last.run) {
            QTextLayout::FormatRange range;
            range.start = i == first.run ? first.character : 0;
            range.length = (i == last.run ? last.character : static_cast<int>(run.text.size())) - range.start;
            range.format.setBackground(marked);
            selections.append(range);
        }
        painter.setPen(run.isHeat ? theme().heatText(model_.heatStop) : color(run.tone));
        run.layout->draw(&painter, run.origin, selections);
    }
    drawFocusRing(painter, QRectF(visibleRegion().boundingRect()), 4);
}

void ReportPage::arrangeAnew() {
    arrangement_.reset();
    const ReportArrangement& page = arranged(width());
    pips_->move(page.pips.toPoint());
    for (std::size_t i = 0; i < voices_.size() && i < page.voices.size(); ++i)
        voices_[i]->setGeometry(page.voices[i].toAlignedRect());
    updateGeometry();
    update();
}

void ReportPage::resizeEvent(QResizeEvent* event) {
    if (event->size().width() != event->oldSize().width())
        arrangeAnew();
}

void ReportPage::themeChanged() {
    heights_.clear();
    arrangeAnew();
}

ReportPage::Place ReportPage::placeAt(const QPointF& point) const {
    const ReportArrangement& page = arranged(width());
    const auto outside = [](double value, double low, double high) {
        return std::max({low - value, value - high, 0.0});
    };
    // Lines are nearer than columns: beside a line counts as in it.
    constexpr double verticalWeight = 8;
    std::size_t nearest = 0;
    double leastDistance = -1;
    for (std::size_t i = 0; i < page.runs.size(); ++i) {
        const QRectF box(page.runs[i].origin, page.runs[i].size);
        const double distance =
            verticalWeight * outside(point.y(), box.top(), box.bottom()) + outside(point.x(), box.left(), box.right());
        if (leastDistance < 0 || distance < leastDistance) {
            leastDistance = distance;
            nearest = i;
        }
    }
    if (page.runs.empty())
        return {};
    const TextRun& run = page.runs[nearest];
    const QTextLayout& layout = *run.layout;
    const QPointF within = point - run.origin;
    int line = 0;
    while (line + 1 < layout.lineCount() && within.y() >= layout.lineAt(line + 1).y())
        ++line;
    return {nearest, layout.lineCount() == 0 ? 0 : layout.lineAt(line).xToCursor(within.x())};
}

void ReportPage::select(Place anchor, Place caret) {
    anchor_ = anchor;
    caret_ = caret;
    update();
}

void ReportPage::selectAll() {
    const ReportArrangement& page = arranged(width());
    if (!page.runs.empty())
        select({}, {page.runs.size() - 1, static_cast<int>(page.runs.back().text.size())});
}

QString ReportPage::selectedText() const {
    const ReportArrangement& page = arranged(width());
    const auto [first, last] = std::minmax(anchor_, caret_);
    QString text;
    for (std::size_t i = first.run; i <= last.run && i < page.runs.size(); ++i) {
        const TextRun& run = page.runs[i];
        const int from = i == first.run ? first.character : 0;
        const int to = i == last.run ? last.character : static_cast<int>(run.text.size());
        if (!text.isEmpty())
            text += run.joint;
        text += run.text.mid(from, to - from);
    }
    return text;
}

void ReportPage::copySelection() {
    if (const QString text = selectedText(); !text.isEmpty())
        QGuiApplication::clipboard()->setText(text);
}

void ReportPage::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    const Place place = placeAt(event->position());
    select(event->modifiers() & Qt::ShiftModifier ? anchor_ : place, place);
    isSelecting_ = true;
}

void ReportPage::mouseMoveEvent(QMouseEvent* event) {
    if (!isSelecting_)
        return;
    select(anchor_, placeAt(event->position()));
    emit reached(event->position().toPoint());
}

void ReportPage::mouseReleaseEvent(QMouseEvent*) {
    isSelecting_ = false;
    QClipboard* const clipboard = QGuiApplication::clipboard();
    if (const QString text = selectedText(); !text.isEmpty() && clipboard->supportsSelection())
        clipboard->setText(text, QClipboard::Selection);
}

void ReportPage::mouseDoubleClickEvent(QMouseEvent* event) {
    const Place place = placeAt(event->position());
    const ReportArrangement& page = arranged(width());
    if (place.run >= page.runs.size())
        return;
    const QString& text = page.runs[place.run].text;
    const auto isInWord = [&text](int i) { return i >= 0 && i < text.size() && !text[i].isSpace(); };
    int from = place.character;
    int to = place.character;
    while (isInWord(from - 1))
        --from;
    while (isInWord(to))
        ++to;
    select({place.run, from}, {place.run, to});
}

void ReportPage::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        copySelection();
    else if (event->matches(QKeySequence::SelectAll))
        selectAll();
    else
        PaintedWidget::keyPressEvent(event);
}

} // namespace vantoro
