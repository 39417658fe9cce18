#include "devkit/package/xmlreader.h"

#include <gtest/gtest.h>

#include "devkit/package/xmltext.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

using namespace std::string_literals;

// The local names of all elements with their depths.
std::string Elements(std::string_view markup, const Limits& limits = {}) {
    XmlReader reader(markup, "/part", limits);
    std::string elements;
    while (reader.NextElement()) elements += reader.LocalName() + std::to_string(reader.Depth()) + " ";
    return elements;
}

std::string Utf16(std::string_view ascii, bool bigEndian) {
    std::string text = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) text += bigEndian ? "\0"s + c : c + "\0"s;
    return text;
}

TEST(XmlReaderTest, WalksOverElementsInDocumentOrder) {
    EXPECT_EQ(Elements("<!-- --><a>text<b/><c><d/></c><?pi?></a>"), "a0 b1 c1 d2 ");
}

TEST(XmlReaderTest, ReadsEveryEncodingOfXps) {
    EXPECT_EQ(Elements("<a/>"), "a0 ");
    EXPECT_EQ(Elements("\xEF\xBB\xBF<a/>"), "a0 ");
    EXPECT_EQ(Elements("\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a/>"), "a0 ");
    EXPECT_EQ(Elements(Utf16("<a/>", false)), "a0 ");
    EXPECT_EQ(Elements(Utf16("<a/>", true)), "a0 ");
    EXPECT_EQ(Elements(Utf16("<?xml version='1.0' encoding='utf-16'?><a/>", false)), "a0 ");
    EXPECT_EQ(Elements(Utf16("<?xml version='1.0' encoding='UTF-16'?><a/>", true)), "a0 ");
}

TEST(XmlReaderTest, TellsNamespacesAndAttributes) {
    XmlReader reader("<p:a xmlns:p='urn:p' x='1' p:y='2' z=''/>", "/part", {});
    ASSERT_TRUE(reader.NextElement());
    EXPECT_EQ(reader.Namespace(), "urn:p");
    EXPECT_EQ(reader.LocalName(), "a");
    EXPECT_EQ(reader.Attribute("x"), "1");
    EXPECT_EQ(reader.Attribute("y"), std::nullopt);
    EXPECT_EQ(reader.Attribute("z"), "");
    EXPECT_EQ(reader.NamespaceOf("p"), "urn:p");
    EXPECT_EQ(reader.NamespaceOf("q"), "");
}

TEST(XmlReaderTest, ADocumentTypeDeclarationIsRefused) {
    const std::string error = "has a document type declaration, /part";
    EXPECT_EQ(ErrorOf([] { Elements("<!DOCTYPE a><a/>"); }), error);
    EXPECT_EQ(ErrorOf([] { Elements("<!DOCTYPE a SYSTEM 'http://127.0.0.1:1/a.dtd'><a/>"); }), error);
    EXPECT_EQ(
        ErrorOf([] { Elements("<!DOCTYPE a [<!ENTITY x 'y'><!ENTITY z '&x;&x;&x;'>]><a b='&z;'>&z;</a>"); }),
        error);
}

TEST(XmlReaderTest, NestingIsLimited) {
    std::string deep;
    for (int i = 0; i < 100'000; ++i) deep += "<a>";
    EXPECT_EQ(ErrorOf([&] { Elements(deep); }), "nests more than 256 elements, /part");
    Limits limits;
    limits.maxDepth = 2;
    EXPECT_EQ(Elements("<a><b/></a>", limits), "a0 b1 ");
    EXPECT_EQ(ErrorOf([&] { Elements("<a><b><c/></b></a>", limits); }), "nests more than 2 elements, /part");
}

TEST(XmlReaderTest, WhatIsNotWellFormedIsAnErrorOfOneLine) {
    EXPECT_EQ(ErrorOf([] { Elements("<a>\n\n<b"); }),
              "is not well-formed XML (line 3: Couldn't find end of Start Tag b), /part");
    EXPECT_EQ(ErrorOf([] { Elements("not markup"); }),
              "is not well-formed XML (line 1: Document is empty), /part");
    EXPECT_EQ(ErrorOf([] { Elements(""); }), "is empty, /part");
    EXPECT_EQ(ErrorOf([] { Elements("<a/><b/>"); }),
              "is not well-formed XML (line 1: Extra content at the end of the document), /part");
}

TEST(XmlTextTest, AttributeValuesAreEscaped) {
    EXPECT_EQ(EscapedAttribute("a&<\">'\r\n\t"), "a&amp;&lt;&quot;>'&#13;&#10;&#9;");
}

}  // namespace
}  // namespace devkit::package
