// What the settings window says and offers, and what a choice in it stores.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Model/Live/Settings.h"
#include "Model/Readers/OwnCostMeter.h"
#include "Views/Shared/SourceNames.h"

#include <array>
#include <QString>
#include <QStringList>

namespace vantoro {

/// Everything the window shows, ready to paint.
struct SettingsModel {
    int rateIndex = 0;
    QString rateLabel;
    QString rateName;
    QString rateNote;
    bool isSmooth = true;
    QString motionNote;
    bool spinsRotors = true;
    QString rotorNote;
    /// What the program itself takes; empty where that is not known.
    QString ownCost;
    QString ownCostNote;
    bool showsFigureAlways = false;
    QString menuBarLabel;
    QString menuBarNote;
    int historyIndex = 0;
    int appearanceIndex = 0;
    int unitIndex = 0;
    int processListIndex = 0;
    QString processListNote;
    QString currentlyReading;
    QString machine;
    QString cores;
    QString sensorsFound;
    QString dataSources;

    bool operator==(const SettingsModel&) const = default;
};

SettingsModel settingsModel(SensorHub& hub, const Settings& settings, const SourceNames& names,
                            const std::optional<OwnCostMeter::Figure>& ownCost = std::nullopt);

/// Seconds between samples at each stop of the slider.
inline constexpr std::array<double, 7> sampleRates{10, 5, 3, 2, 1, 0.5, 0.25};
inline constexpr int defaultRateIndex = 3;

/// The stop that is exactly this interval; the default's for any other.
int rateIndexOf(double sampleInterval);
/// How often, in words, and what people would call it.
QString rateLabel(int rateIndex);
QString rateName(int rateIndex);
/// What it brings, and what it costs where that is stated.
QString rateNote(int rateIndex, bool costsAreStated);

/// What the choices of a pop-up or a row of segments store, in their order, and the texts that offer them.
inline constexpr std::array<double, 3> historyChoicesMinutes{15, 30, 60};
inline constexpr std::array<const char*, 3> appearanceChoices{"system", "light", "dark"};
inline constexpr std::array<const char*, 2> unitChoices{"C", "F"};
inline constexpr std::array<const char*, 2> processListChoices{"auto", "unprivileged"};
QStringList historyChoiceTexts();
QStringList appearanceChoiceTexts();
QStringList unitChoiceTexts();
QStringList processListChoiceTexts();
QStringList motionChoiceTexts();

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
/// "6 performance · 6 efficiency", or how many where all are alike.
QString coresText(const std::vector<Core>& cores);

} // namespace vantoro
