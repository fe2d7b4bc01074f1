#include "Platform/Linux/Reading/SysfsText.h"

#include "Model/Text/Numbers.h"
#include "Platform/Linux/Reading/KeptFile.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>

namespace vantoro {

namespace {

/// More processors than any kernel is built for: a list that claims more is no list.
constexpr int mostProcessors = 65536;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

std::string_view takeDigits(std::string_view& text) {
    std::size_t length = 0;
    while (length < text.size() && isDigit(text[length]))
        ++length;
    std::string_view digits = text.substr(0, length);
    text.remove_prefix(length);
    while (digits.size() > 1 && digits.front() == '0')
        digits.remove_prefix(1);
    return digits;
}

} // namespace

std::string_view trimmedText(std::string_view text) {
    const auto isBlank = [](char character) { return static_cast<unsigned char>(character) <= ' '; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::optional<std::int64_t> parseWholeNumber(std::string_view text) {
    return parseInt64(trimmedText(text));
}

std::vector<std::int64_t> parseWholeNumbers(std::string_view text) {
    std::vector<std::int64_t> numbers;
    numbers.reserve(12); // a processor's line of /proc/stat has ten
    while (!(text = trimmedText(text)).empty()) {
        const std::string_view word = text.substr(0, text.find_first_of(" \t\n"));
        if (const auto number = parseWholeNumber(word))
            numbers.push_back(*number);
        text.remove_prefix(word.size());
    }
    return numbers;
}

std::vector<int> parseCpuList(std::string_view text) {
    std::vector<int> processors;
    text = trimmedText(text);
    while (!text.empty()) {
        const std::string_view range = text.substr(0, text.find(','));
        text.remove_prefix(std::min(text.size(), range.size() + 1));
        const std::size_t dash = range.find('-');
        const auto first = parseWholeNumber(range.substr(0, dash));
        const auto last = dash == std::string_view::npos ? first : parseWholeNumber(range.substr(dash + 1));
        if (!first || !last || *first < 0 || *last >= mostProcessors)
            continue;
        for (std::int64_t processor = *first; processor <= *last; ++processor)
            processors.push_back(static_cast<int>(processor));
    }
    std::ranges::sort(processors);
    processors.erase(std::unique(processors.begin(), processors.end()), processors.end());
    return processors;
}

bool naturallyBefore(std::string_view left, std::string_view right) {
    while (!left.empty() && !right.empty()) {
        if (isDigit(left.front()) && isDigit(right.front())) {
            const std::string_view leftDigits = takeDigits(left);
            const std::string_view rightDigits = takeDigits(right);
            if (leftDigits.size() != rightDigits.size())
                return leftDigits.size() < rightDigits.size();
            if (leftDigits != rightDigits)
                return leftDigits < rightDigits;
            continue;
        }
        if (left.front() != right.front())
            return left.front() < right.front();
        left.remove_prefix(1);
        right.remove_prefix(1);
    }
    return left.empty() && !right.empty();
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    const auto close = [](DIR* open) { ::closedir(open); };
    const std::unique_ptr<DIR, decltype(close)> open(::opendir(folder.c_str()), close);
    if (!open)
        return names;
    while (const dirent* entry = ::readdir(open.get()))
        if (const std::string_view name = entry->d_name; name != "." && name != "..")
            names.emplace_back(name);
    std::ranges::sort(names, naturallyBefore);
    return names;
}

std::optional<std::string> readTrimmed(const std::string& path) {
    constexpr std::size_t limit = 65536;
    const auto text = readFileAt(AT_FDCWD, path.c_str(), limit);
    return text ? std::optional<std::string>(trimmedText(*text)) : std::nullopt;
}

std::optional<std::int64_t> readWholeNumber(const std::string& path) {
    const auto text = readTrimmed(path);
    return text ? parseWholeNumber(*text) : std::nullopt;
}

} // namespace vantoro
