#include "Model/Recording/JsonScanner.h"

#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace vantoro {

namespace {

/// The library's events as ours.
class Adapter : public nlohmann::json_sax<nlohmann::json> {
public:
    explicit Adapter(JsonEvents& events) : events_(events) {}

    const JsonFault& fault() const { return fault_; }

    bool null() override {
        events_.null();
        return true;
    }
    bool boolean(bool value) override {
        events_.boolean(value);
        return true;
    }
    bool number_integer(number_integer_t value) override {
        // Only negative numbers arrive here; their magnitude is taken without overflow.
        events_.number({.value = static_cast<double>(value),
                        .isNegative = value < 0,
                        .wholeMagnitude = value < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(value)
                                                    : static_cast<std::uint64_t>(value)});
        return true;
    }
    bool number_unsigned(number_unsigned_t value) override {
        events_.number({.value = static_cast<double>(value), .isNegative = false, .wholeMagnitude = value});
        return true;
    }
    bool number_float(number_float_t value, const string_t& /*text*/) override {
        events_.number({.value = value, .isNegative = value < 0, .wholeMagnitude = wholeMagnitude(value)});
        return true;
    }
    bool string(string_t& value) override {
        events_.string(value);
        return true;
    }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*size*/) override {
        events_.startObject();
        return true;
    }
    bool key(string_t& name) override {
        events_.key(name);
        return true;
    }
    bool end_object() override {
        events_.endObject();
        return true;
    }
    bool start_array(std::size_t /*size*/) override {
        events_.startArray();
        return true;
    }
    bool end_array() override {
        events_.endArray();
        return true;
    }
    bool parse_error(std::size_t position, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        constexpr int numberOutOfRange = 406;
        fault_ = {.position = position > 0 ? position - 1 : 0, .isNumberTooLarge = error.id == numberOutOfRange};
        if (fault_.isNumberTooLarge)
            events_.number({.value = std::numeric_limits<double>::infinity()});
        return false;
    }

private:
    /// "1e3" and "5.0" are whole numbers too.
    static std::optional<std::uint64_t> wholeMagnitude(double value) {
        constexpr double firstInexact = 9007199254740992.0;
        const double magnitude = value < 0 ? -value : value;
        if (!(magnitude < firstInexact) || magnitude != static_cast<double>(static_cast<std::uint64_t>(magnitude)))
            return std::nullopt;
        return static_cast<std::uint64_t>(magnitude);
    }

    JsonEvents& events_;
    JsonFault fault_;
};

} // namespace

std::optional<JsonFault> scanJson(std::string_view text, JsonEvents& events) {
    // The library passes over a byte order mark and takes a zero byte for the end; JSON has neither.
    if (text.starts_with("\xEF\xBB\xBF"))
        return JsonFault{};
    if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos)
        return JsonFault{.position = zero};
    Adapter adapter(events);
    if (nlohmann::json::sax_parse(text.begin(), text.end(), &adapter))
        return std::nullopt;
    return adapter.fault();
}

} // namespace vantoro
