#include "Model/Text/Release.h"
#include "Model/Text/Utf8.h"
#include "Support/Testing.h"

namespace vantoro {
namespace {

TEST(PlainNotes, TextWithoutMarkup) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"plain", "plain"},
        {"<h2>New</h2>\n <ul><li>One</li>\n<li>Two &amp; <b>three</b></li></ul><p>End<br>line</p>",
         "New\n\n• One\n• Two & three\n\nEnd\nline"},
        {"a  \t\n b<i> c</i>", "a b c"},
        {"1 < 2 & 3 &lt; 4 &bogus; &#x2014; &#8217; &", "1 < 2 & 3 < 4 &bogus; — ’ &"},
        {"<script>alert('x')</script>safe<style>p{}</style><SCRIPT SRC=x>more</SCRIPT >!", "safe!"},
        {"<img alt='>' onerror=\"a > b\">shown<!-- hidden <b> -->.", "shown."},
        {"never closed <a href=\"x", "never closed"},
        {"<script>never closed", ""},
        {"<!-- never closed", ""},
        {"&#0;&#27;[31mred&#x202E;\u200Bdone\u202E&#xD800;&#x110000;", "[31mreddone\uFFFD\uFFFD"},
        {std::string("\xC3\x28\xFFok\xE2\x82", 7), "(ok"},
        {"", ""}};
    for (const auto& [html, text] : cases)
        EXPECT_EQ(plainNotes(html), text) << html;
}

TEST(PlainNotes, HostileNotesAreBounded) {
    const auto repeated = [](const std::string& piece) {
        std::string text;
        while (text.size() < 3'000'000)
            text += piece;
        return text;
    };
    for (const std::string piece : {"<script>", "<li>", "&#x1F600;", "é", "</", "<b", "&", "<!--", "\n", "<p>x</p>"}) {
        const std::string text = plainNotes(repeated(piece));
        EXPECT_LE(text.size(), 4000U) << piece;
        EXPECT_EQ(validUtf8Length(text), text.size()) << piece;
    }
    EXPECT_TRUE(plainNotes(repeated("é")).ends_with("é…"));
}

TEST(VersionOrder, NewerAndOlder) {
    // Each is older than the next.
    std::vector<std::string> ascending{""};
    std::istringstream rest("0.9 1.0a2 1.0b1 1.0b2 1.0-rc.1 1.0 1.0.1 1.0.9 1.0.10 1.2 1.10 2 2.0.0.1 120 "
                            "99999999999999999999998 99999999999999999999999");
    for (std::string version; rest >> version;)
        ascending.push_back(version);
    for (std::size_t i = 0; i < ascending.size(); ++i)
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            const int order = compareVersions(ascending[i], ascending[j]);
            EXPECT_EQ(order < 0 ? -1 : order > 0, i < j ? -1 : i > j) << ascending[i] << " " << ascending[j];
        }
    EXPECT_EQ(compareVersions("1.02", "1-2"), 0);
}

} // namespace
} // namespace vantoro
