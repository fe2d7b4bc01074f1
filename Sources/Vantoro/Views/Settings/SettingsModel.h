// What the settings window says and offers, and what a choice in it stores.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Model/Live/Settings.h"
#include "Model/Readers/OwnCostMeter.h"
#include "Views/Shared/Words.h"

#include <array>
#include <cstdint>
#include <optional>
#include <QString>
#include <QStringList>
#include <string_view>
#include <vector>

namespace vantoro {

/// A row of the window, ready to paint, and what a choice in it stores.
struct SettingsRowModel {
    enum class Kind : std::uint8_t { text, onOff, segments, popUp, slider };

    Kind kind = Kind::text;
    QString title;
    /// At the right end.
    QString value;
    QString note;
    /// Every note that a slider's row may come to show.
    QStringList notes;
    /// What is offered, in the words of the control: captions for a slider, some of them empty.
    QStringList choices;
    int current = 0;
    /// Under this key each choice stores its value.
    std::string_view key;
    std::vector<SettingsStore::Value> stores;
    /// Where it is not the title.
    QString spokenName;
    bool isShown = true;

    bool operator==(const SettingsRowModel&) const = default;
};

struct SettingsGroupModel {
    QString title;
    std::vector<SettingsRowModel> rows;

    bool operator==(const SettingsGroupModel&) const = default;
};

/// Always the same groups and rows; what they say changes.
std::vector<SettingsGroupModel> settingsModel(const SensorHub& hub, const Settings& settings, const SourceNames& names,
                                              const std::optional<OwnCostMeter::Figure>& ownCost = std::nullopt);

/// Seconds between samples at each stop of the slider.
inline constexpr std::array<double, 7> sampleRates{10, 5, 3, 2, 1, 0.5, 0.25};
inline constexpr int defaultRateIndex = 3;

/// How often, in words, and what people would call it.
QString rateLabel(int rateIndex);
QString rateName(int rateIndex);
/// What it brings, and what it costs where that is stated.
QString rateNote(int rateIndex, bool costsAreStated);

QString motionNote(bool isSmooth, bool costsAreStated);
QString rotorNote(bool spins, bool costsAreStated);
/// "1.3% of a core · 33 MB"
QString ownCostText(const OwnCostMeter::Figure& figure);
QString ownCostNote(const OwnCostMeter::Figure& figure);
QString menuBarLabel(Cooling cooling);
QString menuBarNote(Cooling cooling, bool always);
QString processListNote(bool ownOnly, Cooling cooling, ProcessMonitor::Source source, const SourceNames& names);
/// The live source of the process list.
QString currentlyReading(ProcessMonitor::Source source, const SourceNames& names);
QString dataSources(ProcessMonitor::Source source, const SourceNames& names);
/// Of what the hub shows; what a computer's recording does not tell is not named.
QString dataSources(const SensorHub& hub, const SourceNames& own);
/// "6 performance · 6 efficiency", "8 cores" where all are alike, a dash where nothing is known.
QString coresText(const std::vector<Core>& cores);

} // namespace vantoro
