// UTF-8 as other programs send it: checked, and cut where characters begin.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantoro {

struct Character {
    /// Its number; none for a byte that begins no character.
    std::optional<std::uint32_t> letter;
    std::size_t bytes = 1;
};

/// What the text, which is not empty, begins with.
Character firstCharacter(std::string_view text);

/// How many bytes at the start are well-formed characters.
std::size_t validUtf8Length(std::string_view bytes);

/// Whether these bytes could be the beginning of a character whose rest is still to come.
bool isIncompleteCharacter(std::string_view bytes);

/// The first byte at or after this one that begins a character; the text's length when there is none.
std::size_t characterStart(std::string_view text, std::size_t offset);

} // namespace vantoro
