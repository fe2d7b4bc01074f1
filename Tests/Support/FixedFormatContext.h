// Settings as a test states them; English conventions and UTC otherwise.
#pragma once

#include "Model/Text/Format.h"

#include "Support/Testing.h"

namespace vantoro::testing {

struct FixedFormatContext : DefaultFormatContext {
    std::map<std::string, std::string, std::less<>> texts;
    std::map<std::string, double, std::less<>> numbers;
    std::map<std::string, bool, std::less<>> flags;
    bool canGroup = true;

    std::optional<std::string> text(std::string_view key) const override { return find(texts, key); }
    std::optional<double> number(std::string_view key) const override { return find(numbers, key); }
    std::optional<bool> flag(std::string_view key) const override { return find(flags, key); }
    std::optional<std::string> grouped(std::int64_t number) const override {
        return canGroup ? DefaultFormatContext::grouped(number) : std::nullopt;
    }

private:
    template <typename Value>
    static std::optional<Value> find(const std::map<std::string, Value, std::less<>>& values, std::string_view key) {
        const auto found = values.find(key);
        return found != values.end() ? std::optional(found->second) : std::nullopt;
    }
};

} // namespace vantoro::testing
