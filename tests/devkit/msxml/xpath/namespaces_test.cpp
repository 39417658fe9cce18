#include "devkit/msxml/xpath/namespaces.h"

#include <gtest/gtest.h>

namespace devkit::msxml::tests {
namespace {

using Prefixes = std::vector<std::wstring_view>;

TEST(XPathPrefixes, AreFoundInOrder) {
    EXPECT_EQ((Prefixes{L"a", L"c", L"e", L"g"}), PrefixesIn(L"//a:b/c:d[@e:f = 1]|g:*"));
}

TEST(XPathPrefixes, LiteralsHaveNone) {
    EXPECT_EQ(Prefixes{L"e"}, PrefixesIn(L"x[@n = \"a:b\" or @m = 'c:d']/e:f"));
    EXPECT_EQ(PrefixesIn(L"'open a:b"), Prefixes());
}

TEST(XPathPrefixes, AxesAreNone) {
    EXPECT_EQ(Prefixes{L"b"}, PrefixesIn(L"child::a/ancestor-or-self::b:c/self::*"));
}

TEST(XPathPrefixes, NamesMayHoldDotsAndHyphens) {
    EXPECT_EQ(Prefixes{L"a.b-c_1"}, PrefixesIn(L"a.b-c_1:d"));
    EXPECT_EQ(Prefixes{L"\x00e4\x00f6"}, PrefixesIn(L"\x00e4\x00f6:d"));
}

TEST(XPathPrefixes, NonsenseIsNoTrouble) {
    EXPECT_EQ(PrefixesIn(L""), Prefixes());
    EXPECT_EQ(PrefixesIn(L":"), Prefixes());
    EXPECT_EQ(PrefixesIn(L":::"), Prefixes());
    EXPECT_EQ(Prefixes{L"a"}, PrefixesIn(L"a:"));
    EXPECT_EQ(PrefixesIn(L"\""), Prefixes());
}

}  // namespace
}  // namespace devkit::msxml::tests
