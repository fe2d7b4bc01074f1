// UTF-8 as other programs send it: checked, and counted in characters.
#pragma once

#include <cstddef>
#include <string_view>

namespace vantoro {

/// How many bytes at the start are well-formed characters.
std::size_t validUtf8Length(std::string_view bytes);

/// Whether these bytes could be the beginning of a character whose rest is still to come.
bool isIncompleteCharacter(std::string_view bytes);

/// The byte at which the character with this index begins; the text's length when there are not so many.
std::size_t byteOffset(std::string_view text, std::size_t character);

} // namespace vantoro
