#pragma once

#include <optional>

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
