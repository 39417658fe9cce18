#include "devkit/common/text.h"

#include <gtest/gtest.h>

namespace devkit::common {
namespace {

TEST(Text, IsComparedWithNoRegardToAsciiCase) {
    EXPECT_TRUE(EqualIgnoringCase("/Pages/1.FPage", "/pages/1.fpage"));
    EXPECT_FALSE(EqualIgnoringCase("/pages/1.fpage", "/pages/1.fpag"));
    EXPECT_FALSE(EqualIgnoringCase("\xC3\x9C", "\xC3\xBC"));
    EXPECT_FALSE(EqualIgnoringCase("@", "`"));
    EXPECT_FALSE(EqualIgnoringCase("[", "{"));
}

TEST(Text, IsTrimmedOfTheWhiteSpaceOfXmlAtBothEnds) {
    EXPECT_EQ("a \n b", Trimmed(" \t\r\na \n b \t\r\n"));
    EXPECT_EQ("", Trimmed(" \t\r\n"));
    EXPECT_EQ("", Trimmed(std::string_view()));
    EXPECT_EQ("\xC2\xA0", Trimmed("\xC2\xA0"));
    EXPECT_EQ(L"a b", Trimmed(L"\r\n a b\t"));
    EXPECT_EQ(L"\x00A0", Trimmed(L"\x00A0"));
}

TEST(Text, CountsAreInTheirNumber) {
    EXPECT_EQ("0 pages", Counted(0, "page"));
    EXPECT_EQ("1 page", Counted(1, "page"));
    EXPECT_EQ("2 pages", Counted(2, "page"));
}

TEST(Text, ANullPointerIsWrittenAsSuch) {
    EXPECT_EQ("(null)", Utf8OrNull(nullptr));
    EXPECT_EQ("\xC3\xBC", Utf8OrNull(L"\u00fc"));
}

}  // namespace
}  // namespace devkit::common
