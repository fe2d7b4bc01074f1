// The pane of the processor cores: a tile per core, and how the die's and the graphics processor's sensors spread.
#pragma once

#include "Views/Cores/CoresModel.h"
#include "Views/Shared/View.h"

namespace vantoro {

class CoreGrid;
class Panel;
class ScrollPane;
class TextLabel;
class ThermalRuler;

/// Single sensors are read only while it is on screen.
class CoresView : public View {
    Q_OBJECT
public:
    explicit CoresView(ViewContext& context, QWidget* parent = nullptr);
    ~CoresView() override;

    void refresh() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class ClusterLine;
    struct ClusterWidgets {
        ClusterLine* line = nullptr; // owned by Qt as a child
        CoreGrid* grid = nullptr;    // owned by Qt as a child
    };
    struct SpreadPanel {
        Panel* panel = nullptr;        // owned by Qt as a child
        ThermalRuler* ruler = nullptr; // owned by Qt as a child
        TextLabel* caption = nullptr;  // owned by Qt as a child
    };

    SpreadPanel addSpreadPanel(const QString& title, const QString& icon);
    void showClusters(const CoresModel& model);
    static void showSpread(const SpreadPanel& widgets, const std::optional<Spread>& spread);
    TextLabel* newNote();
    static void showNote(TextLabel& label, const QString& note);
    void placeTiles();

    ScrollPane* scroll_;               // owned by Qt as a child
    Panel* cores_;                     // owned by Qt as a child
    TextLabel* coresNote_ = nullptr;   // owned by Qt as a child
    TextLabel* sensorsNote_ = nullptr; // owned by Qt as a child
    std::vector<ClusterWidgets> clusters_;
    SpreadPanel die_;
    SpreadPanel gpu_;
    CoresModel model_;
};

} // namespace vantoro
