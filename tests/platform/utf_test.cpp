#include "platform/utf.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace platform {
namespace {

TEST(Utf, EachPlaneIsTurnedIntoTheOther) {
    constexpr std::string_view kUtf8 = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
    constexpr std::wstring_view kUtf16 = L"a\x00e4\x20ac\xd83d\xde00";
    EXPECT_EQ(kUtf8, ToUtf8(kUtf16));
    EXPECT_EQ(kUtf16, ToUtf16(kUtf8));
}

TEST(Utf, EmptyTextStaysEmpty) {
    EXPECT_EQ("", ToUtf8({}));
    EXPECT_EQ(L"", ToUtf16({}));
}

TEST(Utf, TextThatMayBecomeTooLongForTheSystemIsRefusedBeforeItIsRead) {
    constexpr std::size_t kTooLong = std::numeric_limits<int>::max() / 3 + 1;
    EXPECT_THROW(static_cast<void>(ToUtf8({L"a", kTooLong})), std::length_error);
    constexpr std::size_t kTooLongForUtf16 = std::size_t{std::numeric_limits<int>::max()} + 1;
    EXPECT_THROW(static_cast<void>(ToUtf16({"a", kTooLongForUtf16})), std::length_error);
}

TEST(Utf, ANullCharacterIsOneLikeAnyOther) {
    constexpr std::string_view kUtf8("a\0b", 3);
    constexpr std::wstring_view kUtf16(L"a\0b", 3);
    EXPECT_EQ(kUtf8, ToUtf8(kUtf16));
    EXPECT_EQ(kUtf16, ToUtf16(kUtf8));
}

TEST(Utf, ASurrogateWithoutItsPartnerBecomesAReplacementCharacter) {
    EXPECT_EQ(
        "a\xEF\xBF\xBD"
        "b",
        ToUtf8(L"a\xd83d"
               L"b"));
    EXPECT_EQ(
        "a\xEF\xBF\xBD"
        "b",
        ToUtf8(L"a\xde00"
               L"b"));
    EXPECT_EQ("a\xEF\xBF\xBD", ToUtf8(L"a\xd83d"));
}

TEST(Utf, BytesThatAreNotUtf8BecomeReplacementCharacters) {
    EXPECT_EQ(
        L"a\xfffd"
        L"b",
        ToUtf16("a\xFF"
                "b"));
    EXPECT_EQ(L"a\xfffd", ToUtf16("a\xE2\x82"));
    EXPECT_EQ(L'\xfffd', ToUtf16("\xC0\x80").front());
}

}  // namespace
}  // namespace platform
