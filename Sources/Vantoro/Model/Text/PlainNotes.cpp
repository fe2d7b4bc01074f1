#include "Model/Text/Release.h"

#include "Model/Text/TerminalText.h"
#include "Model/Text/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

namespace vantoro {

namespace {

constexpr std::size_t longestInput = 256 * 1024;
constexpr std::size_t longestText = 4000;
constexpr std::string_view ellipsis = "…";

constexpr std::array<std::pair<std::string_view, std::string_view>, 18> entities{{{"amp", "&"},
                                                                                  {"lt", "<"},
                                                                                  {"gt", ">"},
                                                                                  {"quot", "\""},
                                                                                  {"apos", "'"},
                                                                                  {"nbsp", " "},
                                                                                  {"hellip", "…"},
                                                                                  {"ndash", "–"},
                                                                                  {"mdash", "—"},
                                                                                  {"lsquo", "‘"},
                                                                                  {"rsquo", "’"},
                                                                                  {"ldquo", "“"},
                                                                                  {"rdquo", "”"},
                                                                                  {"bull", "•"},
                                                                                  {"middot", "·"},
                                                                                  {"times", "×"},
                                                                                  {"copy", "©"},
                                                                                  {"deg", "°"}}};

constexpr std::array<std::string_view, 21> blocks{"p",     "div", "br", "ul",      "ol",      "li",         "h1",
                                                  "h2",    "h3",  "h4", "h5",      "h6",      "tr",         "table",
                                                  "title", "hr",  "dl", "section", "article", "blockquote", "pre"};

/// What lies between these and their ends is not for people.
constexpr std::array<std::string_view, 8> unread{"script", "style",    "head",   "template",
                                                 "iframe", "noscript", "object", "svg"};

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string lowered(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return lower;
}

bool startsWithName(std::string_view text, std::string_view name) {
    return text.size() >= name.size() && lowered(text.substr(0, name.size())) == name;
}

std::string encoded(std::uint32_t letter) {
    const auto tail = [letter](unsigned shift) { return static_cast<char>(0x80U | ((letter >> shift) & 0x3FU)); };
    if (letter < 0x80)
        return {static_cast<char>(letter)};
    if (letter < 0x800)
        return {static_cast<char>(0xC0U | (letter >> 6U)), tail(0)};
    if (letter < 0x10000)
        return {static_cast<char>(0xE0U | (letter >> 12U)), tail(6), tail(0)};
    return {static_cast<char>(0xF0U | (letter >> 18U)), tail(12), tail(6), tail(0)};
}

/// Gathers letters into lines: spaces in a row are one, lines have none at their ends, and at most one empty line
/// parts two.
class Text {
public:
    bool isFull() const { return text_.size() > longestText; }

    void letter(std::string_view letter) {
        if (letter.size() == 1 && isSpace(letter.front())) {
            needsSpace_ = true;
            return;
        }
        if (isUnprintable(firstCharacter(letter).letter.value_or(0)))
            return;
        if (!text_.empty() && breaks_ > 0)
            text_.append(std::min(breaks_, 2U), '\n');
        else if (!text_.empty() && needsSpace_ && text_.back() != '\n')
            text_ += ' ';
        breaks_ = 0;
        needsSpace_ = false;
        text_ += letter;
    }
    void letters(std::string_view letters) {
        for (std::size_t i = 0; i < letters.size();) {
            const std::size_t size = sizeOf(letters[i]);
            letter(letters.substr(i, size));
            i += size;
        }
    }
    void line() { breaks_ = std::max(breaks_, 1U); }
    void paragraph() { breaks_ = 2; }

    static std::size_t sizeOf(char lead) {
        const auto byte = static_cast<unsigned char>(lead);
        return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    }

    std::string finished() && {
        if (text_.size() <= longestText)
            return std::move(text_);
        std::size_t end = longestText - ellipsis.size();
        while (end > 0 && (static_cast<unsigned char>(text_[end]) & 0xC0U) == 0x80U)
            --end;
        text_.resize(end);
        return std::move(text_) + std::string(ellipsis);
    }

private:
    std::string text_;
    unsigned breaks_ = 0;
    bool needsSpace_ = false;
};

/// The letters of "&…;" at the start of the text, and how many bytes it takes; nothing where it is only an ampersand.
std::optional<std::pair<std::string, std::size_t>> takeEntity(std::string_view text) {
    constexpr std::size_t longest = 12;
    const std::size_t end = text.substr(0, longest).find(';');
    if (end == std::string_view::npos || end < 2)
        return std::nullopt;
    const std::string_view name = text.substr(1, end - 1);
    if (name.front() != '#') {
        const auto found = std::ranges::find(entities, name, &std::pair<std::string_view, std::string_view>::first);
        if (found == entities.end())
            return std::nullopt;
        return std::pair(std::string(found->second), end + 1);
    }
    const bool isHexadecimal = name.size() > 1 && (name[1] == 'x' || name[1] == 'X');
    const std::string_view digits = name.substr(isHexadecimal ? 2 : 1);
    std::uint32_t letter = 0;
    const auto [stop, fault] =
        std::from_chars(digits.data(), digits.data() + digits.size(), letter, isHexadecimal ? 16 : 10);
    if (fault != std::errc() || stop != digits.data() + digits.size())
        return std::nullopt;
    if (letter > 0x10FFFF || (letter >= 0xD800 && letter <= 0xDFFF))
        letter = 0xFFFD;
    return std::pair(encoded(letter), end + 1);
}

/// The bytes that a tag or a comment at the start of the text takes; it ends with the text when it is never closed.
std::size_t markupLength(std::string_view text) {
    if (text.starts_with("<!--")) {
        const std::size_t end = text.find("-->", 4);
        return end == std::string_view::npos ? text.size() : end + 3;
    }
    char quote = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (quote != 0)
            quote = text[i] == quote ? char(0) : quote;
        else if (text[i] == '"' || text[i] == '\'')
            quote = text[i];
        else if (text[i] == '>')
            return i + 1;
    }
    return text.size();
}

bool beginsMarkup(std::string_view text) {
    if (text.size() < 2)
        return false;
    const char next = text[1];
    return next == '/' || next == '!' || next == '?' || (next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z');
}

/// Where the element's end tag begins; the text's end when there is none.
std::size_t endOf(std::string_view name, std::string_view text) {
    for (std::size_t i = text.find("</"); i != std::string_view::npos; i = text.find("</", i + 2))
        if (startsWithName(text.substr(i + 2), name))
            return i;
    return text.size();
}

/// The tag's name in small letters, with its slash when it is an end tag.
std::string tagName(std::string_view tag) {
    const std::size_t end = tag.find_first_of(" \t\r\n\f/>", 2);
    return lowered(tag.substr(1, end == std::string_view::npos ? tag.size() - 1 : end - 1));
}

void breakLines(std::string_view tag, Text& text) {
    const bool isEnd = tag.starts_with('/');
    const std::string_view name = tag.substr(isEnd ? 1 : 0);
    if (std::ranges::find(blocks, name) == blocks.end())
        return;
    const bool isLine = name == "br" || name == "li" || name == "tr" || name == "div";
    isLine ? text.line() : text.paragraph();
    if (name == "li" && !isEnd)
        text.letters("• ");
}

} // namespace

std::string plainNotes(std::string_view html) {
    html = html.substr(0, longestInput);
    Text text;
    while (!html.empty() && !text.isFull()) {
        std::size_t taken = 1;
        if (html.front() == '<' && beginsMarkup(html)) {
            taken = markupLength(html);
            const std::string name = tagName(html.substr(0, taken));
            breakLines(name, text);
            if (std::ranges::find(unread, name) != unread.end())
                taken += endOf(name, html.substr(taken));
        } else if (html.front() == '&') {
            const auto entity = takeEntity(html);
            text.letters(entity ? entity->first : "&");
            taken = entity ? entity->second : 1;
        } else {
            taken = Text::sizeOf(html.front());
            // A byte that begins no letter is left out.
            if (validUtf8Length(html.substr(0, taken)) == taken && taken <= html.size())
                text.letter(html.substr(0, taken));
            else
                taken = 1;
        }
        html.remove_prefix(taken);
    }
    return std::move(text).finished();
}

} // namespace vantoro
