#include "devkit/pipeline/text.h"

#include <gtest/gtest.h>

namespace devkit::pipeline {
namespace {

TEST(Text, ConvertsBothWays) {
    EXPECT_EQ(Widen("/s\xC3\xBC\xC3\x9F.xml"), L"/s\u00fc\u00df.xml");
    EXPECT_EQ(Narrow(L"/s\u00fc\u00df.xml"), "/s\xC3\xBC\xC3\x9F.xml");
    EXPECT_EQ(Widen("\xF0\x9F\x96\xA8"), L"\U0001F5A8");
    EXPECT_EQ(Widen(""), L"");
    EXPECT_EQ(Narrow(L""), "");
}

TEST(Text, WritesANullPointerAsSuch) {
    EXPECT_EQ(NarrowOrNull(nullptr), "(null)");
    EXPECT_EQ(NarrowOrNull(L"name"), "name");
}

TEST(Text, ComparesWithNoRegardToAsciiCase) {
    EXPECT_TRUE(EqualIgnoringCase("/Pages/1.FPage", "/pages/1.fpage"));
    EXPECT_FALSE(EqualIgnoringCase("/pages/1.fpage", "/pages/1.fpag"));
    EXPECT_FALSE(EqualIgnoringCase("\xC3\x9C", "\xC3\xBC"));
}

}  // namespace
}  // namespace devkit::pipeline
