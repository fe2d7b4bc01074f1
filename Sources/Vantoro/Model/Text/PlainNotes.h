// Release notes as plain text.
#pragma once

#include <string>
#include <string_view>

namespace vantoro {

/// The text of HTML that comes from elsewhere: no markup, scripts or styles; paragraphs, line breaks and list items on
/// lines of their own, items after "• "; entities as their letters; no control, direction or invisible letters; valid
/// UTF-8. At most 4,000 bytes, cut after a whole letter with "…". Takes time proportional to the input and looks at no
/// more than its first 256 KiB.
std::string plainNotes(std::string_view html);

} // namespace vantoro
