// The verdict and the explanation as plain text for a terminal.
#pragma once

#include "Model/Records/Explanation.h"
#include "Model/Records/Verdict.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace vantoro {

/// Lines of at most `width` columns, broken between words; a longer word stands alone. Every line, the first one
/// included, is preceded by `indent` blanks and ends with a newline.
std::string wrapped(std::string_view text, std::size_t width, std::size_t indent);

/// The headline, the detail, the facts and the advice, then the explanation's sections. `emphasis` marks titles for a
/// terminal that shows them; without it nothing in the text steers a terminal. A word of more than longestShownName
/// columns is cut in its middle.
std::string textReport(const Verdict& verdict, const Explanation& explanation, std::size_t width, bool emphasis);

} // namespace vantoro
