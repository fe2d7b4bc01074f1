// Any bytes on their way to a terminal: what comes out is text, steers nothing, and fits where it should.

#include "Model/Explanation/Reports.h"
#include "Model/Text/TerminalText.h"
#include "Model/Text/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

using namespace vantoro;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string raw(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t columns = data[0] % 70;
    const std::string safe = terminalText(raw);
    require(validUtf8Length(safe) == safe.size() && terminalText(safe) == safe);
    std::string cut;
    appendTerminalText(cut, raw, columns);
    require(cut.size() <= columns && safe.starts_with(cut));
    require(terminalWidth(shortened(safe, columns)) <= std::max<std::size_t>(columns, 1));
    require(terminalWidth(padded(shortened(safe, columns), columns)) >= columns);

    const Verdict verdict{.headline = raw, .detail = raw, .factors = {{"", raw, raw, raw}}, .advice = {{raw, {}}}};
    const Explanation explanation{.subhead = raw, .sections = {{"", raw, raw, {{raw, raw, raw, false}}}}};
    std::string report = textReport(verdict, explanation, 80, false);
    std::erase(report, '\n');
    require(terminalText(report) == report);
    const std::string json = jsonReport({}, verdict, {}, explanation, {});
    require(terminalText(json) == json && nlohmann::json::accept(json));
    return 0;
}
