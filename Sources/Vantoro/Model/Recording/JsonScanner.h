// Reads one JSON text from memory and reports what it meets, building nothing. Recordings run to hundreds of megabytes
// whose rows are mostly text that repeats: handing out views of it, instead of copies, is what makes them quick to
// open.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantoro {

struct JsonNumber {
    /// The nearest double; infinite when the number is too large for one.
    double value = 0;
    bool isNegative = false;
    /// The absolute value, exact, when the number is whole and fits.
    std::optional<std::uint64_t> wholeMagnitude;
};

/// What a JSON text consists of, in its order. Views are valid during the call only.
class JsonEvents {
public:
    virtual void null() = 0;
    virtual void boolean(bool value) = 0;
    virtual void number(const JsonNumber& value) = 0;
    virtual void string(std::string_view value) = 0;
    virtual void startObject() = 0;
    virtual void key(std::string_view name) = 0;
    virtual void endObject() = 0;
    virtual void startArray() = 0;
    virtual void endArray() = 0;

protected:
    ~JsonEvents() = default;
};

struct JsonFault {
    /// The byte at which the text stops being JSON.
    std::size_t position = 0;
    /// It is JSON so far, but this number is too large for a double; it was reported as infinite.
    bool isNumberTooLarge = false;

    bool operator==(const JsonFault&) const = default;
};

/// Scans exactly one JSON value, with white space around it. None when the text is well-formed (RFC 8259, strings in
/// valid UTF-8); else what is wrong, after the events of what stood before it. Nesting may be of any depth.
std::optional<JsonFault> scanJson(std::string_view text, JsonEvents& events);

} // namespace vantoro
