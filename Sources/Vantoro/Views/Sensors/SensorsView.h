// The pane of everything that is measured: fans, temperatures, power, processor and memory.
#pragma once

#include "Design/Controls/Button.h"
#include "Views/Sensors/SensorsModel.h"
#include "Views/Shared/View.h"

#include <vector>

class QHBoxLayout;
class QBoxLayout;
class QVBoxLayout;

namespace vantoro {

class FourStepMeter;
class Panel;
class ScrollPane;
class SensorRow;
class StackedBar;
class TextLabel;

class SensorsView : public View {
    Q_OBJECT
public:
    explicit SensorsView(ViewContext& context, QWidget* parent = nullptr);
    ~SensorsView() override;

    void refresh() override;
    /// All that is shown, as text, on the clipboard.
    void copyAll();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class MachineLine;
    class FanRow;
    class PressureRow;

    Panel* addPanel(QVBoxLayout* column, const QString& title, const QString& icon);
    void build();
    void buildTemperatures(QVBoxLayout* column);
    Panel* addRows(QVBoxLayout* column, const QString& title, const QString& icon, std::size_t count,
                   std::vector<SensorRow*>& rows);
    void showFans(const SensorsModel& model);
    void balanceColumns(const SensorsModel& model);
    static void showRows(Panel& panel, const std::vector<SensorRow*>& rows, const std::vector<SensorRowModel>& models,
                         bool hasMore);
    void unfold(std::size_t row, bool unfolded);
    bool isAnyUnfolded() const;
    void readSensorsIfSeen(bool isSeen);

    UnfoldedRows unfolded_{};
    SensorsModel model_;
    // All owned by Qt as children.
    ScrollPane* scroll_;
    MachineLine* machine_ = nullptr;
    TextLabel* complaint_ = nullptr;
    QHBoxLayout* complaintRow_;
    QBoxLayout* columns_ = nullptr;
    QVBoxLayout* left_ = nullptr;
    QVBoxLayout* right_ = nullptr;
    Panel* fans_ = nullptr;
    std::vector<FanRow*> fanRows_;
    Panel* temperatures_ = nullptr;
    std::vector<SensorRow*> temperatureRows_;
    PressureRow* pressure_ = nullptr;
    Panel* power_ = nullptr;
    std::vector<SensorRow*> powerRows_;
    Panel* waiting_ = nullptr;
    std::vector<SensorRow*> waitingRows_;
    Panel* processorPanel_ = nullptr;
    StackedBar* processor_ = nullptr;
    Panel* memoryPanel_ = nullptr;
    StackedBar* memory_ = nullptr;
    Button* copy_ = nullptr;
    std::optional<BriefText> copied_;
};

} // namespace vantoro
