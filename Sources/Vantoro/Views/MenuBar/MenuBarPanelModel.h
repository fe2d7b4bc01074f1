// The panel that opens from the menu bar: the answer in short.
#pragma once

#include "Views/Now/DialsModel.h"
#include "Views/Shared/EyebrowModel.h"
#include "Views/Suspects/SuspectsModel.h"

#include <QRect>

namespace vantoro {

struct MenuBarPanelModel {
    /// A figure with its caption; the unit stands behind it in a smaller size, where it has one.
    struct Figure {
        QString caption;
        QString figure;
        QString unit;

        bool operator==(const Figure&) const = default;
    };

    static constexpr std::size_t mostSuspects = 4;

    EyebrowModel eyebrow;
    QString title;
    /// Left out where it would repeat the title.
    QString cause;
    /// One of the two: the fan that works hardest, or the chip.
    std::optional<FanRotorFigures> rotor;
    std::optional<ThermalDialFigures> dial;
    std::vector<Figure> figures;
    std::vector<SuspectRowModel> suspects;
    /// In place of the suspects while there are none.
    QString noSuspects;
    int cores = 0;
    bool rotorTurns = true;

    bool operator==(const MenuBarPanelModel&) const = default;
};

MenuBarPanelModel menuBarPanelModel(const SensorHub& hub, const Settings& settings);

/// Where a panel of this size stands: below the item, or above it where the bar lies at the bottom; without an item
/// beside the pointer; without either in the middle. Always within the screen's available area, as far as it fits.
QRect placedPanel(const QSize& size, const QRect& item, const std::optional<QPoint>& pointer, const QRect& available);

} // namespace vantoro
