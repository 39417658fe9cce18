#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace nlohmann {

// What is not set is null.
template <typename Value>
struct adl_serializer<std::optional<Value>> {
    template <typename Json>
    static void to_json(Json& json, const std::optional<Value>& value) {
        if (value) {
            json = *value;
        } else {
            json = nullptr;
        }
    }
    template <typename Json>
    static void from_json(const Json& json, std::optional<Value>& value) {
        if (json.is_null()) {
            value.reset();
        } else {
            value = json.template get<Value>();
        }
    }
};

}  // namespace nlohmann

namespace devkit::common {

// Reading and writing, which take long to compile, for all who need them.

// One line. What of the texts is not UTF-8 becomes U+FFFD.
[[nodiscard]] std::string JsonText(const nlohmann::json& json);
[[nodiscard]] std::string JsonText(const nlohmann::ordered_json& json);
// The same with a line for each value, by so many spaces farther in than what holds it, and a line's end
// behind the last.
[[nodiscard]] std::string IndentedJsonText(const nlohmann::ordered_json& json, int spaces);
// Throws nlohmann::json::parse_error.
[[nodiscard]] nlohmann::json ParseJson(std::string_view text);
// Null for what is no JSON.
[[nodiscard]] nlohmann::json ParseJsonOrNull(std::string_view text);

}  // namespace devkit::common
