// The sheet that explains a verdict in full: made when it is asked for, and gone when it is closed.
#pragma once

#include "Design/Controls/Button.h"
#include "Design/Controls/Sheet.h"
#include "Views/Report/ReportModel.h"

namespace vantoro {

class ReportPage;
class ScrollPane;
class TextLabel;

class ReportSheet : public Sheet {
    Q_OBJECT
public:
    /// Over this window. What it says is what the hub knows now: later samples change nothing in it.
    ReportSheet(Look& look, QWidget& window, const SensorHub& hub);

    void openReport();
    /// Writes the plain text; a failure is said in the footer.
    bool saveTo(const QString& fileName);
    /// Puts the plain text of the whole report on the clipboard.
    void copy();

    ReportPage& page() const { return *page_; }
    /// What was said in the footer last; empty while nothing went wrong.
    QString complaint() const;

protected:
    QSize cardSize(const QSize& window) const override;
    void accept() override { close(); }
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    class Footer;
    void askWhereToSave();
    void placeFooter();

    ReportModel model_;
    // All owned by Qt as children.
    ScrollPane* pane_;
    ReportPage* page_;
    Footer* footer_;
    TextLabel* machine_;
    TextLabel* sensors_;
    Button* save_;
    Button* copy_;
    Button* done_;
    BriefText copied_;
};

} // namespace vantoro
