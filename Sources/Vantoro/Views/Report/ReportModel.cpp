#include "Views/Report/ReportModel.h"

#include "Model/Explanation/Explanation.h"
#include "Model/Explanation/Reports.h"
#include "Views/Shared/Words.h"

#include <algorithm>

namespace vantoro {

namespace {

constexpr std::size_t sectionsAtTheLeft = 2;
constexpr std::size_t plainTextWidth = 80;
constexpr int narrowestOfTwoColumns = 880;
constexpr double largestTextOfTwoColumns = 1.25;

ReportSection shown(const Explanation::Section& section) {
    ReportSection result{
        .symbol = toQString(section.symbol), .title = toQString(section.title), .body = toQString(section.body)};
    for (const Explanation::Row& row : section.rows)
        result.rows.push_back({toQString(row.label), toQString(row.detail), toQString(row.value), row.emphasised});
    return result;
}

} // namespace

ReportModel reportModel(const Verdict& verdict, const Explanation& explanation) {
    ReportModel model{.headline = toQString(explanation.headline),
                      .stateLabel = toQString(verdict.stateLabel()),
                      .subhead = toQString(explanation.subhead)};
    if (!verdict.awaitingReading)
        model.level = static_cast<int>(namedLevel(verdict));
    model.heatStop = verdictHeatStop(verdict);
    for (const Explanation::Section& section : explanation.sections)
        model.sections.push_back(shown(section));
    model.leftSections = std::min(model.sections.size(), sectionsAtTheLeft);
    model.plainText = toQString(textReport(verdict, explanation, plainTextWidth, false));
    return model;
}

ReportModel reportModel(const SensorHub& hub) {
    ReportModel model =
        reportModel(hub.verdict(), LocalExplainer::explain(hub.history(), hub.verdict(), hub.snapshot(), hub.format()));
    model.machineName = toQString(hub.machineName());
    model.sensorSummary = toQString(hub.sensorSummary());
    return model;
}

bool reportTakesOneColumn(int sheetWidth, double textScale) {
    return sheetWidth < narrowestOfTwoColumns || textScale >= largestTextOfTwoColumns;
}

QString reportNotSaved(const QString& reason) {
    return tr("The report could not be saved: %1.").arg(reason);
}

} // namespace vantoro
