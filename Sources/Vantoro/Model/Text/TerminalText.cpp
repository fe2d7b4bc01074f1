#include "Model/Text/TerminalText.h"

#include "Model/Text/CharacterWidth.h"
#include "Model/Text/Utf8.h"

#include <algorithm>
#include <array>

namespace vantoro {

namespace {

std::size_t widthOf(const Character& character) {
    return character.letter ? characterWidth(*character.letter) : 1;
}

bool isPrintableAscii(char c) {
    return c >= 0x20 && c < 0x7F;
}

} // namespace

bool isUnprintable(std::uint32_t letter) {
    struct Range {
        std::uint32_t first;
        std::uint32_t last;
    };
    // The joiners U+200C and U+200D are part of what many languages write, and the variation selectors too.
    constexpr std::array<Range, 13> ranges{{{0x00, 0x1F},
                                            {0x7F, 0x9F},
                                            {0xAD, 0xAD},
                                            {0x61C, 0x61C},
                                            {0x180E, 0x180E},
                                            {0x200B, 0x200B},
                                            {0x200E, 0x200F},
                                            {0x2028, 0x202E},
                                            {0x2060, 0x206F},
                                            {0xFEFF, 0xFEFF},
                                            {0xFFF0, 0xFFFB},
                                            {0xE0000, 0xE00FF},
                                            {0xE01F0, 0xE0FFF}}};
    return (letter & 0xFFFEU) == 0xFFFE || std::ranges::any_of(ranges, [letter](const Range& range) {
               return letter >= range.first && letter <= range.last;
           });
}

void appendTerminalText(std::string& text, std::string_view raw, std::size_t mostBytes) {
    for (std::size_t left = mostBytes; !raw.empty();) {
        const Character character = firstCharacter(raw);
        const bool isShown = character.letter && !isUnprintable(*character.letter);
        const std::size_t bytes = isShown ? character.bytes : 1;
        if (bytes > left)
            return;
        text.append(isShown ? raw.substr(0, bytes) : "?");
        left -= bytes;
        raw.remove_prefix(character.bytes);
    }
}

std::string terminalText(std::string_view raw) {
    if (std::ranges::all_of(raw, isPrintableAscii))
        return std::string(raw);
    std::string text;
    text.reserve(raw.size());
    appendTerminalText(text, raw);
    return text;
}

std::size_t terminalWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        width += widthOf(character);
        text.remove_prefix(character.bytes);
    }
    return width;
}

std::string shortened(std::string_view text, std::size_t columns) {
    // Marks that take no column must not make it long either.
    const std::size_t mostBytes = columns * 8;
    std::size_t width = terminalWidth(text);
    if (width <= columns && text.size() <= mostBytes)
        return std::string(text);
    const std::size_t room = columns > 0 ? columns - 1 : 0;
    const std::size_t tailColumns = room / 2;
    std::size_t headEnd = 0;
    std::size_t headWidth = 0;
    std::size_t at = 0;
    bool isHead = true;
    for (; at < text.size(); at += firstCharacter(text.substr(at)).bytes) {
        const Character character = firstCharacter(text.substr(at));
        const std::size_t characterColumns = widthOf(character);
        isHead = isHead && headWidth + characterColumns <= room - tailColumns && at + character.bytes <= mostBytes / 2;
        if (isHead) {
            headWidth += characterColumns;
            headEnd = at + character.bytes;
        } else if (characterColumns > 0 && width <= tailColumns && text.size() - at <= mostBytes / 2) {
            break;
        }
        width -= characterColumns;
    }
    return std::string(text.substr(0, headEnd)) + "…" + std::string(text.substr(std::min(at, text.size())));
}

std::string padded(std::string_view text, std::size_t columns) {
    const std::size_t width = terminalWidth(text);
    return std::string(text) + std::string(columns > width ? columns - width : 0, ' ');
}

} // namespace vantoro
