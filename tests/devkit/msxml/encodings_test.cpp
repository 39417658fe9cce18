#include "devkit/msxml/encodings.h"

#include <gtest/gtest.h>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml::tests {
namespace {

HRESULT Failure(std::wstring_view text, std::wstring_view name) {
    try {
        static_cast<void>(Encode(text, name));
        return S_OK;
    } catch (const ComError& error) {
        return error.code;
    }
}

TEST(Encodings, AreFoundInAnyLetterCase) {
    EXPECT_EQ(FindCodePage(L"UTF-8"), 65001U);
    EXPECT_EQ(FindCodePage(L"uTf-16"), 1200U);
    EXPECT_EQ(FindCodePage(L"Windows-1252"), 1252U);
    EXPECT_EQ(FindCodePage(L"utf8"), 0U);
    EXPECT_EQ(FindCodePage(L""), 0U);
}

TEST(Encodings, Utf8HasNoMark) { EXPECT_EQ(Encode(L"\x20ac", L"utf-8"), "\xE2\x82\xAC"); }

TEST(Encodings, Utf16HasAMark) {
    EXPECT_EQ(Encode(L"a", L"utf-16"), std::string("\xFF\xFE"
                                                   "a\0",
                                                   4));
    EXPECT_EQ(Encode(L"a", L"utf-16be"), std::string("\xFE\xFF\0a", 4));
}

TEST(Encodings, CodePagesAreExact) {
    EXPECT_EQ(Encode(L"\x20ac\x00e4", L"windows-1252"), "\x80\xE4");
    EXPECT_EQ(Encode(L"", L"windows-1252"), "");
    EXPECT_EQ(Failure(L"\x0416", L"windows-1252"), Hresult(XmlInvalidEncoding));
    EXPECT_EQ(Failure(L"\x2019", L"iso-8859-1"), Hresult(XmlInvalidEncoding));
    EXPECT_EQ(Failure(L"\x00e4", L"us-ascii"), Hresult(XmlInvalidEncoding));
    EXPECT_EQ(Failure(L"a", L"x-none"), Hresult(XmlInvalidEncoding));
}

}  // namespace
}  // namespace devkit::msxml::tests
