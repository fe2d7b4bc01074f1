// The long explanation as the report sheet shows it, ready to paint.
#pragma once

#include "Model/Explanation/Explanation.h"
#include "Model/Live/SensorHub.h"

#include <optional>
#include <QString>
#include <vector>

namespace vantoro {

struct ReportRow {
    QString label;
    /// Smaller, beside the label or below it.
    QString detail;
    QString value;
    bool isEmphasised = false;

    bool operator==(const ReportRow&) const = default;
};

struct ReportSection {
    /// The icon before the title.
    QString symbol;
    QString title;
    QString body;
    std::vector<ReportRow> rows;

    bool operator==(const ReportSection&) const = default;
};

struct ReportModel {
    QString headline;
    /// The stress level in a word, and by number for the pips; none while a reading is awaited.
    QString stateLabel;
    std::optional<int> level;
    int heatStop = 0;
    /// What the report is based on.
    QString subhead;
    std::vector<ReportSection> sections;
    /// How many of them stand in the left of two columns.
    std::size_t leftSections = 0;
    QString machineName;
    QString sensorSummary;
    /// All of it as lines of plain text.
    QString plainText;

    bool operator==(const ReportModel&) const = default;
};

ReportModel reportModel(const Verdict& verdict, const Explanation& explanation);
/// Explains the present verdict of the hub: made when someone asks, and nothing of it is kept.
ReportModel reportModel(const SensorHub& hub);

/// Whether the sections stand under each other rather than in two columns.
bool reportTakesOneColumn(int sheetWidth, double textScale);

/// Why a report could not be written to a file, in a sentence.
QString reportNotSaved(const QString& reason);

} // namespace vantoro
