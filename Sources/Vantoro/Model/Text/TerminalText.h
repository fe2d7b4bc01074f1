// Somebody else's text on its way to a terminal: process and file names, server's words, whatever was typed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vantoro {

/// A longer name says no more; it is cut in its middle (shortened).
inline constexpr std::size_t longestShownName = 60;

/// Whether a character steers what shows it or hides there: a control character (U+0080 to U+009F among them), one that
/// turns the line around or ends it, one without any shape, a mark for machines.
bool isUnprintable(std::uint32_t letter);

/// Appends the text in at most so many bytes, cut where a character begins. Each unprintable character and each byte
/// that is not UTF-8 becomes a "?".
void appendTerminalText(std::string& text, std::string_view raw, std::size_t mostBytes = std::string::npos);

/// The text with nothing in it that steers a terminal, as above. Done twice it changes nothing more.
std::string terminalText(std::string_view raw);

/// Columns that a terminal needs for it.
std::size_t terminalWidth(std::string_view text);

/// The beginning and the end with "…" between them when the text is wider than this many columns.
std::string shortened(std::string_view text, std::size_t columns);

/// Filled with blanks up to this many columns.
std::string padded(std::string_view text, std::size_t columns);

} // namespace vantoro
