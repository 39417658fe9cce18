#include "devkit/msxml/tree/characters.h"

#include <gtest/gtest.h>

namespace devkit::msxml::tests {
namespace {

TEST(Characters, FindsWhatXmlForbids) {
    EXPECT_EQ(std::wstring_view::npos, FindForbiddenCharacter(L"\t\r\n \xd7ff\xe000\xfffd\xd800\xdc00"));
    EXPECT_EQ(2U, FindForbiddenCharacter(L"ab\x01"));
    EXPECT_EQ(1U, FindForbiddenCharacter(L"a\xd800"));
    EXPECT_EQ(0U, FindForbiddenCharacter(L"\xd800x"));
    EXPECT_EQ(0U, FindForbiddenCharacter(L"\xdc00"));
    EXPECT_EQ(1U, FindForbiddenCharacter(L"a\xfffe"));
    EXPECT_EQ(1U, FindForbiddenCharacter(std::wstring_view(L"a\0b", 3)));
}

TEST(Characters, KnowsWhiteSpace) {
    EXPECT_TRUE(IsWhiteSpace(L""));
    EXPECT_TRUE(IsWhiteSpace(L" \t\r\n"));
    EXPECT_FALSE(IsWhiteSpace(L" \x00a0 "));
}

}  // namespace
}  // namespace devkit::msxml::tests
