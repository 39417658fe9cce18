#include "devkit/common/json.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace devkit::common {
namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

TEST(JsonTest, IsWrittenInOneLine) {
    EXPECT_EQ(R"({"a":[1,null],"b":"x"})", JsonText(Json{{"b", "x"}, {"a", {1, nullptr}}}));
    EXPECT_EQ(R"({"b":"x","a":[1,null]})", JsonText(OrderedJson{{"b", "x"}, {"a", {1, nullptr}}}));
}

TEST(JsonTest, IsWrittenWithALineForEachValue) {
    EXPECT_EQ("{\n  \"b\": \"x\",\n  \"a\": [\n    1\n  ]\n}\n",
              IndentedJsonText(OrderedJson{{"b", "x"}, {"a", OrderedJson::array({1})}}, 2));
}

TEST(JsonTest, WhatIsNotUtf8IsReplaced) {
    EXPECT_EQ("\"a\xEF\xBF\xBD\"", JsonText(Json("a\xFF")));
    EXPECT_EQ("\"a\xEF\xBF\xBD\"", JsonText(OrderedJson("a\xFF")));
    EXPECT_EQ("\"a\xEF\xBF\xBD\"\n", IndentedJsonText(OrderedJson("a\xFF"), 1));
}

TEST(JsonTest, IsReadOrAnError) {
    EXPECT_EQ(Json({{"a", 1}}), ParseJson(R"({"a": 1})"));
    EXPECT_THROW(static_cast<void>(ParseJson("{")), Json::parse_error);
    EXPECT_THROW(static_cast<void>(ParseJson("")), Json::parse_error);
}

TEST(JsonTest, IsReadOrNull) {
    EXPECT_EQ(Json({{"a", 1}}), ParseJsonOrNull(R"({"a": 1})"));
    EXPECT_TRUE(ParseJsonOrNull("{").is_null());
    EXPECT_TRUE(ParseJsonOrNull("").is_null());
}

TEST(JsonTest, WhatIsNotSetIsNull) {
    EXPECT_EQ("[null,3]", JsonText(Json{std::optional<int>(), std::optional<int>(3)}));
    const auto values = ParseJson("[null,3]").get<std::vector<std::optional<int>>>();
    EXPECT_EQ((std::vector<std::optional<int>>{std::nullopt, 3}), values);
}

}  // namespace
}  // namespace devkit::common
