// The first pane: the answer, who is to blame, what helps, and the facts behind it.
#pragma once

#include "Design/ScrollPane.h"
#include "Views/Now/AdvicePanel.h"
#include "Views/Now/FactsPanel.h"
#include "Views/Now/Hero.h"
#include "Views/Shared/View.h"
#include "Views/Suspects/SuspectsPanel.h"

namespace vantoro {

/// What the pane scrolls: the hero, two panels side by side, and the facts below. Places its parts itself: the two
/// panels share their height, and their widths keep a ratio.
class NowContent : public QWidget {
    Q_OBJECT
public:
    explicit NowContent(Look& look, QWidget* parent = nullptr);

    Hero* hero() const { return hero_; }
    SuspectsPanel* suspects() const { return suspects_; }
    AdvicePanel* advice() const { return advice_; }
    FactsPanel* facts() const { return facts_; }
    void setNarrow(bool narrow);
    /// Lets the keyboard go through it as it is read, wherever parts have made new widgets.
    void orderStops();

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override { return {992, heightForWidth(992)}; }
    QSize minimumSizeHint() const override { return {400, 200}; }

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Frame {
        QRect hero;
        QRect suspects;
        QRect advice;
        QRect facts;
    };
    Frame frame(int width) const;
    void place();
    void placeAnew();

    Hero* hero_; // owned by Qt as children
    SuspectsPanel* suspects_;
    AdvicePanel* advice_;
    FactsPanel* facts_;
    qsizetype ordered_ = 0;
};

class NowView : public View {
    Q_OBJECT
public:
    /// Below this width bars and rotors are smaller and three facts stand in a row.
    static constexpr int narrowBelow = 940;

    explicit NowView(ViewContext& context, QWidget* parent = nullptr);

    void refresh() override;

signals:
    void explainRequested();
    /// To see every fan, where not all have room.
    void sensorsRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showHero();
    void showSuspects();
    void showAdvice();
    void showFacts();

    ScrollPane* pane_; // owned by Qt as children
    NowContent* content_;
    UnfoldedRow unfolded_;
};

} // namespace vantoro
