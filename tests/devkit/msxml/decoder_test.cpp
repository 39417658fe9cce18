#include "devkit/msxml/decoder.h"

#include <gtest/gtest.h>

#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml::tests {
namespace {

std::string Utf16(std::u16string_view text, bool isBigEndian, bool hasMark) {
    std::string bytes;
    const auto append = [&](char16_t c) {
        const char low = static_cast<char>(c & 0xFF);
        const char high = static_cast<char>(c >> 8);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    };
    if (hasMark) append(u'\xFEFF');
    for (const char16_t c : text) append(c);
    return bytes;
}

HRESULT Failure(std::string_view bytes) {
    try {
        static_cast<void>(DecodeBytes(bytes));
        return S_OK;
    } catch (const ParseFailure& failure) {
        return failure.code;
    }
}

TEST(Decoder, PassesUtf8Through) {
    EXPECT_EQ(DecodeBytes("<a>\xC3\xA4</a>"), "<a>\xC3\xA4</a>");
    EXPECT_EQ(DecodeBytes("<?xml version='1.0' encoding='Utf-8'?><a>\xFF</a>"),
              "<?xml version='1.0' encoding='Utf-8'?><a>\xFF</a>");
    EXPECT_EQ(DecodeBytes(""), "");
}

TEST(Decoder, TakesAByteOrderMarkAway) {
    EXPECT_EQ(DecodeBytes("\xEF\xBB\xBF<a/>"), "<a/>");
    EXPECT_EQ(DecodeBytes(Utf16(u"<a/>", false, true)), "<a/>");
    EXPECT_EQ(DecodeBytes(Utf16(u"<a/>", true, true)), "<a/>");
}

TEST(Decoder, KnowsUtf16WithoutAMark) {
    EXPECT_EQ(DecodeBytes(Utf16(u"<a>\x20ac</a>", false, false)), "<a>\xE2\x82\xAC</a>");
    EXPECT_EQ(DecodeBytes(Utf16(u"<a>\xD83D\xDE00</a>", true, false)), "<a>\xF0\x9F\x98\x80</a>");
}

TEST(Decoder, AMarkOfUtf8OutweighsADeclaration) {
    const std::string_view text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a/>";
    EXPECT_EQ(DecodeBytes("\xEF\xBB\xBF" + std::string(text)), text);
}

TEST(Decoder, FollowsTheDeclaration) {
    EXPECT_EQ(DecodeBytes("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE4</a>"),
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xC3\xA4</a>");
    EXPECT_EQ(DecodeBytes("<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>\x80</a>"),
              "<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>\xE2\x82\xAC</a>");
    EXPECT_EQ(DecodeBytes(Utf16(u"<?xml version='1.0' encoding='utf-16'?><a/>", false, true)),
              "<?xml version='1.0' encoding='utf-16'?><a/>");
}

TEST(Decoder, RefusesAnUnknownEncoding) {
    EXPECT_EQ(Failure("<?xml version=\"1.0\" encoding=\"x-none\"?><a/>"), Hresult(XmlInvalidEncoding));
    EXPECT_EQ(Failure(Utf16(u"<?xml version='1.0' encoding='x-none'?><a/>", false, true)),
              Hresult(XmlInvalidEncoding));
}

TEST(Decoder, RefusesADeclarationThatTheBytesContradict) {
    EXPECT_EQ(Failure("<?xml version=\"1.0\" encoding=\"utf-16\"?><a/>"), Hresult(XmlInvalidSwitch));
    EXPECT_EQ(Failure(Utf16(u"<?xml version='1.0' encoding='utf-8'?><a/>", false, true)),
              Hresult(XmlInvalidSwitch));
}

TEST(Decoder, RefusesHalfACharacter) {
    EXPECT_EQ(Failure(Utf16(u"<a/>", false, true) + "x"), Hresult(XmlBadCharData));
    EXPECT_EQ(Failure(Utf16(u"<a>\xD83D</a>", false, true)), Hresult(XmlBadCharData));
    EXPECT_EQ(Failure(Utf16(u"<a>\xDE00\xD83D</a>", true, true)), Hresult(XmlBadCharData));
    EXPECT_EQ(Failure("<?xml version=\"1.0\" encoding=\"shift_jis\"?><a>\x81</a>"), Hresult(XmlBadCharData));
}

TEST(Decoder, TellsThePlaceOfAFailure) {
    const ParseFailure failure = FailureAt(E_FAIL, L"", L"one\r\ntwo three\nfour", 9);
    EXPECT_EQ(failure.line, 2);
    EXPECT_EQ(failure.linePosition, 5);
    EXPECT_EQ(failure.filePosition, 9);
    EXPECT_EQ(failure.sourceText, L"two three");
    const ParseFailure end = FailureAt(E_FAIL, L"", L"one\n", 100);
    EXPECT_EQ(end.line, 2);
    EXPECT_EQ(end.linePosition, 1);
    EXPECT_EQ(end.filePosition, 4);
    EXPECT_EQ(end.sourceText, L"");
}

}  // namespace
}  // namespace devkit::msxml::tests
