#include "base/logging/log.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <stdexcept>
#include <string>

#include "thrown.h"

namespace base::logging {
namespace {

template <typename Character>
std::basic_string<Character> CallFormatV(const Character* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    try {
        std::basic_string<Character> text = FormatV(format, arguments);
        va_end(arguments);
        return text;
    } catch (...) {
        va_end(arguments);
        throw;
    }
}

// What a null format throws in a form that takes it.
template <typename Call>
std::string Refusal(Call&& call) {
    return tests::Thrown<std::invalid_argument>(call);
}

TEST(FormatTest, NarrowFormatsArguments) {
    EXPECT_EQ("a 7 0x1f b", Format("%s %d 0x%x %c", "a", 7, 0x1f, 'b'));
}

TEST(FormatTest, WideTakesWideStringsForS) {
    EXPECT_EQ(L"psk:ISOA4/42", Format(L"%s:%s/%i", L"psk", L"ISOA4", 42));
}

TEST(FormatTest, AFormatProducingTheEmptyStringReturnsAnEmptyString) {
    EXPECT_EQ("", Format("%s", ""));
    EXPECT_EQ(L"", Format(L"%s", L""));
}

TEST(FormatTest, LongResultIsWhole) {
    const std::string text(100000, 'x');
    EXPECT_EQ(text + "!", Format("%s!", text.c_str()));
    const std::wstring wide(100000, L'x');
    EXPECT_EQ(wide + L"!", Format(L"%s!", wide.c_str()));
}

TEST(FormatTest, TheListFormsFormatArguments) {
    EXPECT_EQ("a 7", CallFormatV("%s %d", "a", 7));
    EXPECT_EQ(L"psk:ISOA4/42", CallFormatV(L"%s:%s/%i", L"psk", L"ISOA4", 42));
}

TEST(FormatTest, ANullFormatThrowsWithoutAFullStopInTheVariadicForms) {
    const std::string expected = "base/logging/log.cpp(LINE) : pMessage is null\n";
    const char* narrow = nullptr;
    const wchar_t* wide = nullptr;
    EXPECT_EQ(expected, Refusal([&] { Format(narrow); }));
    EXPECT_EQ(expected, Refusal([&] { Format(wide); }));
}

TEST(FormatTest, ANullFormatThrowsWithAFullStopInTheListForms) {
    const std::string expected = "base/logging/log.cpp(LINE) : pMessage is null.\n";
    const char* narrow = nullptr;
    const wchar_t* wide = nullptr;
    EXPECT_EQ(expected, Refusal([&] { CallFormatV(narrow); }));
    EXPECT_EQ(expected, Refusal([&] { CallFormatV(wide); }));
}

}  // namespace
}  // namespace base::logging
