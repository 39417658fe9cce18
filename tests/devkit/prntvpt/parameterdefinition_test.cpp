#include "devkit/prntvpt/device/parameterdefinition.h"

#include <gtest/gtest.h>

#include <vector>

#include "devkit/printschema/formaterror.h"
#include "devkit/printschema/names.h"

namespace devkit::prntvpt {
namespace {

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
    EXPECT_EQ(Checked(percent, "1"), "1");
    EXPECT_EQ(Checked(percent, "1000"), "1000");
    EXPECT_EQ(Checked(percent, "0"), "1 changed");
    EXPECT_EQ(Checked(percent, "5000"), "1000 changed");
    EXPECT_EQ(Checked(percent, "99999999999999999999999"), "1000 changed");
    EXPECT_EQ(Checked(percent, "-99999999999999999999999"), "1 changed");
}

TEST(ParameterDefinition, SpaceAndZerosAroundAnIntegerAreNoChange) {
    EXPECT_EQ(Checked(Integer(1, 1000, 1), " +0042 "), "42");
}

TEST(ParameterDefinition, IntegersAreRoundedToTheNearestMultiple) {
    const ParameterDefinition tens = Integer(-25, 25, 10);
    EXPECT_EQ(Checked(tens, "14"), "10 changed");
    EXPECT_EQ(Checked(tens, "15"), "20 changed");
    EXPECT_EQ(Checked(tens, "-14"), "-10 changed");
    EXPECT_EQ(Checked(tens, "25"), "20 changed");
    EXPECT_EQ(Checked(tens, "-100"), "-20 changed");
    EXPECT_EQ(Checked(tens, "20"), "20");
}

TEST(ParameterDefinition, WhatIsNoIntegerBecomesTheDefault) {
    const ParameterDefinition percent = Integer(1, 1000, 1);
    EXPECT_EQ(Checked(percent, "wide"), "1000 changed");
    EXPECT_EQ(Checked(percent, ""), "1000 changed");
    EXPECT_EQ(Checked(percent, "5.0"), "1000 changed");
    EXPECT_TRUE(CheckParameter(percent, nullptr).changed);
    EXPECT_EQ(CheckParameter(percent, nullptr).value, IntegerValue(1000));
}

TEST(ParameterDefinition, TextsAreMeasuredInCharacters) {
    const ParameterDefinition text =
        ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("string"))},
                                            {"MinLength", IntegerValue(1)},
                                            {"MaxLength", IntegerValue(3)},
                                            {"DefaultValue", StringValue("abc")}}));
    EXPECT_EQ(text.mandatory, Mandatory::Optional);
    EXPECT_EQ(Checked(text, "\xC3\xA4\xC3\xB6\xC3\xBC"), "\xC3\xA4\xC3\xB6\xC3\xBC");
    EXPECT_EQ(Checked(text, "abcd"), "abc changed");
    EXPECT_EQ(Checked(text, ""), "abc changed");
}

TEST(ParameterDefinition, DecimalsAreBroughtIntoTheRangeAndKeepTheirText) {
    const ParameterDefinition decimal =
        ReadParameterDefinition(Definition({{"DataType", NameValue(SchemaType("decimal"))},
                                            {"MinValue", StringValue("0.5")},
                                            {"MaxValue", StringValue("2.5")},
                                            {"DefaultValue", StringValue("1.0")}}));
    EXPECT_EQ(Checked(decimal, "1.50"), "1.50");
    EXPECT_EQ(Checked(decimal, "3"), "2.5 changed");
    EXPECT_EQ(Checked(decimal, "0"), "0.5 changed");
    EXPECT_EQ(Checked(decimal, "1e0"), "1.0 changed");
    EXPECT_EQ(Checked(decimal, "inf"), "1.0 changed");
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
    EXPECT_EQ(mandatory(NameValue(Keyword("Unconditional"))), Mandatory::Unconditional);
    EXPECT_EQ(mandatory(StringValue("Conditional")), Mandatory::Conditional);
    EXPECT_EQ(mandatory(NameValue(Keyword("Optional"))), Mandatory::Optional);
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
