// The report sheet: what stands where, that its text can be taken away, and how it goes.
#include "Views/Report/ReportPage.h"
#include "Views/Report/ReportSheet.h"

#include "Views/Stage.h"

#include "Design/Controls/Button.h"

#include <QClipboard>
#include <QFile>

namespace vantoro {
namespace {

using testing::Stage;

/// A report over a window of this size, played from a recording.
struct OpenReport {
    explicit OpenReport(const QString& recording, QSize size = {1040, 830}, double textScale = 1) {
        stage.play(recording.toStdString());
        stage.theme.setTextScale(textScale);
        window.resize(size);
        window.show();
        sheet = new ReportSheet(stage.look, window, stage.hub);
        sheet->openReport();
        stage.seconds += 1;
        stage.clock.beat();
        QCoreApplication::processEvents();
    }

    Stage stage;
    QWidget window;
    QPointer<ReportSheet> sheet;
};

TEST(ReportModelTests, HoldsTheExplanationAndItsPlainText) {
    Stage stage;
    stage.play("design-fans.jsonl.gz");
    const ReportModel model = reportModel(stage.hub);
    EXPECT_EQ(model.headline, "Your fans are loud because of Xcode");
    EXPECT_EQ(model.stateLabel, "Loud");
    EXPECT_EQ(model.level, 3);
    ASSERT_EQ(model.sections.size(), 5U);
    EXPECT_EQ(model.leftSections, 2U);
    EXPECT_EQ(model.sections[1].title, "What's drawing the power");
    EXPECT_TRUE(model.sections[1].rows.at(0).isEmphasised);
    for (const ReportSection& section : model.sections)
        EXPECT_TRUE(model.plainText.contains(section.title));
    EXPECT_FALSE(model.plainText.contains(QChar(0x1B)));
    EXPECT_EQ(model.sensorSummary, "2 fans · 148 sensors");

    Verdict waiting;
    waiting.awaitingReading = true;
    EXPECT_EQ(
        reportModel(waiting, Explanation{.sections = {Explanation::Section{.symbol = {}, .title = "Only"}}}).level,
        std::nullopt);
    EXPECT_FALSE(reportTakesOneColumn(896, 1.2));
    EXPECT_TRUE(reportTakesOneColumn(896, 1.25));
    EXPECT_TRUE(reportTakesOneColumn(772, 1));
}

TEST(ReportSheetTests, CopiesAllOrWhatIsSelected) {
    OpenReport open("design-fans.jsonl.gz");
    QClipboard* const clipboard = QGuiApplication::clipboard();
    open.sheet->copy();
    EXPECT_EQ(clipboard->text(), reportModel(open.stage.hub).plainText);
    const auto says = [&](const QString& text) {
        const auto buttons = open.sheet->findChildren<Button*>();
        return std::ranges::any_of(buttons, [&](const Button* button) { return button->text() == text; });
    };
    EXPECT_TRUE(says("Copied"));
    open.stage.seconds += 1.9;
    open.stage.clock.beat();
    EXPECT_TRUE(says("Copied"));
    open.stage.settle();
    EXPECT_TRUE(says("Copy") && !says("Copied"));

    ReportPage& page = open.sheet->page();
    QTest::mouseDClick(&page, Qt::LeftButton, Qt::NoModifier, {24, 20});
    QTest::keyClick(&page, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard->text(), "Your");
    QTest::keyClick(&page, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&page, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(clipboard->text().startsWith("Your fans are loud because of Xcode\nLoud Based on "));
    EXPECT_TRUE(clipboard->text().contains("\n\nWhat changed\nThe fans began climbing"));
    EXPECT_TRUE(clipboard->text().contains("\nFan state  "));

    // From the middle of the headline to its end and beyond.
    QTest::mousePress(&page, Qt::LeftButton, Qt::NoModifier, {12, 20});
    QTest::mouseMove(&page, {page.width() - 4, 20});
    QTest::mouseRelease(&page, Qt::LeftButton, Qt::NoModifier, {page.width() - 4, 20});
    EXPECT_EQ(page.selectedText(), "Your fans are loud because of Xcode");
}

TEST(ReportSheetTests, SavesOrSaysWhyNot) {
    OpenReport open("fanless-browser.jsonl");
    const QString path = open.stage.folder.filePath("report.txt");
    EXPECT_TRUE(open.sheet->saveTo(path));
    EXPECT_EQ(open.sheet->complaint(), "");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()), reportModel(open.stage.hub).plainText);
    EXPECT_FALSE(open.sheet->saveTo(open.stage.folder.filePath("nowhere/report.txt")));
    EXPECT_TRUE(open.sheet->complaint().startsWith("The report could not be saved: "));
}

TEST(ReportSheetTests, ClosesByEscapeReturnAndDone) {
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Space}) {
        OpenReport open("fanless-browser.jsonl");
        QWidget* target = &open.sheet->page();
        if (key == Qt::Key_Space) {
            for (Button* const button : open.sheet->findChildren<Button*>())
                if (button->text() == "Done") {
                    target = button;
                }
        }
        QTest::keyClick(target, key);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(open.sheet.isNull()) << key;
    }
}

TEST(ReportSheetTests, EveryParagraphAndRowIsReadAndInPlace) {
    using Case = std::tuple<const char*, const char*, QSize, double>;
    for (const auto& [name, recording, window, scale] :
         {Case{"report-wide", "design-fans.jsonl.gz", {1040, 830}, 1},
          Case{"report-narrow", "design-fanless.jsonl.gz", {820, 560}, 1},
          Case{"report-large", "design-fans.jsonl.gz", {1040, 830}, 1.5}}) {
        OpenReport open(recording, window, scale);
        ReportPage& page = open.sheet->page();
        const ReportModel model = reportModel(open.stage.hub);
        QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(&page);
        std::size_t parts = 2;
        for (const ReportSection& section : model.sections)
            parts += 2 + section.rows.size();
        int read = 0;
        for (int i = 0; i < spoken->childCount(); ++i)
            if (!spoken->child(i)->state().invisible) {
                ++read;
            }
        EXPECT_EQ(read, static_cast<int>(parts)) << name;
        // Nothing stands on anything else, and nothing beyond the page.
        const ReportArrangement arranged = arrangeReport(model, open.stage.theme, page.width(),
                                                         reportTakesOneColumn(open.sheet->card()->width(), scale));
        for (std::size_t i = 0; i < arranged.runs.size(); ++i) {
            const QRectF box(arranged.runs[i].origin, arranged.runs[i].size);
            EXPECT_TRUE(QRectF(0, 0, page.width() + 1, arranged.height).contains(box))
                << arranged.runs[i].text.toStdString();
            for (std::size_t j = 0; j < i; ++j) {
                EXPECT_FALSE(QRectF(arranged.runs[j].origin, arranged.runs[j].size).intersects(box))
                    << arranged.runs[i].text.toStdString();
            }
        }
    }
}

} // namespace
} // namespace vantoro
