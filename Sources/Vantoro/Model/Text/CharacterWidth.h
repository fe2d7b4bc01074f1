// How wide a terminal shows a character.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantoro {

/// In columns: 0 for marks that join the character before them, 2 for the wide characters of East Asia and emoji,
/// else 1.
std::size_t characterWidth(std::uint32_t letter);

} // namespace vantoro
