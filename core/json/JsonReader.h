#pragma once

#include "json/DecodingError.h"
#include "json/EnumNames.h"
#include "model/Date.h"
#include "model/Uuid.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace recorder {

template <class T>
struct IsVector : std::false_type {};
template <class T>
struct IsVector<std::vector<T>> : std::true_type {};

template <class T>
T decodeJson(const nlohmann::json& value, const std::string& path);

// Strict, keyed reading of one JSON object: a required key must be there with
// the right type, an optional one may be absent or null, unknown keys are
// ignored. Every failure names where in the file it happened.
class JsonReader {
public:
    JsonReader(const nlohmann::json& object, std::string path);

    template <class T>
    T get(std::string_view key) const {
        const nlohmann::json* value = find(key);
        if (!value) throw DecodingError::missingKey(pathOf(key));
        return decodeJson<T>(*value, pathOf(key));
    }

    template <class T>
    std::optional<T> getOptional(std::string_view key) const {
        const nlohmann::json* value = find(key);
        if (!value) return std::nullopt;
        return decodeJson<T>(*value, pathOf(key));
    }

    const nlohmann::json& object() const { return object_; }
    const std::string& path() const { return path_; }
    std::string pathOf(std::string_view key) const;

private:
    const nlohmann::json* find(std::string_view key) const;

    const nlohmann::json& object_;
    std::string path_;
};

template <class T>
T decodeJson(const nlohmann::json& value, const std::string& path) {
    if constexpr (std::is_same_v<T, bool>) {
        if (!value.is_boolean()) throw DecodingError::wrongType(path, "true or false");
        return value.get<bool>();
    } else if constexpr (std::is_floating_point_v<T>) {
        if (!value.is_number()) throw DecodingError::wrongType(path, "a number");
        return value.get<T>();
    } else if constexpr (std::is_integral_v<T>) {
        if (!value.is_number()) throw DecodingError::wrongType(path, "a whole number");
        if (value.is_number_integer()) {
            if (value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t(std::numeric_limits<T>::max()))
                throw DecodingError::wrongType(path, "a whole number in range");
            if (!value.is_number_unsigned() && (value.get<std::int64_t>() < std::int64_t(std::numeric_limits<T>::min()) ||
                                                value.get<std::int64_t>() > std::int64_t(std::numeric_limits<T>::max())))
                throw DecodingError::wrongType(path, "a whole number in range");
            return static_cast<T>(value.get<std::int64_t>());
        }
        double d = value.get<double>();
        if (d != std::trunc(d) || d < double(std::numeric_limits<T>::min()) || d > double(std::numeric_limits<T>::max()))
            throw DecodingError::wrongType(path, "a whole number in range");
        return static_cast<T>(d);
    } else if constexpr (std::is_same_v<T, std::string>) {
        if (!value.is_string()) throw DecodingError::wrongType(path, "text");
        return value.get<std::string>();
    } else if constexpr (std::is_same_v<T, Uuid>) {
        if (!value.is_string()) throw DecodingError::wrongType(path, "an identifier");
        auto id = Uuid::parse(value.get_ref<const std::string&>());
        if (!id) throw DecodingError::wrongType(path, "a valid identifier");
        return *id;
    } else if constexpr (std::is_same_v<T, Date>) {
        if (!value.is_string()) throw DecodingError::wrongType(path, "a date");
        auto date = Date::fromIso8601(value.get_ref<const std::string&>());
        if (!date) throw DecodingError::wrongType(path, "a date in ISO 8601 form");
        return *date;
    } else if constexpr (NamedEnum<T>) {
        if (!value.is_string()) throw DecodingError::wrongType(path, "text");
        auto found = enumFromName<T>(value.get_ref<const std::string&>());
        if (!found) throw DecodingError::unknownCase(path, value.get<std::string>());
        return *found;
    } else if constexpr (IsVector<T>::value) {
        if (!value.is_array()) throw DecodingError::wrongType(path, "a list");
        T out;
        out.reserve(value.size());
        for (std::size_t i = 0; i < value.size(); ++i)
            out.push_back(decodeJson<typename T::value_type>(value[i], path + "[" + std::to_string(i) + "]"));
        return out;
    } else {
        return T::fromJson(JsonReader(value, path));
    }
}

template <class T>
nlohmann::json encodeJson(const T& value) {
    if constexpr (std::is_same_v<T, bool> || std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
        return value;
    } else if constexpr (std::is_same_v<T, Uuid>) {
        return value.string();
    } else if constexpr (std::is_same_v<T, Date>) {
        return value.iso8601();
    } else if constexpr (NamedEnum<T>) {
        return std::string(enumName(value));
    } else if constexpr (IsVector<T>::value) {
        nlohmann::json out = nlohmann::json::array();
        for (const auto& element : value) out.push_back(encodeJson(element));
        return out;
    } else {
        return value.toJson();
    }
}

// Optional values are left out, never written as null.
template <class T>
void putOptional(nlohmann::json& object, const char* key, const std::optional<T>& value) {
    if (value) object[key] = encodeJson(*value);
}

} // namespace recorder
