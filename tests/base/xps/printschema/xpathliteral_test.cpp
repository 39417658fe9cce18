#include "base/xps/printschema/xpathliteral.h"

#include <gtest/gtest.h>

namespace {

using base::xps::printschema::XPathLiteral;

TEST(XPathLiteral, StandsBetweenDoubleQuotes) {
    EXPECT_EQ(XPathLiteral(L"psk:JobInputBin"), L"\"psk:JobInputBin\"");
    EXPECT_EQ(XPathLiteral(L"it's"), L"\"it's\"");
    EXPECT_EQ(XPathLiteral(L""), L"\"\"");
}

TEST(XPathLiteral, ADoubleQuoteIsAPieceOfItsOwn) {
    EXPECT_EQ(XPathLiteral(L"a\"b'c"), L"concat(\"a\", '\"', \"b'c\")");
    EXPECT_EQ(XPathLiteral(L"\""), L"concat(\"\", '\"', \"\")");
}

}  // namespace
