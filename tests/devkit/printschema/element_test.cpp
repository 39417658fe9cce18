#include "devkit/printschema/element.h"

#include <gtest/gtest.h>

#include <limits>

#include "devkit/printschema/names.h"

namespace devkit::printschema {
namespace {

[[nodiscard]] std::optional<std::int64_t> Number(std::string text) {
    return ToInteger(StringValue(std::move(text)));
}

TEST(Element, TagsHaveTheirFrameworkNames) {
    EXPECT_EQ("PrintTicket", TagName(Tag::PrintTicket));
    EXPECT_EQ("Value", TagName(Tag::Value));
    EXPECT_EQ(Tag::ScoredProperty, TagByName("ScoredProperty"));
    EXPECT_EQ(std::nullopt, TagByName("scoredProperty"));
}

TEST(Element, IntegersMayHaveSignsAndSpaceAroundThem) {
    EXPECT_EQ(210000, Number("210000"));
    EXPECT_EQ(-5, Number(" \r\n\t-5 "));
    EXPECT_EQ(7, Number("+7"));
}

TEST(Element, WhatIsNoIntegerIsNone) {
    for (const char* text : {"", " ", "-", "+", "+-5", "-+5", "5.0", "5 0", "0x10", "wide", "5mm"}) {
        EXPECT_EQ(std::nullopt, Number(text)) << text;
    }
}

TEST(Element, IntegersBeyondTheRangeAreItsEnds) {
    EXPECT_EQ(std::numeric_limits<std::int64_t>::max(), Number("99999999999999999999"));
    EXPECT_EQ(std::numeric_limits<std::int64_t>::min(), Number("-99999999999999999999"));
}

TEST(Element, KeywordsMeanTheSameAsNameAndAsBareWord) {
    const TypedValue name = NameValue(Keyword("LongEdgeFirst"));
    TypedValue qualified = StringValue("k:LongEdgeFirst");
    qualified.name = Keyword("LongEdgeFirst");
    EXPECT_TRUE(SameMeaning(name, qualified));
    EXPECT_TRUE(SameMeaning(StringValue("LongEdgeFirst"), name));
    EXPECT_TRUE(SameMeaning(name, StringValue(" LongEdgeFirst ")));
    EXPECT_FALSE(SameMeaning(name, StringValue("ShortEdgeFirst")));
    EXPECT_FALSE(SameMeaning(name, NameValue({"http://schemas.example.com/x", "LongEdgeFirst"})));
}

TEST(Element, NumbersMeanTheSameByValue) {
    EXPECT_TRUE(SameMeaning(IntegerValue(600), StringValue(" 0600 ")));
    EXPECT_FALSE(SameMeaning(IntegerValue(600), StringValue("6e2")));
    EXPECT_FALSE(SameMeaning(IntegerValue(600), IntegerValue(601)));
}

TEST(Element, QNameValuesAreEqualByNameAndNotByPrefix) {
    TypedValue left = NameValue(Keyword("Automatic"));
    TypedValue right = left;
    left.text = "psk:Automatic";
    right.text = "ns0002:Automatic";
    EXPECT_EQ(right, left);
    right.name = Keyword("Manual");
    EXPECT_FALSE(left == right);
    EXPECT_FALSE(StringValue("a:X") == StringValue("b:X"));
}

TEST(Element, ChildrenAreFoundByTagAndName) {
    Element ticket;
    ticket.children.push_back(ValueElement(Tag::Property, Keyword("JobName"), StringValue("one")));
    ticket.children.push_back(ValueElement(Tag::ParameterInit, Keyword("JobName"), StringValue("two")));
    ASSERT_NE(nullptr, ticket.Find(Tag::ParameterInit, Keyword("JobName")));
    EXPECT_EQ("two", ticket.Find(Tag::ParameterInit, Keyword("JobName"))->FindValue()->text);
    EXPECT_EQ("one", ticket.FindProperty(Keyword("JobName"))->text);
    EXPECT_EQ(nullptr, ticket.Find(Tag::Feature));
    EXPECT_EQ(nullptr, ticket.FindProperty(Keyword("JobTitle")));
    EXPECT_EQ(nullptr, Element().FindValue());
}

}  // namespace
}  // namespace devkit::printschema
