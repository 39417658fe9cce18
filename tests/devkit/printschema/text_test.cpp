#include "devkit/printschema/text.h"

#include <gtest/gtest.h>

#include "devkit/prntvpt/device/base64.h"

namespace devkit::prntvpt {
namespace {

using namespace std::string_view_literals;

TEST(Text, GoesBetweenEncodings) {
    EXPECT_EQ(ToUtf8(L"A\u00E4\u20AC"), "A\xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(ToWide("A\xC3\xA4\xE2\x82\xAC"), L"A\u00E4\u20AC");
    EXPECT_EQ(ToUtf8(L""), "");
    EXPECT_EQ(ToWide("\xFF"), L"\uFFFD");
}

TEST(Text, OfADocumentHasNoMark) {
    EXPECT_EQ(DocumentText("\xEF\xBB\xBF<a/>"), "<a/>");
    EXPECT_EQ(DocumentText("\xFF\xFE<\0a\0/\0>\0"sv), "<a/>");
    EXPECT_EQ(DocumentText("\xFE\xFF\0<\0a\0/\0>"sv), "<a/>");
    EXPECT_EQ(DocumentText("<\0a\0/\0>\0"sv), "<a/>");
    EXPECT_EQ(DocumentText("<a/>"), "<a/>");
    EXPECT_EQ(DocumentText(""), "");
    EXPECT_EQ(DocumentText("\xFF\xFE<\0a"sv), "<");
}

TEST(Base64, FollowsTheExamplesOfTheStandard) {
    EXPECT_EQ(ToBase64(""), "");
    EXPECT_EQ(ToBase64("f"), "Zg==");
    EXPECT_EQ(ToBase64("fo"), "Zm8=");
    EXPECT_EQ(ToBase64("foo"), "Zm9v");
    EXPECT_EQ(ToBase64("foob"), "Zm9vYg==");
    EXPECT_EQ(ToBase64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(ToBase64("\xFF\xFB\xF0"), "//vw");
}

}  // namespace
}  // namespace devkit::prntvpt
