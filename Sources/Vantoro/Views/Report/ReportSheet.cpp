#include "Views/Report/ReportSheet.h"

#include "Design/Panel.h"
#include "Design/ScrollPane.h"
#include "Design/TextLabel.h"
#include "Views/Report/ReportPage.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QResizeEvent>
#include <QSaveFile>
#include <QStandardPaths>

namespace vantoro {

namespace {
constexpr int radius = 16;
constexpr int widest = 896;
constexpr int highest = 702;
constexpr int windowMargin = 24;
constexpr int padding = 32;
constexpr int footerHeight = 60;
constexpr int footerRight = 24;
constexpr int buttonWidth = 88;
constexpr int buttonGap = 12;
/// The card's own outline stays free.
constexpr int outline = 1;
} // namespace

/// The line above the footer.
class ReportSheet::Footer : public PaintedWidget {
public:
    using PaintedWidget::PaintedWidget;

protected:
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(QRect(0, 0, width(), 1), color(Tone::line)); }
};

ReportSheet::ReportSheet(Look& look, QWidget& window, const SensorHub& hub)
    : Sheet(look, window, radius)
    , model_(reportModel(hub))
    , pane_(new ScrollPane(look, card()))
    , page_(new ReportPage(look, model_))
    , footer_(new Footer(look, card()))
    , machine_(new TextLabel(look, Type::caption, Tone::textTertiary, footer_))
    , sensors_(new TextLabel(look, Type::caption, Tone::textTertiary, footer_))
    , save_(new Button(look, Button::Kind::bordered, vantoro::tr("Save…"), footer_))
    , copy_(new Button(look, Button::Kind::bordered, vantoro::tr("Copy"), footer_))
    , done_(new Button(look, Button::Kind::standard, vantoro::tr("Done"), footer_))
    , copied_(look, *copy_) {
    setSpokenName(model_.headline);
    pane_->setSurface(Tone::raised);
    const int besideGutter = padding - reportGutter - outline;
    constexpr int beside = padding - outline;
    pane_->setContentMargins(isRightToLeft() ? QMargins(beside, 0, besideGutter, 0)
                                             : QMargins(besideGutter, 0, beside, 0));
    pane_->column()->addWidget(page_);
    pane_->column()->addStretch(1);
    auto* const cardLayout = new QVBoxLayout(card()); // owned by the card
    // The rounded corners stay free of what scrolls.
    cardLayout->setContentsMargins(outline, radius, outline, 0);
    cardLayout->setSpacing(0);
    cardLayout->addWidget(pane_, 1);
    cardLayout->addWidget(footer_);

    machine_->setText(model_.machineName);
    sensors_->setText(model_.sensorSummary);
    auto* const row = new QHBoxLayout(footer_); // owned by the footer
    constexpr int besideButtons = footerRight - Button::ringMargin - outline;
    row->setContentsMargins(isRightToLeft() ? besideButtons : beside, 0, isRightToLeft() ? beside : besideButtons, 0);
    row->setSpacing(buttonGap);
    row->addWidget(machine_);
    row->addWidget(sensors_);
    row->addStretch(1);
    auto* const buttons = new QHBoxLayout; // owned by the layout it is added to
    buttons->setSpacing(buttonGap - 2 * Button::ringMargin);
    for (Button* const button : {save_, copy_, done_})
        buttons->addWidget(button);
    row->addLayout(buttons);
    placeFooter();

    connect(page_, &ReportPage::reached, this,
            [this](const QPoint& point) { pane_->ensureVisible(0, page_->mapTo(pane_->widget(), point).y(), 0, 8); });
    connect(save_, &Button::clicked, this, &ReportSheet::askWhereToSave);
    connect(copy_, &Button::clicked, this, &ReportSheet::copy);
    connect(done_, &Button::clicked, this, &ReportSheet::close);
}

void ReportSheet::openReport() {
    // The page has the keyboard first: arrows scroll it, and Return closes the sheet.
    open(page_);
}

QSize ReportSheet::cardSize(const QSize& window) const {
    const int width = std::min(widest, window.width() - 2 * windowMargin);
    const bool one = reportTakesOneColumn(width, theme().textScale());
    const int inner = width - 2 * padding + reportGutter;
    const int height = radius + page_->heightFor(inner, one) + qRound(footerHeight * theme().textScale());
    return {width, std::min({height, highest, window.height() - 2 * windowMargin})};
}

void ReportSheet::placeFooter() {
    footer_->setFixedHeight(qRound(footerHeight * theme().textScale()));
    for (Button* const button : {save_, copy_, done_})
        button->setMinimumWidth(qRound(buttonWidth * theme().textScale()) + 2 * Button::ringMargin);
}

void ReportSheet::resizeEvent(QResizeEvent* event) {
    page_->setOneColumn(reportTakesOneColumn(cardSize(size()).width(), theme().textScale()));
    Sheet::resizeEvent(event);
}

void ReportSheet::themeChanged() {
    placeFooter();
    // Text of another size takes a card of another size.
    QResizeEvent same(size(), size());
    resizeEvent(&same);
}

void ReportSheet::copy() {
    QGuiApplication::clipboard()->setText(model_.plainText);
    copied_.say(vantoro::tr("Copied"));
}

void ReportSheet::askWhereToSave() {
    const QDir documents(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    const QPointer<ReportSheet> sheet(this);
    const QString fileName = QFileDialog::getSaveFileName(this, vantoro::tr("Save the report"),
                                                          documents.filePath(vantoro::tr("Vantoro report") + ".txt"),
                                                          vantoro::tr("Text files") + " (*.txt)");
    if (sheet != nullptr && !fileName.isEmpty())
        saveTo(fileName);
}

bool ReportSheet::saveTo(const QString& fileName) {
    QSaveFile file(fileName);
    const QByteArray text = model_.plainText.toUtf8();
    const bool isSaved = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    machine_->setText(isSaved ? model_.machineName : reportNotSaved(file.errorString()));
    machine_->setTone(isSaved ? Tone::textTertiary : Tone::textPrimary);
    sensors_->setVisible(isSaved);
    if (!isSaved)
        machine_->announceChange(QAccessible::Alert);
    return isSaved;
}

QString ReportSheet::complaint() const {
    return machine_->text() == model_.machineName ? QString() : machine_->text();
}

} // namespace vantoro
