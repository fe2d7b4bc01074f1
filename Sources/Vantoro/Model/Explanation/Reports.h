// What the model concludes as text: for a terminal, and as JSON for other programs to read.
#pragma once

#include "Model/Explanation/Explanation.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// One JSON object on one line, without a newline: the vitals of the newest snapshot (of a zero one in an empty
/// history) and everything given. Real numbers have full precision, times are seconds since 1970-01-01 UTC, absent
/// optionals are null; numbers that are not finite are written as 0, bytes that are not UTF-8 as U+FFFD.
std::string jsonReport(const History& history, const Verdict& verdict, const std::vector<ProcessGroup>& suspects,
                       const Explanation& explanation, const ChartSeries& series);

/// Lines of at most `width` columns, broken between words; a longer word stands alone. Every line, the first one
/// included, is preceded by `indent` blanks and ends with a newline.
std::string wrapped(std::string_view text, std::size_t width, std::size_t indent);

/// The verdict and the explanation as plain text: the headline, the detail, the facts and the advice, then the
/// explanation's sections. `emphasis` marks titles for a terminal that shows them; without it nothing in the text
/// steers a terminal. A word of more than longestShownName columns is cut in its middle.
std::string textReport(const Verdict& verdict, const Explanation& explanation, std::size_t width, bool emphasis);

} // namespace vantoro
