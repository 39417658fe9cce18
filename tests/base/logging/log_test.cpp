#include "base/logging/log.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace base::logging {
namespace {

std::string CallFormatV(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    try {
        std::string text = FormatV(format, arguments);
        va_end(arguments);
        return text;
    } catch (...) {
        va_end(arguments);
        throw;
    }
}

std::string MessageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "nothing was thrown";
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
}

TEST(FormatTest, NullFormatThrowsWithoutFullStopInTheVariadicForms) {
    const char* narrow = nullptr;
    const wchar_t* wide = nullptr;
    EXPECT_TRUE(MessageOf([&] { Format(narrow); }).ends_with(" : pMessage is null\n"));
    EXPECT_TRUE(MessageOf([&] { Format(wide); }).ends_with(" : pMessage is null\n"));
}

TEST(FormatTest, NullFormatThrowsWithFullStopInTheListForms) {
    EXPECT_TRUE(MessageOf([] { CallFormatV(nullptr); }).ends_with(" : pMessage is null.\n"));
}

TEST(FormatTest, MessageNamesTheThrowingSourceFromTheSourceRoot) {
    const char* narrow = nullptr;
    EXPECT_EQ(0u, MessageOf([&] { Format(narrow); }).find("base/logging/log.cpp("));
}

}  // namespace
}  // namespace base::logging
