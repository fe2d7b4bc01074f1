#include "Model/CommandLine/CommandLine.h"
#include "Model/CommandLine/CommandLineTable.h"
#include "Model/Explanation/Reports.h"
#include "Model/Records/SystemWords.h"
#include "Model/Text/TerminalText.h"
#include "Support/Testing.h"

namespace vantoro {
namespace {

using Arguments = std::vector<std::string_view>;

TEST(CommandLine, WhatIsAskedFor) {
    using Action = CommandLine::Action;
    const std::vector<std::pair<Arguments, CommandLine>> cases{
        {{}, {}},
        {{"--explain"}, {.action = Action::explain}},
        {{"--explain", "--seconds", "0.5", "--json"}, {.action = Action::explain, .seconds = 0.5, .json = true}},
        {{"--replay=a=b.jsonl", "--explain"}, {.action = Action::explain, .replayFile = "a=b.jsonl"}},
        {{"--record", "./--odd-name", "--seconds=3"},
         {.action = Action::record, .seconds = 3, .recordFile = "./--odd-name"}},
        {{"--replay", "x"}, {.action = Action::window, .replayFile = "x"}},
        {{"--watch"}, {}},
        {{"--check", "--watch"}, {.action = Action::check}},
        {{"--check", "--watch", "--dump"}, {.action = Action::dump, .watch = true}},
        {{"--explain", "--dump"}, {.action = Action::dump}},
        {{"--simulate", "--simulate-fanless"}, {.simulate = true, .simulateFanless = true}},
        {{"--install-update", "--check-for-updates", "--debug-updates"},
         {.installUpdate = true, .checkForUpdates = true, .debugUpdates = true}},
        {{"--explain", "--help", "--nonsense"}, {.action = Action::help}},
    };
    for (const auto& [arguments, expected] : cases) {
        const auto parsed = parseCommandLine(arguments);
        ASSERT_TRUE(std::holds_alternative<CommandLine>(parsed)) << std::get<CommandLineError>(parsed).reason;
        EXPECT_EQ(std::get<CommandLine>(parsed), expected);
    }
}

TEST(CommandLine, NoSwitchOfTheTableIsPassedOver) {
    for (const CommandLineSwitch& option : commandLineSwitches()) {
        Arguments arguments{option.name};
        if (option.value != CommandLineSwitch::Value::none)
            arguments.push_back("1");
        if (option.name != "--watch") { // means nothing by itself
            EXPECT_NE(parseCommandLine(arguments), decltype(parseCommandLine({}))(CommandLine())) << option.name;
        }
    }
}

TEST(CommandLine, EachFaultHasOneLine) {
    std::vector<std::string> lines{"bad\nname\x1b[31m\u009b\u202E\xFF", std::string(5000, 'x'), ""};
    std::istringstream rest("--nonsense|file|--explain --seconds|--explain=yes|--explain --seconds 0|--seconds -1|"
                            "--explain --seconds 1e400|--explain --seconds nan|--explain --seconds 2x|--json|--record|"
                            "--record=|--record --explain|--record=--explain|--explain --replay --json|"
                            "--explain --seconds --json|--record f --explain|--record f --replay g|"
                            "--explain --replay g --seconds 2|--seconds 3|--dump=yes|--explain --simulate --replay g");
    for (std::string line; std::getline(rest, line, '|');)
        lines.push_back(line);
    for (const std::string_view line : lines) {
        Arguments arguments;
        for (std::size_t at = 0, end = 0; end < line.size() || arguments.empty(); at = end + 1) {
            end = std::min(line.find(' ', at), line.size());
            arguments.push_back(line.substr(at, end - at));
        }
        const auto parsed = parseCommandLine(arguments);
        ASSERT_TRUE(std::holds_alternative<CommandLineError>(parsed)) << arguments[0];
        const std::string& reason = std::get<CommandLineError>(parsed).reason;
        EXPECT_LT(reason.size(), 200U);
        EXPECT_EQ(terminalText(reason), reason);
    }
    EXPECT_NE(helpText().find("--replay FILE"), std::string::npos);
}

TEST(TextReport, WrapsBetweenWords) {
    EXPECT_EQ(wrapped("one two  three", 9, 2), "  one two\n  three\n");
    EXPECT_EQ(wrapped("überlanges-wort kurz", 8, 0), "überlanges-wort\nkurz\n");
    EXPECT_EQ(wrapped("é é é", 3, 0), "é é\né\n") << "widths are counted in characters";
    EXPECT_EQ(wrapped("", 10, 2), "");
    EXPECT_EQ(wrapped("   ", 2, 0), "");
}

TEST(TextReport, LetsNoControlCharacterThroughAndMarksTitles) {
    const Verdict verdict{.headline = "because of \x1b]0;evil\x07", .advice = {{"Quit evil\n", 7}}};
    const Explanation explanation{.sections = {{"symbol", "What", "", {{"A sentence of its own", "", "", true}}}}};
    const std::string plain = textReport(verdict, explanation, 80, false);
    EXPECT_EQ(plain.rfind("because of ?]0;evil?\n", 0), 0U);
    EXPECT_NE(plain.find("\n  A sentence of its own\n"), std::string::npos);
    EXPECT_NE(textReport(verdict, explanation, 80, true).find("\x1b[1mWhat\x1b[0m"), std::string::npos);
}

TEST(MachineName, NamesWhatIsKnown) {
    EXPECT_EQ(machineName({}, "Apple M3"), "This Mac");
    EXPECT_EQ(machineName("", "Apple M3"), "This Mac");
    EXPECT_EQ(machineName("Mac14,2", {}), "Mac14,2");
    EXPECT_EQ(machineName("Mac14,2", "Apple M2"), "Apple M2");
    EXPECT_EQ(machineName("MacBookPro18,3", "Apple M1 Pro"), "MacBook · Apple M1 Pro");
    EXPECT_EQ(sensorSummary(Cooling::fans, 1, 40), "1 fan · 40 sensors");
    EXPECT_EQ(sensorSummary(Cooling::fans, 0, 0), "0 fans · 0 sensors");
    EXPECT_EQ(sensorSummary(Cooling::passive, 0, 38), "No fans · 38 sensors");
}

} // namespace
} // namespace vantoro
