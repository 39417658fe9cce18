#include "devkit/msxml/unicode.h"

#include <gtest/gtest.h>

namespace devkit::msxml::tests {
namespace {

TEST(Unicode, ConvertsBothWays) {
    EXPECT_EQ(Utf8FromWide(L"a\x00e4\x20ac\xd83d\xde00"), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(WideFromUtf8("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"), L"a\x00e4\x20ac\xd83d\xde00");
    EXPECT_EQ(Utf8FromWide(L""), "");
    EXPECT_EQ(WideFromUtf8(""), L"");
}

TEST(Unicode, FindsWhatXmlForbids) {
    EXPECT_EQ(FindForbiddenCharacter(L"\t\r\n \xd7ff\xe000\xfffd\xd800\xdc00"), std::wstring_view::npos);
    EXPECT_EQ(FindForbiddenCharacter(L"ab\x01"), 2U);
    EXPECT_EQ(FindForbiddenCharacter(L"a\xd800"), 1U);
    EXPECT_EQ(FindForbiddenCharacter(L"\xd800x"), 0U);
    EXPECT_EQ(FindForbiddenCharacter(L"\xdc00"), 0U);
    EXPECT_EQ(FindForbiddenCharacter(L"a\xfffe"), 1U);
    EXPECT_EQ(FindForbiddenCharacter(std::wstring_view(L"a\0b", 3)), 1U);
}

TEST(Unicode, KnowsWhiteSpace) {
    EXPECT_TRUE(IsWhiteSpace(L""));
    EXPECT_TRUE(IsWhiteSpace(L" \t\r\n"));
    EXPECT_FALSE(IsWhiteSpace(L" \x00a0 "));
    EXPECT_EQ(Trimmed(L" \r\n a b\t"), L"a b");
    EXPECT_EQ(Trimmed(L" \n"), L"");
    EXPECT_EQ(Trimmed(L"\x00a0x"), L"\x00a0x");
}

}  // namespace
}  // namespace devkit::msxml::tests
