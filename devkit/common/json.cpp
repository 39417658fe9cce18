#include "devkit/common/json.h"

namespace devkit::common {

namespace {

template <typename Json>
std::string Dump(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string JsonText(const nlohmann::json& json) { return Dump(json, -1); }
std::string JsonText(const nlohmann::ordered_json& json) { return Dump(json, -1); }
std::string IndentedJsonText(const nlohmann::ordered_json& json, int spaces) {
    return Dump(json, spaces) + "\n";
}

nlohmann::json ParseJson(std::string_view text) { return nlohmann::json::parse(text); }

nlohmann::json ParseJsonOrNull(std::string_view text) {
    nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
    return json.is_discarded() ? nlohmann::json() : json;
}

}  // namespace devkit::common
