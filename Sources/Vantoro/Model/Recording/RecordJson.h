// The records as JSON values, with the names and the order of RecordingFields.h.
#pragma once

#include "Model/Recording/RecordingFields.h"
#include "Model/Records/Verdict.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

using Json = nlohmann::ordered_json;

/// The number, or 0 in place of one that JSON cannot write.
inline double finite(double number) {
    return std::isfinite(number) ? number : 0;
}

/// On one line; bytes that are not UTF-8 become U+FFFD.
inline std::string jsonText(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

inline Json toJson(double number) {
    return finite(number);
}

inline Json toJson(bool truth) {
    return truth;
}

inline Json toJson(int number) {
    return number;
}

inline Json toJson(std::uint64_t number) {
    return number;
}

inline Json toJson(const std::string& text) {
    return text;
}

inline Json toJson(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json(nullptr);
}

template <class Number>
Json toJson(const ProcessorShare<Number>& share) {
    return finite(share.percent);
}

template <class Number>
Json toJson(const HeldShare<Number>& share) {
    if constexpr (std::is_same_v<std::remove_const_t<Number>, double>)
        return std::clamp(finite(share.percent), 0.0, 100.0);
    else
        return std::clamp(*share.percent, 0.0, 100.0);
}

template <class Number>
Json toJson(const LaterFigure<Number>& figure) {
    return finite(figure.number);
}

template <class Enum>
requires std::is_enum_v<Enum> Json toJson(Enum value) {
    return caseName(value);
}

template <class Record>
Json recordJson(const Record& record);

Json toJson(const ProcessSample& row);

template <class Record>
requires std::is_class_v<Record> Json toJson(const Record& record) {
    return recordJson(record);
}

template <class Element>
Json toJson(const std::vector<Element>& list) {
    Json array = Json::array();
    for (const Element& element : list)
        array.push_back(toJson(element));
    return array;
}

/// Whether a record stands without this field: what is not known and came after the first recordings, which went
/// without it too. Texts were there from the start, as null.
template <class Field>
bool isLeftOut(const Field& /*field*/) {
    return false;
}

inline bool isLeftOut(const std::optional<double>& number) {
    return !number || !std::isfinite(*number);
}

inline bool isLeftOut(const std::optional<std::uint64_t>& number) {
    return !number;
}

inline bool isLeftOut(const StallShares& stalls) {
    return stalls == StallShares();
}

template <class Element>
bool isLeftOut(const std::optional<std::vector<Element>>& list) {
    return !list;
}

template <class Number>
bool isLeftOut(const HeldShare<Number>& share) {
    return isLeftOut(share.percent);
}

template <class Number>
bool isLeftOut(const LaterFigure<Number>& figure) {
    return finite(figure.number) == 0;
}

template <class Value>
const Value& presentValue(const std::optional<Value>& value) {
    return *value;
}

template <class Value>
const Value& presentValue(const Value& value) {
    return value;
}

inline const std::optional<std::string>& presentValue(const std::optional<std::string>& text) {
    return text;
}

/// Adds each field that is visited to an object.
struct JsonFields {
    Json& object;

    template <class Field>
    void operator()(std::string_view name, const Field& field) const {
        if (!isLeftOut(field))
            object.emplace(std::string(name), toJson(presentValue(field)));
    }
};

template <class Record>
Json recordJson(const Record& record) {
    Json object = Json::object();
    visitFields(record, JsonFields{object});
    return object;
}

inline Json toJson(const ProcessSample& row) {
    Json object = Json::object();
    visitRowFields(*row.identity, row, JsonFields{object});
    return object;
}

} // namespace vantoro
