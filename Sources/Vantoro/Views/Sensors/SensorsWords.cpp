// All that the sensors pane shows, as plain text.
#include "Views/Sensors/SensorsModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <QStringList>

namespace vantoro {

namespace {

/// Rows of cells, set in columns.
class Table {
public:
    explicit Table(const QString& title) : title_(title) {}

    void add(const QStringList& cells) { rows_.push_back(cells); }

    QString text() const {
        std::vector<qsizetype> widths;
        for (const QStringList& row : rows_) {
            // A line of a single cell runs across the columns.
            if (row.size() == 1)
                continue;
            widths.resize(std::max(widths.size(), static_cast<std::size_t>(row.size())));
            for (qsizetype i = 0; i < row.size(); ++i)
                widths[static_cast<std::size_t>(i)] = std::max(widths[static_cast<std::size_t>(i)], row[i].size());
        }
        QString text = title_ + u'\n';
        for (const QStringList& row : rows_) {
            QString line;
            for (qsizetype i = 0; i < row.size(); ++i)
                line += QStringLiteral("  ") +
                        row[i].leftJustified(row.size() > 1 ? widths[static_cast<std::size_t>(i)] : 0);
            while (line.endsWith(u' '))
                line.chop(1);
            text += line + u'\n';
        }
        return text;
    }

private:
    QString title_;
    std::vector<QStringList> rows_;
};

void add(Table& table, const SensorRowModel& row) {
    if (!row.isShown)
        return;
    table.add({row.label, row.value, row.range, row.source});
    if (row.isExpanded)
        table.add({QStringLiteral("  ") + row.sensorsTitle + (row.sensors.isEmpty() ? QString() : tr(": ")) +
                   row.sensors.join(u' ')});
}

QString legendText(const QString& title, const LegendModel& legend) {
    Table table(legend.figure.isEmpty() ? title : title + QStringLiteral(" · ") + legend.figure);
    for (const LegendEntry& entry : legend.entries)
        table.add({entry.label, entry.value});
    return table.text();
}

} // namespace

QString SensorsModel::plainText() const {
    QStringList parts;
    QString head = machineName + u'\n' + summary + u'\n' + dataSources + u'\n';
    if (!complaint.isEmpty())
        head += complaint + u'\n';
    parts.append(head);
    if (fans) {
        Table table(vantoro::tr("Fans") + (fansNote.isEmpty() ? QString() : QStringLiteral(" · ") + fansNote));
        for (const FanRowModel& fan : *fans)
            table.add({fan.label, fan.unit.isEmpty() ? fan.speed : fan.speed + u' ' + fan.unit, fan.range,
                       fan.floorText, fan.targetText, fan.ceilingText});
        parts.append(table.text());
    }
    const auto addTable = [&parts](const QString& title, const std::vector<SensorRowModel>& rows,
                                   const std::optional<ThermalPressure>& heat) {
        if (!anyShown(rows) && !heat)
            return;
        Table table(title);
        for (const SensorRowModel& row : rows)
            add(table, row);
        if (heat)
            table.add({vantoro::tr("Thermal pressure"), toQString(DiagnosisEngine::title(*heat))});
        parts.append(table.text());
    };
    addTable(vantoro::tr("Temperatures"), temperatures, pressure);
    addTable(vantoro::tr("Power"), power, {});
    addTable(vantoro::tr("Waiting"), waiting, {});
    parts.append(legendText(vantoro::tr("Processor"), processor));
    parts.append(legendText(vantoro::tr("Memory"), memory));
    return parts.join(u'\n');
}

} // namespace vantoro
