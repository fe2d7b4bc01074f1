#include "Platform/Linux/Updates/Copy/PreparationProtocol.h"

#include "Model/Text/Numbers.h"

#include <algorithm>
#include <fmt/format.h>

namespace vantoro {

namespace {

/// What follows the word and the blank; nothing where the line begins otherwise.
std::optional<std::string> afterWord(const std::string& line, const std::string& word) {
    return line.starts_with(word + " ") ? std::optional(line.substr(word.size() + 1)) : std::nullopt;
}

} // namespace

std::string preparationProgressLine(double share) {
    return fmt::format("progress {:.2f}", share);
}

std::optional<double> parsePreparationProgress(const std::string& line) {
    const auto share = afterWord(line, "progress");
    return share ? parseDecimal(*share) : std::nullopt;
}

std::string preparationOutcomeLine(const PreparationOutcome& outcome) {
    if (const std::string* staged = std::get_if<std::string>(&outcome))
        return "staged " + *staged;
    const UpdateError& error = std::get<UpdateError>(outcome);
    std::string text = error.description;
    // A path in it can hold anything.
    std::ranges::replace(text, '\n', ' ');
    return fmt::format("error {} {}", error.code, text);
}

PreparationOutcome parsePreparationOutcome(const std::string& line) {
    if (auto staged = afterWord(line, "staged"))
        return *staged;
    const std::string rest = afterWord(line, "error").value_or("");
    const std::size_t end = std::min(rest.find(' '), rest.size());
    const auto code = parseInt32(rest.substr(0, end));
    if (code == OwnCode::diskFull)
        return ownError(*code, rest.substr(end));
    return sparkleError(code.value_or(SparkleCode::unarchiving),
                        code ? rest.substr(end) : "the archive could not be prepared: " + line);
}

} // namespace vantoro
