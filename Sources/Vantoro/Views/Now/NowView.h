// The first pane: the answer, who is to blame, what helps, and the facts behind it.
#pragma once

#include "Design/ScrollPane.h"
#include "Views/Shared/View.h"

namespace vantoro {

class NowContent;

class NowView : public View {
    Q_OBJECT
public:
    /// Below this width bars and rotors are smaller and three facts stand in a row.
    static constexpr int narrowBelow = 940;

    explicit NowView(ViewContext& context, QWidget* parent = nullptr);

    void refresh() override;

signals:
    void explainRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showHero();
    void showSuspects();
    void showAdvice();
    void showFacts();

    ScrollPane* pane_; // owned by Qt as children
    NowContent* content_;
};

} // namespace vantoro
