#include "Model/Recording/JsonScanner.h"
#include "Model/Recording/Recording.h"
#include "Model/Recording/RecordingReasons.h"

#include <fmt/format.h>
#include <optional>
#include <utility>

namespace vantoro {

namespace {

/// The header's few fields; everything below its first level is passed over.
class HeaderEvents final : public JsonEvents {
public:
    RecordingHeader header;
    bool isObject = false;
    std::string refusal;
    bool isRecording = false;
    std::optional<double> version;

    void null() override {
        if (depth_ == 1 && name_ == "system")
            header.system.reset();
        else if (depth_ == 1 && name_ == "processors")
            header.processors.reset();
        else
            wrongUnlessUnknown("null");
    }
    void boolean(bool /*value*/) override { wrongUnlessUnknown("a truth value"); }
    void number(const JsonNumber& value) override {
        if (depth_ == 1 && name_ == "version")
            takeVersion(value);
        else if (isInProcessors() && (name_ == "performance" || name_ == "efficiency"))
            takeProcessors(value);
        else
            wrongUnlessUnknown("a number");
    }
    void string(std::string_view value) override {
        if (depth_ == 1 && name_ == "format")
            isRecording = value == "vantoro-recording";
        else if (depth_ == 1 && name_ == "machine")
            header.machine = value;
        else if (depth_ == 1 && name_ == "created")
            header.created = value;
        else if (depth_ == 1 && name_ == "system")
            takeSystem(value);
        else
            wrongUnlessUnknown("a string");
    }
    void startObject() override {
        if (depth_ == 1 && name_ == "processors") {
            header.processors.emplace();
            inProcessors_ = true;
        } else {
            wrongUnlessUnknown("an object");
        }
        isObject = isObject || depth_ == 0;
        ++depth_;
    }
    void key(std::string_view name) override {
        if (depth_ == 1)
            inProcessors_ = false;
        if (depth_ == 1 || isInProcessors())
            name_ = name;
    }
    void endObject() override { --depth_; }
    void startArray() override {
        wrongUnlessUnknown("a list");
        ++depth_;
    }
    void endArray() override { --depth_; }

private:
    void takeVersion(const JsonNumber& value) {
        version = value.value;
        if (!value.wholeMagnitude)
            refuse(fmt::format("version is {}, not a whole number", numberText(value)));
    }

    bool isInProcessors() const { return inProcessors_ && depth_ == 2; }

    void takeProcessors(const JsonNumber& value) {
        constexpr std::uint64_t most = 2147483647;
        if (!value.wholeMagnitude || *value.wholeMagnitude > most || (value.isNegative && *value.wholeMagnitude != 0)) {
            refuse(fmt::format("processors.{} is {}, not a whole number from 0 to {}", name_, numberText(value), most));
            return;
        }
        const auto count = static_cast<std::int32_t>(*value.wholeMagnitude);
        (name_ == "performance" ? header.processors->performance : header.processors->efficiency) = count;
    }

    void takeSystem(std::string_view word) {
        header.system = caseNamed<SystemKind>(word);
        if (!header.system)
            refuse(fmt::format("system is {}, not {}", quoted(word), wordsFor<SystemKind>()));
    }

    void wrongUnlessUnknown(std::string_view found) {
        if (isInProcessors() && (name_ == "performance" || name_ == "efficiency"))
            refuse(fmt::format("processors.{} is {}, not a number", name_, found));
        if (depth_ != 1)
            return;
        if (name_ == "processors")
            refuse(fmt::format("processors is {}, not an object", found));
        else if (name_ == "format" || name_ == "machine" || name_ == "created" || name_ == "system")
            refuse(fmt::format("{} is {}, not a string", name_, found));
        else if (name_ == "version")
            refuse(fmt::format("version is {}, not a number", found));
    }

    void refuse(std::string reason) {
        if (refusal.empty())
            refusal = std::move(reason);
    }

    std::size_t depth_ = 0;
    bool inProcessors_ = false;
    std::string name_;
};

} // namespace

ParsedLine<RecordingHeader> RecordingParser::parseHeader(std::string_view line) {
    HeaderEvents events;
    const std::optional<JsonFault> fault = scanJson(line, events);
    if (fault || !events.isObject) {
        RecordingRefusal refusal = notAnObject(fault);
        refusal.reason = "no header: " + refusal.reason;
        return refusal;
    }
    if (!events.refusal.empty())
        return RecordingRefusal{.reason = std::move(events.refusal)};
    if (!events.isRecording)
        return RecordingRefusal{.reason = "no header: format is not \"vantoro-recording\""};
    if (!events.version)
        return RecordingRefusal{.reason = "version is missing"};
    if (*events.version != 1)
        return RecordingRefusal{.reason = fmt::format("version {} is not one that can be read", *events.version)};
    return std::move(events.header);
}

} // namespace vantoro
