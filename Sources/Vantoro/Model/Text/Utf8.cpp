#include "Model/Text/Utf8.h"

#include <algorithm>

namespace vantoro {

namespace {

unsigned byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

bool isContinuation(unsigned byte) {
    return (byte & 0xC0) == 0x80;
}

/// Length of the character that this byte begins; 0 when no character begins so.
std::size_t lengthFromLead(unsigned lead) {
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

/// Whether the second byte is one that may follow this first one: no overlong form, no surrogate, none past U+10FFFF.
bool isSecondByte(unsigned lead, unsigned second) {
    if (!isContinuation(second))
        return false;
    switch (lead) {
    case 0xE0:
        return second >= 0xA0;
    case 0xED:
        return second <= 0x9F;
    case 0xF0:
        return second >= 0x90;
    case 0xF4:
        return second <= 0x8F;
    default:
        return true;
    }
}

/// How many of the bytes at the start belong to one character, as far as they go; 0 when they begin none.
std::size_t wellFormedPrefix(std::string_view bytes) {
    const std::size_t length = lengthFromLead(byteAt(bytes, 0));
    const std::size_t available = std::min(length, bytes.size());
    for (std::size_t i = 1; i < available; ++i)
        if (i == 1 ? !isSecondByte(byteAt(bytes, 0), byteAt(bytes, 1)) : !isContinuation(byteAt(bytes, i)))
            return 0;
    return available;
}

} // namespace

Character firstCharacter(std::string_view text) {
    const unsigned lead = byteAt(text, 0);
    if (lead < 0x80)
        return {.letter = lead};
    const std::size_t length = wellFormedPrefix(text);
    if (length == 0 || length < lengthFromLead(lead))
        return {};
    std::uint32_t letter = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
        letter = (letter << 6U) | (byteAt(text, i) & 0x3FU);
    return {.letter = letter, .bytes = length};
}

std::size_t validUtf8Length(std::string_view bytes) {
    std::size_t position = 0;
    while (position < bytes.size()) {
        if (byteAt(bytes, position) < 0x80) {
            ++position;
            continue;
        }
        const std::string_view rest = bytes.substr(position);
        const std::size_t length = wellFormedPrefix(rest);
        if (length == 0 || length < lengthFromLead(byteAt(rest, 0)))
            break;
        position += length;
    }
    return position;
}

bool isIncompleteCharacter(std::string_view bytes) {
    return !bytes.empty() && wellFormedPrefix(bytes) == bytes.size() && bytes.size() < lengthFromLead(byteAt(bytes, 0));
}

std::size_t characterStart(std::string_view text, std::size_t offset) {
    while (offset < text.size() && isContinuation(byteAt(text, offset)))
        ++offset;
    return std::min(offset, text.size());
}

} // namespace vantoro
