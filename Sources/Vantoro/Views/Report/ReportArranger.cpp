#include "Views/Report/ReportArranger.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

namespace {

constexpr double topPadding = 8;
constexpr double headlineGap = 6;
constexpr double pipsWidth = 28;
constexpr double pipsHeight = 12;
constexpr double pipsGap = 10;
constexpr double headerGap = 29;
constexpr double columnGap = 48;
constexpr double sectionGap = 25;
constexpr double iconSize = 16;
constexpr double titleInset = 24;
constexpr double titleGap = 7;
constexpr double rowsGap = 8;
constexpr double rowHeight = 32;
constexpr double detailGap = 8;
constexpr double valueGap = 16;
constexpr double barWidth = 3;
constexpr double barInset = 8;
constexpr double bottomPadding = 8;

class Arranger {
public:
    Arranger(const ReportModel& model, const Theme& theme) : model_(model), theme_(theme) {}

    ReportArrangement arrange(int width, bool oneColumn) {
        page_.width = width;
        const double left = reportGutter;
        const double whole = width - left;
        double y = placeHeader(left, whole);
        if (oneColumn) {
            for (const ReportSection& section : model_.sections)
                y = placeSection(section, left, y, whole) + sectionGap;
            page_.height = y - sectionGap + bottomPadding;
            return std::move(page_);
        }
        const double column = (whole - columnGap) / 2;
        double leftEnd = y;
        double rightEnd = y;
        for (std::size_t i = 0; i < model_.sections.size(); ++i) {
            const bool isLeft = i < model_.leftSections;
            double& end = isLeft ? leftEnd : rightEnd;
            end = placeSection(model_.sections[i], isLeft ? left : left + column + columnGap, end, column) + sectionGap;
        }
        page_.height = std::max(leftEnd, rightEnd) - sectionGap + bottomPadding;
        page_.lines.emplace_back(std::floor(left + column + columnGap / 2), y + 3, 1, page_.height - y - 3);
        return std::move(page_);
    }

private:
    struct Look {
        TextStyle style;
        Tone tone = Tone::textPrimary;
        bool isHeat = false;
        /// Stands in one line, however little room there is.
        bool isOneLine = false;
    };

    double scale() const { return theme_.textScale(); }

    double naturalWidth(const TextStyle& style, const QString& text) const {
        return QFontMetricsF(fontOf(style, theme_)).horizontalAdvance(text);
    }

    /// Sets a text of this width at most; gives the height it takes.
    double place(const QString& text, const QString& joint, const Look& look, const QPointF& origin, double width) {
        if (text.isEmpty())
            return 0;
        TextRun run{.text = text, .joint = joint, .tone = look.tone, .isHeat = look.isHeat, .origin = origin};
        QString lines = text;
        lines.replace(u'\n', QChar::LineSeparator);
        run.layout = std::make_unique<QTextLayout>(lines, fontOf(look.style, theme_));
        QTextOption option;
        option.setWrapMode(look.isOneLine ? QTextOption::NoWrap : QTextOption::WrapAtWordBoundaryOrAnywhere);
        run.layout->setTextOption(option);
        const double lineHeight = lineHeightOf(look.style, theme_);
        double y = 0;
        double widest = 0;
        run.layout->beginLayout();
        for (QTextLine line = run.layout->createLine(); line.isValid(); line = run.layout->createLine()) {
            line.setLineWidth(width);
            line.setPosition({0, y + (lineHeight - line.ascent() - line.descent()) / 2});
            widest = std::max(widest, line.naturalTextWidth());
            y += lineHeight;
        }
        run.layout->endLayout();
        run.size = {widest, y};
        page_.runs.push_back(std::move(run));
        return y;
    }

    void speak(double left, double top, double width, double bottom) {
        page_.voices.emplace_back(left, top, width, bottom - top);
    }

    double placeHeader(double left, double width) {
        double y = topPadding;
        const double headline = place(model_.headline, {}, {Type::sheetTitle}, {left, y}, width);
        speak(left, y, width, y + headline);
        y += headline + headlineGap;
        const double line = lineHeightOf(Type::body, theme_);
        page_.pips = {left, y + (line - pipsHeight * scale()) / 2};
        double x = left + pipsWidth * scale() + pipsGap;
        place(model_.stateLabel, "\n", {Type::sectionTitle, Tone::textSecondary, model_.level.has_value()}, {x, y},
              width);
        x += naturalWidth(Type::sectionTitle, model_.stateLabel) + pipsGap;
        const double subhead =
            place(model_.subhead, " ", {Type::body, Tone::textSecondary}, {x, y}, std::max(left + width - x, 80.0));
        speak(left, y, width, y + std::max(line, subhead));
        return y + std::max(line, subhead) + headerGap;
    }

    double placeSection(const ReportSection& section, double left, double y, double width) {
        const double line = lineHeightOf(Type::sectionTitle, theme_);
        const double icon = std::round(iconSize * scale());
        const double inset = titleInset * scale();
        page_.icons.push_back({{left, y + (line - icon) / 2, icon, icon}, section.symbol});
        const double title = place(section.title, "\n\n", {Type::sectionTitle}, {left + inset, y}, width - inset);
        speak(left, y, width, y + title);
        y += title + titleGap;
        const double body = place(section.body, "\n", {Type::report}, {left, y}, width);
        speak(left, y, width, y + body);
        y += body;
        if (!section.rows.empty())
            y += rowsGap;
        for (const ReportRow& row : section.rows) {
            page_.lines.emplace_back(left, y, width, 1);
            const double bottom = placeRow(row, left, y, width);
            speak(left, y, width, bottom);
            y = bottom;
        }
        return y;
    }

    double placeRow(const ReportRow& row, double left, double y, double width) {
        const TextStyle style = row.isEmphasised ? Type::sectionTitle : Type::body;
        const double line = lineHeightOf(style, theme_);
        const double padding = (std::round(rowHeight * scale()) - line) / 2;
        const double valueWidth = row.value.isEmpty() ? 0 : naturalWidth(Type::sectionTitle, row.value);
        const double room = row.value.isEmpty() ? width : width - valueWidth - valueGap;
        const double labelWidth = naturalWidth(style, row.label);
        const double detailWidth = naturalWidth(Type::caption, row.detail);
        const bool isBeside = labelWidth + detailGap + detailWidth <= room;

        const double top = y + padding;
        double bottom = top + place(row.label, "\n", {style}, {left, top}, room);
        if (isBeside) {
            // On one base line with the label.
            const double lift = (line - lineHeightOf(Type::caption, theme_)) / 2 + 1;
            place(row.detail, "  ", {.style = Type::caption, .tone = Tone::textTertiary, .isOneLine = true},
                  {left + labelWidth + detailGap, top + lift}, detailWidth);
        } else {
            bottom += place(row.detail, "\n", {Type::caption, Tone::textTertiary}, {left, bottom}, room);
        }
        place(row.value, "  ", {.style = Type::sectionTitle, .isOneLine = true}, {left + width - valueWidth, top},
              valueWidth);
        bottom += padding;
        if (row.isEmphasised)
            page_.bars.emplace_back(left - reportGutter, y + barInset, barWidth, bottom - y - 2 * barInset);
        return bottom;
    }

    const ReportModel& model_;
    const Theme& theme_;
    ReportArrangement page_;
};

void mirror(ReportArrangement& page, const Theme& theme) {
    const auto turned = [&page](const QRectF& place) {
        return place.translated(page.width - place.left() - place.right(), 0);
    };
    for (TextRun& run : page.runs) {
        for (int i = 0; i < run.layout->lineCount(); ++i) {
            QTextLine line = run.layout->lineAt(i);
            line.setPosition(line.position() + QPointF(run.size.width() - line.naturalTextRect().right(), 0));
        }
        run.origin = turned(QRectF(run.origin, run.size)).topLeft();
    }
    for (ReportArrangement::Icon& icon : page.icons)
        icon.place = turned(icon.place);
    for (std::vector<QRectF>* const places : {&page.lines, &page.bars, &page.voices})
        for (QRectF& place : *places)
            place = turned(place);
    page.pips.setX(page.width - page.pips.x() - pipsWidth * theme.textScale());
}

QString joined(const QString& first, const QString& second) {
    return first.isEmpty() || second.isEmpty() ? first + second : first + ", " + second;
}

} // namespace

ReportArrangement arrangeReport(const ReportModel& model, const Theme& theme, int width, bool oneColumn,
                                Qt::LayoutDirection direction) {
    ReportArrangement page = Arranger(model, theme).arrange(width, oneColumn);
    if (direction == Qt::RightToLeft)
        mirror(page, theme);
    return page;
}

std::vector<Description> spokenParts(const ReportModel& model) {
    std::vector<Description> parts;
    parts.push_back({.role = QAccessible::Heading, .name = model.headline});
    parts.push_back({.role = QAccessible::StaticText, .name = joined(model.stateLabel, model.subhead)});
    for (const ReportSection& section : model.sections) {
        parts.push_back({.role = QAccessible::Heading, .name = section.title});
        parts.push_back({.role = QAccessible::StaticText, .name = section.body});
        for (const ReportRow& row : section.rows)
            parts.push_back(
                {.role = QAccessible::StaticText, .name = joined(row.label, row.detail), .value = row.value});
    }
    return parts;
}

} // namespace vantoro
