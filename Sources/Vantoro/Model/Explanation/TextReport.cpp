#include "Model/Explanation/Reports.h"

#include "Model/Text/TerminalText.h"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

namespace vantoro {

namespace {

constexpr std::size_t indentation = 2;

/// Process names are somebody else's text: nothing in one may steer the terminal or break the columns.
std::string fit(std::string_view text) {
    std::string safe = terminalText(text);
    if (safe.size() <= longestShownName)
        return safe;
    std::string result;
    for (std::size_t at = 0; at < safe.size();) {
        const std::size_t end = std::min(safe.find(' ', at), safe.size());
        result += shortened(std::string_view(safe).substr(at, end - at), longestShownName);
        at = std::min(safe.find_first_not_of(' ', end), safe.size());
        result.append(at - end, ' ');
    }
    return result;
}

std::string titled(std::string_view title, bool emphasis) {
    return emphasis ? fmt::format("\x1b[1m{}\x1b[0m", title) : std::string(title);
}

struct Line {
    std::string label;
    std::string value;
    std::string detail;
};

/// A table whose first two columns are as wide as they must be; a label too long for its column gets a line to itself.
std::string table(const std::vector<Line>& lines, std::size_t width) {
    constexpr std::size_t longestLabel = 28;
    constexpr std::size_t gap = 2;
    std::size_t labelWidth = 0;
    std::size_t valueWidth = 0;
    for (const Line& line : lines) {
        if (terminalWidth(line.label) <= longestLabel)
            labelWidth = std::max(labelWidth, terminalWidth(line.label) + gap);
        valueWidth = std::max(valueWidth, line.value.empty() ? 0 : terminalWidth(line.value) + gap);
    }
    std::string text;
    for (const Line& line : lines) {
        const std::string figures = padded(line.value, valueWidth) + line.detail;
        if (figures.find_first_not_of(' ') == std::string::npos) {
            text += wrapped(line.label, width, indentation);
            continue;
        }
        std::string label = shortened(line.label, longestShownName);
        if (terminalWidth(label) > longestLabel) {
            text += wrapped(label, width, indentation);
            label.clear();
        }
        const std::size_t column = indentation + labelWidth;
        std::string block = wrapped(figures, width, column);
        block.replace(0, column, std::string(indentation, ' ') + padded(label, labelWidth));
        text += block;
    }
    return text;
}

} // namespace

std::string wrapped(std::string_view text, std::size_t width, std::size_t indent) {
    const std::size_t room = width > indent ? width - indent : 1;
    std::string result;
    std::string line;
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t wordEnd = std::min(text.find(' ', position), text.size());
        const std::size_t nextWord = std::min(text.find_first_not_of(' ', wordEnd), text.size());
        const std::string_view word = text.substr(position, wordEnd - position);
        if (!line.empty() && terminalWidth(line) + terminalWidth(word) > room) {
            line.erase(line.find_last_not_of(' ') + 1);
            result += std::string(indent, ' ') + line + '\n';
            line.clear();
        }
        // Blanks between words are kept as they are: columns are aligned with them.
        line += text.substr(position, nextWord - position);
        position = nextWord;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    if (!line.empty())
        result += std::string(indent, ' ') + line + '\n';
    return result;
}

std::string textReport(const Verdict& verdict, const Explanation& explanation, std::size_t width, bool emphasis) {
    std::string text = titled(fit(verdict.headline), emphasis) + '\n';
    if (!verdict.detail.empty())
        text += wrapped(fit(verdict.detail), width, 0);

    std::vector<Line> facts;
    for (const Factor& factor : verdict.factors)
        facts.push_back({fit(factor.title), fit(factor.value), fit(factor.detail)});
    if (!facts.empty())
        text += '\n' + table(facts, width);

    if (!verdict.advice.empty())
        text += '\n';
    for (const Advice& advice : verdict.advice) {
        std::string item = wrapped(fit(advice.text), width, 4);
        text += item.replace(0, 4, "  - ");
    }
    text += '\n' + wrapped(fit(explanation.subhead), width, 0);

    for (const Explanation::Section& section : explanation.sections) {
        text += '\n' + titled(fit(section.title), emphasis) + '\n';
        text += wrapped(fit(section.body), width, indentation);
        std::vector<Line> rows;
        for (const Explanation::Row& row : section.rows)
            rows.push_back({fit(row.label), fit(row.value), fit(row.detail)});
        if (!rows.empty())
            text += '\n' + table(rows, width);
    }
    return text;
}

} // namespace vantoro
