#include "devkit/common/xmlreader.h"

#include <gtest/gtest.h>

#include "devkit/common/error.h"
#include "thrown.h"

namespace devkit::common {
namespace {

using namespace std::string_literals;
using tests::MessageOf;

// The local names of all elements with their depths.
std::string Elements(std::string_view markup, const XmlLimits& limits = {},
                     Prefixes prefixes = Prefixes::Tolerated) {
    XmlReader reader(markup, "/part", limits, prefixes);
    std::string elements;
    while (reader.NextElement()) elements += reader.LocalName() + std::to_string(reader.Depth()) + " ";
    return elements;
}

std::string Utf16(std::string_view ascii, bool bigEndian, bool hasMark = true) {
    std::string text = !hasMark ? "" : bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) text += bigEndian ? "\0"s + c : c + "\0"s;
    return text;
}

std::string Deep(int depth) {
    std::string markup;
    for (int i = 0; i < depth; ++i) markup += "<a>";
    return markup;
}

TEST(XmlReaderTest, WalksOverElementsInDocumentOrder) {
    EXPECT_EQ("a0 b1 c1 d2 ", Elements("<!-- --><a>text<b/><c><d/></c><?pi?></a>"));
}

TEST(XmlReaderTest, ReadsEveryEncodingOfXps) {
    EXPECT_EQ("a0 ", Elements("<a/>"));
    EXPECT_EQ("a0 ", Elements("\xEF\xBB\xBF<a/>"));
    EXPECT_EQ("a0 ", Elements("\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a/>"));
    EXPECT_EQ("a0 ", Elements(Utf16("<a/>", false)));
    EXPECT_EQ("a0 ", Elements(Utf16("<a/>", true)));
    EXPECT_EQ("a0 ", Elements(Utf16("<?xml version='1.0' encoding='utf-16'?><a/>", false)));
    EXPECT_EQ("a0 ", Elements(Utf16("<?xml version='1.0' encoding='UTF-16'?><a/>", true)));
    EXPECT_EQ("a0 ", Elements(Utf16("<?xml version='1.0' encoding='UTF-16'?><a/>", false, false)));
}

TEST(XmlReaderTest, AnotherEncodingIsRefused) {
    EXPECT_EQ("is encoded as ISO-8859-1, neither UTF-8 nor UTF-16, /part",
              MessageOf<Error>([] { Elements("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>"); }));
    EXPECT_NE("", MessageOf<Error>([] { Elements("<?xml version='1.0' encoding='windows-1252'?><a/>"); }));
    // Of these the library itself would complain on the console: UCS-4 in each order of its bytes, EBCDIC.
    testing::internal::CaptureStderr();
    for (const std::string_view start :
         {std::string_view("\0\0\0<", 4), std::string_view("<\0\0\0", 4), std::string_view("\0\0<\0", 4),
          std::string_view("\0<\0\0", 4), std::string_view("\x4C\x6F\xA7\x94", 4)}) {
        EXPECT_EQ("is encoded as neither UTF-8 nor UTF-16, /part",
                  MessageOf<Error>([&] { Elements(start); }));
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(XmlReaderTest, TellsNamespacesAndAttributes) {
    XmlReader reader("<p:a xmlns:p='urn:p' x='1' p:y='2' z=''/>", "/part", {});
    ASSERT_TRUE(reader.NextElement());
    EXPECT_EQ("urn:p", reader.Namespace());
    EXPECT_EQ("a", reader.LocalName());
    EXPECT_EQ("1", reader.Attribute("x"));
    EXPECT_EQ(std::nullopt, reader.Attribute("y"));
    EXPECT_EQ("", reader.Attribute("z"));
    EXPECT_EQ("urn:p", reader.NamespaceOf("p"));
    EXPECT_EQ("", reader.NamespaceOf("q"));
}

TEST(XmlReaderTest, TellsTheTextOfAnElementWithThatOfTheElementsInIt) {
    XmlReader reader("<a>1<b>2</b><![CDATA[<3>]]>&amp;</a>", "/part", {});
    ASSERT_TRUE(reader.NextElement());
    EXPECT_EQ("12<3>&", reader.Text());
}

TEST(XmlReaderTest, ADocumentTypeDeclarationIsRefused) {
    const std::string error = "has a document type declaration, /part";
    EXPECT_EQ(error, MessageOf<Error>([] { Elements("<!DOCTYPE a><a/>"); }));
    EXPECT_EQ(error,
              MessageOf<Error>([] { Elements("<!DOCTYPE a SYSTEM 'http://127.0.0.1:1/a.dtd'><a/>"); }));
    EXPECT_EQ(error, MessageOf<Error>([] {
                  Elements("<!DOCTYPE a [<!ENTITY x 'y'><!ENTITY z '&x;&x;&x;'>]><a b='&z;'>&z;</a>");
              }));
    EXPECT_EQ(error, MessageOf<Error>([] {
                  static_cast<void>(ParseXml(
                      "<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>", "/part", {}));
              }));
}

TEST(XmlReaderTest, ADocumentTypeDeclarationIsRefusedInUtf16AsWell) {
    const std::string error = "has a document type declaration, /part";
    for (const bool bigEndian : {false, true}) {
        EXPECT_EQ(error, MessageOf<Error>([&] { Elements(Utf16("<!DOCTYPE a><a/>", bigEndian)); }));
    }
}

TEST(XmlReaderTest, TextOf8BitsDoesNotGoOnInUtf16) {
    const std::string error = "has a byte of zero in text of 8 bits, /part";
    EXPECT_EQ(error, MessageOf<Error>([] { Elements("<a>\0</a>"s); }));
    EXPECT_EQ(error, MessageOf<Error>([] {
                  Elements("<?xml version='1.0' encoding='UTF-16LE'" +
                           Utf16("?><!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>", false, false));
              }));
}

TEST(XmlReaderTest, ADocumentTypeDeclarationIsOneOnlyBeforeTheRoot) {
    const std::string space(2'000, ' ');
    EXPECT_EQ("has a document type declaration, /part",
              MessageOf<Error>([&] { Elements(space + "<!DOCTYPE a><a/>"); }));
    EXPECT_EQ("a0 ", Elements("<!--<!DOCTYPE a>-->" + space + "<a><![CDATA[<!DOCTYPE a>]]></a>"));
}

TEST(XmlReaderTest, EntitiesThatMultiplyAreRefused) {
    std::string bomb = "<!DOCTYPE a [<!ENTITY x0 'x'>";
    for (int level = 1; level < 30; ++level) {
        const std::string inner = "&x" + std::to_string(level - 1) + ";";
        bomb += "<!ENTITY x" + std::to_string(level) + " '" + inner + inner + "'>";
    }
    EXPECT_EQ("has a document type declaration, /part",
              MessageOf<Error>([&] { Elements(bomb + "]><a>&x29;</a>"); }));
}

TEST(XmlReaderTest, NestingIsLimited) {
    EXPECT_EQ("nests more than 256 elements, /part", MessageOf<Error>([] { Elements(Deep(100'000)); }));
    XmlLimits limits;
    limits.maxDepth = 2;
    EXPECT_EQ("a0 b1 ", Elements("<a><b/></a>", limits));
    EXPECT_EQ("nests more than 2 elements, /part",
              MessageOf<Error>([&] { Elements("<a><b><c/></b></a>", limits); }));
    EXPECT_EQ("nests more than 2 elements, /part",
              MessageOf<Error>([&] { static_cast<void>(ParseXml("<a><b><c/></b></a>", "/part", limits)); }));
}

TEST(XmlReaderTest, SizeAndAttributesAreLimited) {
    XmlLimits limits;
    limits.maxBytes = 12;
    limits.maxAttributes = 1;
    EXPECT_EQ("a0 ", Elements("<a b='1' />\n", limits));
    EXPECT_EQ("is larger than 12 bytes, /part",
              MessageOf<Error>([&] { Elements("<a b='1' />\n\n", limits); }));
    limits.maxBytes = 100;
    EXPECT_EQ("has an element with more than 1 attributes, /part",
              MessageOf<Error>([&] { Elements("<a><b c='1' d='2'/></a>", limits); }));
    EXPECT_EQ("has an element with more than 1 attributes, /part",
              MessageOf<Error>([&] { Elements("<a xmlns='urn:1' xmlns:b='urn:2'/>", limits); }));
}

TEST(XmlReaderTest, WhatIsNotWellFormedIsAnErrorOfOneLine) {
    EXPECT_EQ("is not well-formed XML (line 3: Couldn't find end of Start Tag b), /part",
              MessageOf<Error>([] { Elements("<a>\n\n<b"); }));
    EXPECT_EQ("is not well-formed XML (line 1: Document is empty), /part",
              MessageOf<Error>([] { Elements("not markup"); }));
    EXPECT_EQ("is empty, /part", MessageOf<Error>([] { Elements(""); }));
    EXPECT_EQ("is not well-formed XML (line 1: Extra content at the end of the document), /part",
              MessageOf<Error>([] { Elements("<a/><b/>"); }));
    EXPECT_EQ("is not well-formed XML (line 1: The markup breaks off), /part",
              MessageOf<Error>([] { Elements("<a"); }));
    EXPECT_EQ("is not well-formed XML (line 2: The markup ends inside the element b), /part",
              MessageOf<Error>([] { Elements("<a>\n<b><c/>"); }));
    EXPECT_NE("", MessageOf<Error>([] { Elements("<a>\x01</a>"); }));
    EXPECT_NE("", MessageOf<Error>([] { Elements("<a>\xFF\xFE</a>"); }));
}

TEST(XmlReaderTest, WhatCannotBeDecodedIsRefusedWithoutAWordOnTheConsole) {
    testing::internal::CaptureStderr();
    // Half a surrogate pair.
    EXPECT_EQ("cannot be decoded, /part", MessageOf<Error>([] {
                  Elements(Utf16("<a>", false) + "\x00\xD8\x65\x73"s + Utf16("</a>", false, false));
              }));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(XmlReaderTest, TheErrorTellsTheLine) {
    try {
        Elements("<a>\n\n</b>");
        FAIL() << "nothing was thrown";
    } catch (const XmlError& error) {
        EXPECT_EQ(3, error.Line());
    }
}

TEST(XmlReaderTest, APrefixThatIsNotDeclaredIsToleratedOrRefused) {
    EXPECT_EQ("p:a0 ", Elements("<p:a/>"));
    EXPECT_EQ("is not well-formed XML (line 1: Namespace prefix p on a is not defined), /part",
              MessageOf<Error>([] { Elements("<p:a/>", {}, Prefixes::Declared); }));
    EXPECT_EQ("is not well-formed XML (line 2: Namespace prefix p for b on a is not defined), /part",
              MessageOf<Error>([] { Elements("<c>\n<a p:b=''/></c>", {}, Prefixes::Declared); }));
}

TEST(XmlTreeTest, HoldsTheWholeMarkup) {
    const XmlDocument document =
        ParseXml("<a xmlns='urn:1' b='2'>x<c><d/></c><!--y--><e/>z</a><?after?>", "/part", {});
    const xmlNode* const pRoot = xmlDocGetRootElement(document.get());
    ASSERT_NE(nullptr, pRoot);
    EXPECT_EQ("a", View(pRoot->name));
    EXPECT_EQ("urn:1", View(pRoot->ns->href));
    EXPECT_EQ("2", View(pRoot->properties->children->content));
    std::string kinds;
    for (const xmlNode* pNode = pRoot->children; pNode != nullptr; pNode = pNode->next)
        kinds += pNode->type == XML_ELEMENT_NODE ? std::string(View(pNode->name))
                                                 : "(" + std::string(View(pNode->content)) + ")";
    EXPECT_EQ("(x)c(y)e(z)", kinds);
    EXPECT_EQ("d", View(pRoot->children->next->children->name));
}

TEST(XmlTreeTest, OfManyElementsNoneIsLost) {
    std::string markup = "<a>";
    for (int i = 0; i < 20'000; ++i) markup += "<b><c>" + std::to_string(i) + "</c></b>";
    const XmlDocument document = ParseXml(markup + "</a>", "/part", {});
    int next = 0;
    for (const xmlNode* pNode = xmlDocGetRootElement(document.get())->children; pNode != nullptr;
         pNode = pNode->next) {
        ASSERT_EQ(std::to_string(next), View(pNode->children->children->content));
        ++next;
    }
    EXPECT_EQ(20'000, next);
}

TEST(XmlTreeTest, WhatIsNotWellFormedIsAnError) {
    EXPECT_EQ("is not well-formed XML (line 1: The markup ends inside the element a), /part",
              MessageOf<Error>([] { static_cast<void>(ParseXml("<a><b/>", "/part", {})); }));
    EXPECT_EQ("is not well-formed XML (line 1: Namespace prefix p on b is not defined), /part",
              MessageOf<Error>([] { static_cast<void>(ParseXml("<a><p:b/></a>", "/part", {})); }));
}

}  // namespace
}  // namespace devkit::common
