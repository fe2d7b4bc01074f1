#include "Model/Text/TerminalText.h"

#include "Model/Explanation/Reports.h"
#include "Model/Text/Utf8.h"
#include "Support/Testing.h"

#include <nlohmann/json.hpp>

namespace vantoro {
namespace {

TEST(TerminalText, LetsNothingThroughThatSteersATerminal) {
    using Case = std::tuple<std::string, std::string>;
    for (const auto& [raw, safe] :
         std::vector<Case>{{"plain ~ text", "plain ~ text"},
                           {"\x1b]0;title\x07\r\n\t\x7f", "?]0;title?????"},
                           {"\u0080\u009b31m\u009f\u00a0é", "??31m?\u00a0é"},
                           {"\u202Egpj.exe\u202C \u2066x\u2069 \u200E\u061C", "?gpj.exe? ?x? ??"},
                           {"\u2028\u2029\u200B\uFEFF\u00AD\U000E0041", "??????"},
                           {"\xFF\xC0\xAF\xED\xA0\x80 \xE2\x82", "?????? ??"},
                           {"日本 e\u0301 👩\u200D💻 می\u200Cخواهم", "日本 e\u0301 👩\u200D💻 می\u200Cخواهم"}}) {
        EXPECT_EQ(terminalText(raw), safe);
        EXPECT_EQ(terminalText(safe), safe);
        for (std::size_t most = 0; most <= safe.size() + 1; ++most) {
            std::string cut;
            appendTerminalText(cut, raw, most);
            EXPECT_LE(cut.size(), most);
            EXPECT_TRUE(safe.starts_with(cut) && validUtf8Length(cut) == cut.size()) << cut;
        }
    }
}

TEST(TerminalText, CountsColumnsAndCutsLongNamesInTheMiddle) {
    using Case = std::tuple<std::string, std::size_t, std::string>;
    for (const auto& [text, width, inSeven] : std::vector<Case>{{"", 0, ""},
                                                                {"seven..", 7, "seven.."},
                                                                {"abcdefgh", 8, "abc…fgh"},
                                                                {"日本語", 6, "日本語"},
                                                                {"日本語日本語", 12, "日…語"},
                                                                {"e\u0301e\u0301e\u0301", 3, "e\u0301e\u0301e\u0301"},
                                                                {"abcdefgde\u0301f", 10, "abc…de\u0301f"},
                                                                {"🙂🙂🙂🙂", 8, "🙂…🙂"},
                                                                {"한국어 text", 11, "한…ext"}}) {
        EXPECT_EQ(terminalWidth(text), width) << text;
        EXPECT_EQ(shortened(text, 7), inSeven);
        EXPECT_EQ(terminalWidth(padded(shortened(text, 7), 9)), 9U) << text;
    }
    std::string marks = "a";
    for (int i = 0; i < 5000; ++i)
        marks += "\u0301";
    EXPECT_LT(shortened(marks, 7).size(), 70U) << "what takes no column does not make it long either";
    EXPECT_EQ(shortened("abc", 0), "…");
    EXPECT_EQ(shortened("abc", 1), "…");
}

TEST(TerminalText, TheReportKeepsItsColumnsWithNamesOfAnyKind) {
    const std::string endless(250, 'x');
    const Verdict verdict{.headline = "Because of " + endless,
                          .factors = {{"cpu", "CPU\u202E", "5\u009B%", "\x1b[2J"}}};
    const Explanation explanation{.sections = {{"s",
                                                "Busy\x9B",
                                                "",
                                                {{"plain", "10%", "detail", false},
                                                 {"日本語", "20%", "detail", false},
                                                 {"cafe\u0301", "30%", "detail", false},
                                                 {endless, "40%", "detail", false}}}}};
    const std::string report = textReport(verdict, explanation, 80, false);
    EXPECT_EQ(report.find_first_of("\x1b\x9B"), std::string::npos) << report;
    EXPECT_EQ(report.find("\u202E"), std::string::npos);
    for (const std::string line :
         {"  plain   10%  detail\n", "  日本語  20%  detail\n", "  cafe\u0301    30%  detail\n"})
        EXPECT_NE(report.find(line), std::string::npos) << line << report;
    for (std::size_t at = 0; at < report.size(); at = report.find('\n', at) + 1)
        EXPECT_LE(terminalWidth(std::string_view(report).substr(at, report.find('\n', at) - at)), 80U) << report;
}

TEST(TerminalText, JsonIsEscapedAndSaysTheSame) {
    const Verdict verdict{.headline = "\u009b31m\u202Egpj\u202C \xFF \x7f \U000E0041 日本\u200D\n"};
    const std::string report = jsonReport({}, verdict, {}, {}, {});
    EXPECT_NE(report.find(R"("\u009b31m\u202egpj\u202c )"
                          "\uFFFD"
                          R"( \u007f \udb40\udc41 )"
                          "日本\u200D"
                          R"(\n")"),
              std::string::npos)
        << report;
    EXPECT_EQ(nlohmann::json::parse(report)["verdict"]["headline"],
              "\u009b31m\u202Egpj\u202C \uFFFD \x7f \U000E0041 日本\u200D\n");
    EXPECT_EQ(terminalText(report), report);
}

} // namespace
} // namespace vantoro
