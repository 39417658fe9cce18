#include "devkit/msxml/text/encoding.h"

#include <gtest/gtest.h>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/text/parsefailure.h"
#include "devkit/msxml/tree/xmlerror.h"

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
        return static_cast<HRESULT>(failure.code);
    }
}

TEST(Decoder, PassesUtf8Through) {
    EXPECT_EQ("<a>\xC3\xA4</a>", DecodeBytes("<a>\xC3\xA4</a>"));
    EXPECT_EQ("<?xml version='1.0' encoding='Utf-8'?><a>\xFF</a>",
              DecodeBytes("<?xml version='1.0' encoding='Utf-8'?><a>\xFF</a>"));
    EXPECT_EQ("", DecodeBytes(""));
}

TEST(Decoder, TakesAByteOrderMarkAway) {
    EXPECT_EQ("<a/>", DecodeBytes("\xEF\xBB\xBF<a/>"));
    EXPECT_EQ("<a/>", DecodeBytes(Utf16(u"<a/>", false, true)));
    EXPECT_EQ("<a/>", DecodeBytes(Utf16(u"<a/>", true, true)));
}

TEST(Decoder, KnowsUtf16WithoutAMark) {
    EXPECT_EQ("<a>\xE2\x82\xAC</a>", DecodeBytes(Utf16(u"<a>\x20ac</a>", false, false)));
    EXPECT_EQ("<a>\xF0\x9F\x98\x80</a>", DecodeBytes(Utf16(u"<a>\xD83D\xDE00</a>", true, false)));
}

TEST(Decoder, AMarkOfUtf8OutweighsADeclaration) {
    const std::string_view text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a/>";
    EXPECT_EQ(text, DecodeBytes("\xEF\xBB\xBF" + std::string(text)));
}

TEST(Decoder, FollowsTheDeclaration) {
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"uTf-8\"?><a>\xC3\xA4</a>",
              DecodeBytes("<?xml version=\"1.0\" encoding=\"uTf-8\"?><a>\xC3\xA4</a>"));
    EXPECT_EQ("<?xml version='1.0' encoding='utf-16'?><a/>",
              DecodeBytes(Utf16(u"<?xml version='1.0' encoding='utf-16'?><a/>", false, true)));
}

TEST(Decoder, RefusesEveryEncodingButUtf8AndUtf16) {
    EXPECT_EQ(Hresult(XmlInvalidEncoding), Failure("<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a/>"));
    EXPECT_EQ(Hresult(XmlInvalidEncoding), Failure("<?xml version=\"1.0\" encoding=\"x-none\"?><a/>"));
    EXPECT_EQ(Hresult(XmlInvalidEncoding),
              Failure(Utf16(u"<?xml version='1.0' encoding='x-none'?><a/>", false, true)));
}

TEST(Decoder, RefusesADeclarationThatTheBytesContradict) {
    EXPECT_EQ(Hresult(XmlInvalidSwitch), Failure("<?xml version=\"1.0\" encoding=\"utf-16\"?><a/>"));
    EXPECT_EQ(Hresult(XmlInvalidSwitch),
              Failure(Utf16(u"<?xml version='1.0' encoding='utf-8'?><a/>", false, true)));
}

TEST(Decoder, RefusesHalfACharacter) {
    EXPECT_EQ(Hresult(XmlBadCharData), Failure(Utf16(u"<a/>", false, true) + "x"));
    EXPECT_EQ(Hresult(XmlBadCharData), Failure(Utf16(u"<a>\xD83D</a>", false, true)));
    EXPECT_EQ(Hresult(XmlBadCharData), Failure(Utf16(u"<a>\xDE00\xD83D</a>", true, true)));
}

TEST(Decoder, TellsThePlaceOfAFailure) {
    const ParseFailure failure = FailureAt(XmlBadCharData, L"why", L"one\r\ntwo three\nfour", 9);
    EXPECT_EQ(L"why", failure.reason);
    EXPECT_EQ(2, failure.line);
    EXPECT_EQ(5, failure.linePosition);
    EXPECT_EQ(9, failure.filePosition);
    EXPECT_EQ(L"two three", failure.sourceText);
    const ParseFailure end = FailureAt(XmlBadCharData, L"why", L"one\n", 100);
    EXPECT_EQ(2, end.line);
    EXPECT_EQ(1, end.linePosition);
    EXPECT_EQ(4, end.filePosition);
    EXPECT_EQ(L"", end.sourceText);
}

TEST(Encode, Utf8HasNoMark) { EXPECT_EQ("\xE2\x82\xAC", Encode(L"\x20ac", L"UTF-8")); }

TEST(Encode, Utf16HasAMark) {
    EXPECT_EQ(std::string("\xFF\xFE"
                          "a\0",
                          4),
              Encode(L"a", L"utf-16"));
    EXPECT_EQ(std::string("\xFE\xFF\0a", 4), Encode(L"a", L"utf-16be"));
}

TEST(Encode, RefusesEveryOtherEncoding) {
    for (const wchar_t* name : {L"iso-8859-1", L"windows-1252", L"utf8", L"x-none", L""}) {
        try {
            static_cast<void>(Encode(L"a", name));
            ADD_FAILURE() << name;
        } catch (const Refused& refusal) {
            EXPECT_EQ(XmlInvalidEncoding, refusal.code) << name;
        }
    }
}

}  // namespace
}  // namespace devkit::msxml::tests
