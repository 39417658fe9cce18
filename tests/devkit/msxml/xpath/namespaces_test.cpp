#include "devkit/msxml/xpath/namespaces.h"

#include <gtest/gtest.h>

namespace devkit::msxml::tests {
namespace {

using Prefixes = std::vector<std::wstring_view>;

TEST(XPathPrefixes, AreFoundInOrder) {
    EXPECT_EQ(PrefixesIn(L"//a:b/c:d[@e:f = 1]|g:*"), (Prefixes{L"a", L"c", L"e", L"g"}));
}

TEST(XPathPrefixes, LiteralsHaveNone) {
    EXPECT_EQ(PrefixesIn(L"x[@n = \"a:b\" or @m = 'c:d']/e:f"), Prefixes{L"e"});
    EXPECT_EQ(PrefixesIn(L"'open a:b"), Prefixes());
}

TEST(XPathPrefixes, AxesAreNone) {
    EXPECT_EQ(PrefixesIn(L"child::a/ancestor-or-self::b:c/self::*"), Prefixes{L"b"});
}

TEST(XPathPrefixes, NamesMayHoldDotsAndHyphens) {
    EXPECT_EQ(PrefixesIn(L"a.b-c_1:d"), Prefixes{L"a.b-c_1"});
    EXPECT_EQ(PrefixesIn(L"\x00e4\x00f6:d"), Prefixes{L"\x00e4\x00f6"});
}

TEST(XPathPrefixes, NonsenseIsNoTrouble) {
    EXPECT_EQ(PrefixesIn(L""), Prefixes());
    EXPECT_EQ(PrefixesIn(L":"), Prefixes());
    EXPECT_EQ(PrefixesIn(L":::"), Prefixes());
    EXPECT_EQ(PrefixesIn(L"a:"), Prefixes{L"a"});
    EXPECT_EQ(PrefixesIn(L"\""), Prefixes());
}

}  // namespace
}  // namespace devkit::msxml::tests
