#include "base/xps/printschema/valuetext.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace {

using base::xps::printschema::LocalPart;
using base::xps::printschema::ParseInteger;

TEST(ParseInteger, TakesEvery32BitNumber) {
    EXPECT_EQ(ParseInteger(L"0"), 0);
    EXPECT_EQ(ParseInteger(L"210000"), 210000);
    EXPECT_EQ(ParseInteger(L"-300"), -300);
    EXPECT_EQ(ParseInteger(L"2147483647"), 2147483647);
    EXPECT_EQ(ParseInteger(L"-2147483648"), -2147483647 - 1);
}

TEST(ParseInteger, TakesTheFormsOfASchemaInteger) {
    EXPECT_EQ(ParseInteger(L"+12"), 12);
    EXPECT_EQ(ParseInteger(L"-0"), 0);
    EXPECT_EQ(ParseInteger(L"00000000000000012"), 12);
}

TEST(ParseInteger, WhiteSpaceRoundItDoesNotCount) {
    EXPECT_EQ(ParseInteger(L" \t\r\n210000\n "), 210000);
    EXPECT_EQ(ParseInteger(L" -5 "), -5);
}

TEST(ParseInteger, ANumberOfMoreThan32BitsIsNone) {
    EXPECT_EQ(ParseInteger(L"2147483648"), std::nullopt);
    EXPECT_EQ(ParseInteger(L"-2147483649"), std::nullopt);
    EXPECT_EQ(ParseInteger(L"18446744073709551616"), std::nullopt);
    EXPECT_EQ(ParseInteger(std::wstring(1000, L'9')), std::nullopt);
}

TEST(ParseInteger, AnythingElseIsNone) {
    for (const wchar_t* text : {L"", L" ", L"+", L"-", L"+-5", L"--5", L"- 5", L"1 2", L"12px", L"1.0",
                                L"1e3", L"0x10", L"1,000", L"\u0661", L"\uFF11", L"\u00A05"})
        EXPECT_EQ(ParseInteger(text), std::nullopt) << text;
}

TEST(ParseInteger, DoesNotDependOnTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "German_Germany.1252");
    EXPECT_EQ(ParseInteger(L"1.000"), std::nullopt);
    EXPECT_EQ(ParseInteger(L"1000"), 1000);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(LocalPart, IsWhatFollowsTheFirstColon) {
    EXPECT_EQ(LocalPart(L"psk:LongEdgeFirst"), L"LongEdgeFirst");
    EXPECT_EQ(LocalPart(L"LongEdgeFirst"), L"LongEdgeFirst");
    EXPECT_EQ(LocalPart(L"  k:LongEdgeFirst\n"), L"LongEdgeFirst");
    EXPECT_EQ(LocalPart(L"a:b:c"), L"b:c");
    EXPECT_EQ(LocalPart(L"psk:"), L"");
    EXPECT_EQ(LocalPart(L""), L"");
}

}  // namespace
