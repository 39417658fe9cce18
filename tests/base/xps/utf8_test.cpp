#include "base/xps/utf8.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "thrown.h"

namespace base::xps {
namespace {

std::string Written(std::wstring_view text) {
    std::ostringstream sink;
    Utf8Writer(sink).Write(text);
    EXPECT_EQ(ToUtf8(text), sink.str());
    return sink.str();
}

std::string Escaped(std::wstring_view text) {
    std::ostringstream sink;
    Utf8Writer(sink).WriteEscaped(text);
    return sink.str();
}

TEST(Utf8Test, WritesEveryLengthOfSequence) {
    EXPECT_EQ("a\x7F", Written(L"a\x7F"));
    EXPECT_EQ("\xC2\x80", Written(L"\x80"));
    EXPECT_EQ("\xC2\x80\xDF\xBF", Written(L"\x80\x7FF"));
    EXPECT_EQ("\xE0\xA0\x80\xEF\xBF\xBD", Written(L"\x800\xFFFD"));
    EXPECT_EQ("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", Written(L"\xD800\xDC00\xDBFF\xDFFF"));
}

TEST(Utf8Test, EmptyTextYieldsNothing) {
    EXPECT_EQ("", Written(L""));
    EXPECT_EQ("", Escaped(L""));
}

TEST(Utf8Test, TextWithoutStorageIsRejected) {
    std::ostringstream sink;
    for (void (Utf8Writer::*const write)(std::wstring_view) :
         {&Utf8Writer::Write, &Utf8Writer::WriteEscaped}) {
        const std::string message = tests::Thrown<std::invalid_argument>([&] {
            Utf8Writer writer(sink);
            (writer.*write)(std::wstring_view());
        });
        EXPECT_TRUE(message.ends_with("(LINE) : pWideCharStr is null.\n")) << message;
    }
    EXPECT_THROW((void)ToUtf8(std::wstring_view()), std::invalid_argument);
}

TEST(Utf8Test, ASurrogateWithoutItsPartnerIsReplaced) {
    EXPECT_EQ("a\xEF\xBF\xBD", Written(L"a\xD800"));
    EXPECT_EQ(
        "\xEF\xBF\xBD"
        "a",
        Written(L"\xD800"
                L"a"));
    EXPECT_EQ(
        "\xEF\xBF\xBD"
        "a",
        Written(L"\xDC00"
                L"a"));
}

TEST(Utf8Test, KeepsZeroCharactersInsideTheText) {
    EXPECT_EQ(std::string("a\0b", 3), Written(std::wstring_view(L"a\0b", 3)));
}

TEST(Utf8Test, PairsOfSurrogatesStayTogetherWhereverTheyStandInALongText) {
    for (std::size_t before = 0; before < 4; ++before) {
        std::wstring text(before, L'x');
        std::string expected(before, 'x');
        for (int i = 0; i < 3000; ++i) {
            text += L"\xD83D\xDE00";
            expected += "\xF0\x9F\x98\x80";
        }
        EXPECT_EQ(expected, Written(text));
        EXPECT_EQ(expected, Escaped(text));
    }
}

TEST(Utf8Test, EscapesTheFiveCharactersEachOnce) {
    EXPECT_EQ("&amp;&lt;&gt;&quot;&apos;", Escaped(L"&<>\"'"));
    EXPECT_EQ("&amp;amp;", Escaped(L"&amp;"));
    EXPECT_EQ("a&lt;b\xE2\x82\xAC&gt;c", Escaped(L"a<b\x20AC>c"));
    EXPECT_EQ(std::string(5000, 'x') + "&amp;", Escaped(std::wstring(5000, L'x') + L"&"));
}

TEST(Utf8Test, AFailedSinkTakesNothingAndThrowsNothing) {
    std::ostringstream sink;
    sink.setstate(std::ios::badbit);
    {
        Utf8Writer writer(sink);
        writer.Write(L"a");
        writer.WriteEscaped(L"&");
    }
    EXPECT_EQ("", sink.str());
}

TEST(Utf8Test, KeepsTheOrderOfPiecesOfAnyLength) {
    std::ostringstream sink;
    std::string expected;
    {
        Utf8Writer writer(sink);
        for (const std::size_t length : {0u, 1u, 1364u, 1365u, 1366u, 4095u, 4096u, 4097u, 9000u}) {
            writer.WriteAscii(std::string(length, 'a'));
            writer.Write(std::wstring(length, L'b'));
            writer.Write(std::wstring(length, L'\x20AC'));
            writer.WriteEscaped(std::wstring(length, L'&'));
            expected += std::string(length, 'a') + std::string(length, 'b');
            for (std::size_t i = 0; i < length; ++i) expected += "\xE2\x82\xAC";
            for (std::size_t i = 0; i < length; ++i) expected += "&amp;";
        }
    }
    EXPECT_EQ(expected, sink.str());
}

}  // namespace
}  // namespace base::xps
