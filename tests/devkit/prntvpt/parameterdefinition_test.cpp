#include "devkit/prntvpt/device/parameterdefinition.h"

#include <gtest/gtest.h>

#include <vector>

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"

namespace devkit::prntvpt {
namespace {

using namespace printschema;

struct Entry {
    const char* name;
    TypedValue value;
};

[[nodiscard]] Element Definition(const std::vector<Entry>& entries) {
    Element element;
    element.tag = Tag::ParameterDef;
    element.name = Keyword("PageP");
    for (const Entry& entry : entries) {
        element.children.push_back(ValueElement(Tag::Property, FrameworkName(entry.name), entry.value));
    }
    return element;
}

[[nodiscard]] ParameterDefinition Integer(std::int64_t min, std::int64_t max, std::int64_t multiple) {
    return ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("integer"))},
                                               {"MinValue", IntegerValue(min)},
                                               {"MaxValue", IntegerValue(max)},
                                               {"Multiple", IntegerValue(multiple)},
                                               {"DefaultValue", IntegerValue(max - max % multiple)},
                                               {"Mandatory", NameValue(Keyword("Conditional"))}}));
}

[[nodiscard]] std::string Checked(const ParameterDefinition& definition, const char* text) {
    const TypedValue given = StringValue(text);
    const CheckedValue checked = CheckParameter(definition, &given);
    return checked.value.text + (checked.changed ? " changed" : "");
}

TEST(ParameterDefinition, IntegersAreBroughtIntoTheRange) {
    const ParameterDefinition percent = Integer(1, 1000, 1);
    EXPECT_EQ("1", Checked(percent, "1"));
    EXPECT_EQ("1000", Checked(percent, "1000"));
    EXPECT_EQ("1 changed", Checked(percent, "0"));
    EXPECT_EQ("1000 changed", Checked(percent, "5000"));
    EXPECT_EQ("1000 changed", Checked(percent, "99999999999999999999999"));
    EXPECT_EQ("1 changed", Checked(percent, "-99999999999999999999999"));
}

TEST(ParameterDefinition, SpaceAndZerosAroundAnIntegerAreNoChange) {
    EXPECT_EQ("42", Checked(Integer(1, 1000, 1), " +0042 "));
}

TEST(ParameterDefinition, IntegersAreRoundedToTheNearestMultiple) {
    const ParameterDefinition tens = Integer(-25, 25, 10);
    EXPECT_EQ("10 changed", Checked(tens, "14"));
    EXPECT_EQ("20 changed", Checked(tens, "15"));
    EXPECT_EQ("-10 changed", Checked(tens, "-14"));
    EXPECT_EQ("20 changed", Checked(tens, "25"));
    EXPECT_EQ("-20 changed", Checked(tens, "-100"));
    EXPECT_EQ("20", Checked(tens, "20"));
}

TEST(ParameterDefinition, WhatIsNoIntegerBecomesTheDefault) {
    const ParameterDefinition percent = Integer(1, 1000, 1);
    EXPECT_EQ("1000 changed", Checked(percent, "wide"));
    EXPECT_EQ("1000 changed", Checked(percent, ""));
    EXPECT_EQ("1000 changed", Checked(percent, "5.0"));
    EXPECT_TRUE(CheckParameter(percent, nullptr).changed);
    EXPECT_EQ(IntegerValue(1000), CheckParameter(percent, nullptr).value);
}

TEST(ParameterDefinition, TextsAreMeasuredInCharacters) {
    const ParameterDefinition text =
        ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("string"))},
                                            {"MinLength", IntegerValue(1)},
                                            {"MaxLength", IntegerValue(3)},
                                            {"DefaultValue", StringValue("abc")}}));
    EXPECT_EQ(Mandatory::Optional, text.mandatory);
    EXPECT_EQ("\xC3\xA4\xC3\xB6\xC3\xBC", Checked(text, "\xC3\xA4\xC3\xB6\xC3\xBC"));
    EXPECT_EQ("abc changed", Checked(text, "abcd"));
    EXPECT_EQ("abc changed", Checked(text, ""));
}

TEST(ParameterDefinition, DecimalsAreBroughtIntoTheRangeAndKeepTheirText) {
    const ParameterDefinition decimal =
        ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("decimal"))},
                                            {"MinValue", StringValue("0.5")},
                                            {"MaxValue", StringValue("2.5")},
                                            {"DefaultValue", StringValue("1.0")}}));
    EXPECT_EQ("1.50", Checked(decimal, "1.50"));
    EXPECT_EQ("2.5 changed", Checked(decimal, "3"));
    EXPECT_EQ("0.5 changed", Checked(decimal, "0"));
    EXPECT_EQ("1.0 changed", Checked(decimal, "1e0"));
    EXPECT_EQ("1.0 changed", Checked(decimal, "inf"));
}

TEST(ParameterDefinition, AcceptsCountsTheRangeAndNotTheMultiple) {
    const ParameterDefinition tens = Integer(0, 100, 10);
    EXPECT_TRUE(tens.Accepts(IntegerValue(55)));
    EXPECT_FALSE(tens.Accepts(IntegerValue(101)));
    EXPECT_FALSE(tens.Accepts(StringValue("wide")));
}

TEST(ParameterDefinition, MandatoryIsReadAsNameOrWord) {
    const auto mandatory = [](TypedValue value) {
        return ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("integer"))},
                                                   {"DefaultValue", IntegerValue(1)},
                                                   {"Mandatory", std::move(value)}}))
            .mandatory;
    };
    EXPECT_EQ(Mandatory::Unconditional, mandatory(NameValue(Keyword("Unconditional"))));
    EXPECT_EQ(Mandatory::Conditional, mandatory(StringValue("Conditional")));
    EXPECT_EQ(Mandatory::Optional, mandatory(NameValue(Keyword("Optional"))));
}

TEST(ParameterDefinition, RefusesWhatMakesNoSense) {
    EXPECT_THROW(static_cast<void>(ReadParameterDefinition(Definition({}))), FormatError);
    EXPECT_THROW(static_cast<void>(
                     ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("integer"))}}))),
                 FormatError);
    EXPECT_THROW(
        static_cast<void>(ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("integer"))},
                                                              {"MaxValue", IntegerValue(5)},
                                                              {"DefaultValue", IntegerValue(6)}}))),
        FormatError);
}

}  // namespace
}  // namespace devkit::prntvpt
