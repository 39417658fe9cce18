#include "devkit/printschema/xmlparser.h"

#include <gtest/gtest.h>

#include <string>

#include "devkit/printschema/formaterror.h"
#include "devkit/printschema/text.h"

namespace devkit::prntvpt {
namespace {

// The text of the error, empty when the document is accepted.
[[nodiscard]] std::string Refusal(std::string_view bytes) {
    try {
        static_cast<void>(ParseXml(bytes));
        return {};
    } catch (const FormatError& error) {
        return error.what();
    }
}

[[nodiscard]] std::string Utf16(std::string_view text, bool bigEndian, bool mark) {
    std::wstring wide = ToWide(text);
    if (mark) wide.insert(0, 1, L'\uFEFF');
    std::string bytes;
    for (const wchar_t unit : wide) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST(XmlParser, AcceptsUnicodeWithAndWithoutMarkAndDeclaration) {
    EXPECT_EQ(Refusal("<a/>"), "");
    EXPECT_EQ(Refusal("\xEF\xBB\xBF<a/>"), "");
    EXPECT_EQ(Refusal(R"(<?xml version="1.0" encoding="utf-8" standalone="yes"?><a/>)"), "");
    const char* const declared = R"(<?xml version="1.0" encoding="UTF-16"?><a>ü</a>)";
    EXPECT_EQ(Refusal(Utf16(declared, false, true)), "");
    EXPECT_EQ(Refusal(Utf16(declared, true, true)), "");
    EXPECT_EQ(Refusal(Utf16(declared, false, false)), "");
    EXPECT_EQ(Refusal(Utf16("<a>ü</a>", false, true)), "");
}

TEST(XmlParser, RefusesOtherEncodings) {
    EXPECT_EQ(Refusal(R"(<?xml version="1.0" encoding="ISO-8859-1"?><a/>)"), "neither UTF-8 nor UTF-16");
}

TEST(XmlParser, RefusesWhatIsNotWellFormed) {
    EXPECT_EQ(Refusal(""), "empty");
    EXPECT_EQ(Refusal("   ").substr(0, 7), "line 1:");
    EXPECT_EQ(Refusal("<a>"), "line 1: Premature end of data in tag a line 1");
    EXPECT_EQ(Refusal("<a>\n\n</b>"), "line 3: Opening and ending tag mismatch: a line 1 and b");
    EXPECT_NE(Refusal("<a>\x01</a>"), "");
    EXPECT_NE(Refusal("<a>\xFF\xFE</a>"), "");
}

TEST(XmlParser, RefusesUnboundPrefixes) {
    EXPECT_EQ(Refusal("<p:a/>"), "line 1: Namespace prefix p on a is not defined");
}

TEST(XmlParser, RefusesDocumentTypeDeclarationsBeforeTheyAreRead) {
    const char* const expected = "document type declarations are not allowed";
    EXPECT_EQ(Refusal("<!DOCTYPE a><a/>"), expected);
    EXPECT_EQ(Refusal(R"(<!DOCTYPE a SYSTEM "http://localhost/x.dtd"><a/>)"), expected);
    EXPECT_EQ(Refusal(R"(<!DOCTYPE a [<!ENTITY x SYSTEM "file:///etc/passwd">]><a>&x;</a>)"), expected);
    std::string bomb = "<!DOCTYPE a [<!ENTITY x0 \"x\">";
    for (int level = 1; level < 30; ++level) {
        const std::string inner = "&x" + std::to_string(level - 1) + ";";
        bomb += "<!ENTITY x" + std::to_string(level) + " \"" + inner + inner + "\">";
    }
    EXPECT_EQ(Refusal(bomb + "]><a>&x29;</a>"), expected);
}

TEST(XmlParser, RefusesTooMuch) {
    EXPECT_EQ(Refusal(std::string(MaxDocumentSize + 1, ' ')), "larger than 33554432 bytes");
    std::string deep;
    for (int level = 0; level < 1000; ++level) deep += "<a>";
    EXPECT_NE(Refusal(deep), "");
}

}  // namespace
}  // namespace devkit::prntvpt
