#include "base/xps/decimal.h"

#include <gtest/gtest.h>

#include <limits>
#include <string_view>
#include <vector>

#include "base/xps/localechange.h"

namespace base::xps {
namespace {

TEST(DecimalTest, ReadsTheLongestNumericPrefix) {
    const std::vector<std::pair<const wchar_t*, float>> cases = {
        {L"816", 816.0f}, {L"816.5", 816.5f},     {L"-12.25", -12.25f},
        {L"+7", 7.0f},    {L" \t\r\n\v\f42", 42}, {L".5", 0.5f},
        {L"5.", 5.0f},    {L"1e3", 1000.0f},      {L"1E-2", 0.01f},
        {L"1e", 1.0f},    {L"12px", 12.0f},       {L"1.2.3", 1.2f},
        {L"3 4", 3.0f},   {L"1,5", 1.0f},         {L"793.7007874", 793.7008f},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(value, ParseDecimal(text)) << text;
}

TEST(DecimalTest, ReadsAsZeroWhatBeginsWithNoNumber) {
    for (const wchar_t* text : {L"", L" ", L"Auto", L"-", L"+", L".", L"+-5", L"-+5", L"--5", L"e5", L"inf",
                                L"nan", L"-Infinity", L"\u0661", L"0x10"}) {
        EXPECT_EQ(0.0f, ParseDecimal(text)) << text;
    }
}

TEST(DecimalTest, ReadsNothingThatStandsBeforeABlankText) {
    constexpr std::wstring_view kText = L"7  ";
    EXPECT_EQ(0.0f, ParseDecimal(kText.substr(1)));
}

TEST(DecimalTest, ReadsAsZeroWhatAFloatCannotHold) {
    EXPECT_EQ(0.0f, ParseDecimal(L"1e39"));
    EXPECT_EQ(0.0f, ParseDecimal(L"-1e400"));
    EXPECT_EQ(0.0f, ParseDecimal(L"1e-60"));
    EXPECT_EQ(std::numeric_limits<float>::max(), ParseDecimal(L"3.40282347e38"));
}

TEST(DecimalTest, ReadsNumbersOfAnyLength) {
    EXPECT_EQ(0.5f, ParseDecimal(std::wstring(100000, L'0') + L".5" + std::wstring(100000, L'0')));
}

TEST(DecimalTest, WritesTwoDecimals) {
    EXPECT_EQ(L"0.00", FormatDecimal(0.0f));
    EXPECT_EQ(L"816.00", FormatDecimal(816.0f));
    EXPECT_EQ(L"793.70", FormatDecimal(793.7008f));
    EXPECT_EQ(L"-1.25", FormatDecimal(-1.25f));
    EXPECT_EQ(L"0.12", FormatDecimal(0.125f));
    EXPECT_EQ(L"0.38", FormatDecimal(0.375f));
    EXPECT_EQ(L"-0.00", FormatDecimal(-0.004f));
    EXPECT_EQ(L"340282346638528859811704183484516925440.00",
              FormatDecimal(std::numeric_limits<float>::max()));
    EXPECT_EQ(L"-340282346638528859811704183484516925440.00",
              FormatDecimal(std::numeric_limits<float>::lowest()));
}

TEST(DecimalTest, SeparatesSeveralNumbersByCommas) {
    EXPECT_EQ(L"1.00,-2.50,0.00", FormatDecimals(std::vector<float>{1.0f, -2.5f, 0.0f}));
}

TEST(DecimalTest, TheLocaleOfTheProcessDoesNotMatter) {
    const DecimalCommaLocale locale;
    if (!locale.IsInForce()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(1.5f, ParseDecimal(L"1.5"));
    EXPECT_EQ(1.0f, ParseDecimal(L"1,5"));
    EXPECT_EQ(L"1234567.50", FormatDecimal(1234567.5f));
}

}  // namespace
}  // namespace base::xps
